// Colour fax pages: merging one 1-bit plane into the 4-bit page, the
// per-plane cost of a page.
#include "bench_common.h"
#include "formats/formats.h"

#include <benchmark/benchmark.h>

namespace {

void BM_MergeFaxPlane(benchmark::State& state) {
    HDIB plane = bench::MakeImage(bench::Width(), bench::Height(), 1);
    HDIB page = prism::CreateFaxPageDib(bench::Width(), bench::Height(), 0, 0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(prism::MergeFaxPlane(page, plane, 1));
        benchmark::ClobberMemory();
    }
    // Bytes of the page written per merge.
    const std::int64_t bytes = bench::PixelBytes(page);
    GlobalFree(page);
    GlobalFree(plane);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_MergeFaxPlane)->Unit(benchmark::kMillisecond);

}  // namespace
