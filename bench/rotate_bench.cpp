// Free rotation and skew on full-size images, read against BM_Memcpy.
#include "bench_common.h"

#include <benchmark/benchmark.h>

namespace {

// Arguments: depth, angle, walk mode.
void BM_RotateDIB(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    const int angle = static_cast<int>(state.range(1));
    const int walkMode = static_cast<int>(state.range(2));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    const std::int64_t bytes = bench::PixelBytes(dib);
    for (auto _ : state) {
        int error = 0;
        HDIB out = RotateDIB(dib, angle, walkMode, &error, nullptr);
        if (!out) {
            state.SkipWithError("RotateDIB failed");
            break;
        }
        GlobalUnlock(dib);  // the turn leaves the source locked once more
        GlobalFree(out);
    }
    GlobalFree(dib);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_RotateDIB)
    ->ArgNames({"bits", "angle", "fast"})
    ->ArgsProduct({{8, 24}, {1, 45, 90}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

// Arguments: depth, horizontal, skew.
void BM_SkewDIB(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    const int horizontal = static_cast<int>(state.range(1));
    const int skew = static_cast<int>(state.range(2));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    const std::int64_t bytes = bench::PixelBytes(dib);
    for (auto _ : state) {
        int error = 0, corners[8];
        HDIB out = SkewDIB(dib, horizontal, skew, &error, corners);
        if (!out) {
            state.SkipWithError("SkewDIB failed");
            break;
        }
        GlobalUnlock(dib);  // the shear leaves the source locked once more
        GlobalFree(out);
    }
    GlobalFree(dib);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_SkewDIB)
    ->ArgNames({"bits", "horiz", "skew"})
    ->ArgsProduct({{1, 8, 24}, {1, 0}, {500}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
