// Right-angle turns and flips of a whole image, 1-bit, 8-bit and 24-bit.
#include "bench_common.h"

#include <benchmark/benchmark.h>

namespace {

void RunTurn(benchmark::State& state, HDIB(WINAPI* op)(HDIB)) {
    const int bitCount = static_cast<int>(state.range(0));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    for (auto _ : state) {
        HDIB out = op(dib);
        if (!out) {
            state.SkipWithError("the operation failed");
            break;
        }
        benchmark::DoNotOptimize(out);
        GlobalFree(out);
    }
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(dib));
    GlobalFree(dib);
}

void BM_RotateDIB90(benchmark::State& state) { RunTurn(state, RotateDIB90); }
void BM_RotateDIB180(benchmark::State& state) { RunTurn(state, RotateDIB180); }
void BM_RotateDIB270(benchmark::State& state) { RunTurn(state, RotateDIB270); }
void BM_FlipDIBVertical(benchmark::State& state) { RunTurn(state, FlipDIBVertical); }
void BM_FlipDIBHorizontal(benchmark::State& state) { RunTurn(state, FlipDIBHorizontal); }

BENCHMARK(BM_RotateDIB90)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RotateDIB180)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RotateDIB270)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlipDIBVertical)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlipDIBHorizontal)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

}  // namespace
