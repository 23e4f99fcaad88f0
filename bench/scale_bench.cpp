// Scaling a 4000 by 3000 image up and down, linear and cubic, and grey
// scaling by whole factors.
#include "bench_common.h"

#include <benchmark/benchmark.h>

namespace {

// Args: depth, mode (0 linear, 1 cubic), result size in percent.
void BM_ScaleDIB(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    const int mode = static_cast<int>(state.range(1));
    const int percent = static_cast<int>(state.range(2));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    // Results stay below the tap walk's width limits (16,384 and 10,923).
    const int width = bench::Width() * percent / 100, height = bench::Height() * percent / 100;
    std::int64_t outBytes = 0;
    for (auto _ : state) {
        HDIB out = ScaleDIB(dib, mode, width, height);
        if (!out) {
            state.SkipWithError("ScaleDIB failed");
            break;
        }
        outBytes = bench::PixelBytes(out);
        GlobalFree(out);
    }
    GlobalFree(dib);
    state.SetBytesProcessed(state.iterations() * outBytes);
    state.counters["out_MB"] = static_cast<double>(outBytes) / 1e6;
}
BENCHMARK(BM_ScaleDIB)
    ->ArgNames({"bits", "cubic", "pct"})
    ->ArgsProduct({{8, 24}, {0, 1}, {150, 50}})
    ->Unit(benchmark::kMillisecond);

// Args: depth, mode, factor.  The rectangle is the whole image divided by
// the factor, so the result has the source's size.
void BM_ScaleGrayDIB(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    const int mode = static_cast<int>(state.range(1));
    const int factor = static_cast<int>(state.range(2));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    const int w = bench::Width() / factor, h = bench::Height() / factor;
    std::int64_t outBytes = 0;
    for (auto _ : state) {
        HDIB out = ScaleGrayDIB(dib, 0, 0, w, h, factor, factor, mode);
        if (!out) {
            state.SkipWithError("ScaleGrayDIB failed");
            break;
        }
        GlobalUnlock(out);  // returned locked
        // A 24-bit image is walked as bytes at the 8-bit stride: a third of
        // its block holds the rows written.
        outBytes = bench::PixelBytes(out) / (bitCount == 24 ? 3 : 1);
        GlobalFree(out);
    }
    GlobalFree(dib);
    state.SetBytesProcessed(state.iterations() * outBytes);
}
BENCHMARK(BM_ScaleGrayDIB)
    ->ArgNames({"bits", "cubic", "zoom"})
    ->ArgsProduct({{8, 24}, {0, 1}, {1, 2}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
