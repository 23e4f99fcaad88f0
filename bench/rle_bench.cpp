// Run-length coding and decoding of a whole image.  The coder takes 4-bit
// and 8-bit images only, so the 8-bit figure stands beside a 4-bit one; a
// 24-bit image is refused at once, which is timed as well.
#include "bench_common.h"

#include <benchmark/benchmark.h>

namespace {

void BM_CompressDIB(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    for (auto _ : state) {
        HDIB out = CompressDIB(dib);
        if (!out && bitCount != 24) {
            state.SkipWithError("CompressDIB failed");
            break;
        }
        benchmark::DoNotOptimize(out);
        if (out) GlobalFree(out);
    }
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(dib));
    GlobalFree(dib);
}
BENCHMARK(BM_CompressDIB)->Arg(4)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

void BM_ExpandCompressedDIB(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    HDIB packed = CompressDIB(dib);
    if (!packed) {
        state.SkipWithError("CompressDIB failed");
        GlobalFree(dib);
        return;
    }
    for (auto _ : state) {
        HDIB out = ExpandCompressedDIB(packed);
        if (!out) {
            state.SkipWithError("ExpandCompressedDIB failed");
            break;
        }
        benchmark::DoNotOptimize(out);
        GlobalFree(out);
    }
    // Bytes of the expanded rows.
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(dib));
    GlobalFree(packed);
    GlobalFree(dib);
}
BENCHMARK(BM_ExpandCompressedDIB)->Arg(4)->Arg(8)->Unit(benchmark::kMillisecond);

}  // namespace
