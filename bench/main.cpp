// Benchmarks of the library's exports on 4000 by 3000 images.  --smoke runs
// each once on a tiny image.
#include "bench_common.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

namespace bench {
void SetSmoke(bool smoke);
}

int main(int argc, char** argv) {
    std::vector<char*> args;
    static char minTime[] = "--benchmark_min_time=0";
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--smoke") == 0) {
            bench::SetSmoke(true);
            args.push_back(minTime);
        } else {
            args.push_back(argv[i]);
        }
    }
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
