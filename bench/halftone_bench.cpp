// Dithering and halftone on the full-size test images, at 8 and 24 bits.
#include "bench_common.h"

#include <benchmark/benchmark.h>

namespace {

template <HDIB(WINAPI* Fn)(HDIB, int)>
void BM_Dither(benchmark::State& state) {
    const int depth = static_cast<int>(state.range(0));
    const int bits = static_cast<int>(state.range(1));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), depth);
    for (auto _ : state) {
        HDIB out = Fn(dib, bits);
        if (!out) {
            state.SkipWithError("dither failed");
            break;
        }
        GlobalFree(out);
    }
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(dib));
    GlobalFree(dib);
}

void BM_Halftone(benchmark::State& state) {
    const int depth = static_cast<int>(state.range(0));
    const WORD method = static_cast<WORD>(state.range(1));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), depth);
    for (auto _ : state) {
        WORD error = 0;
        HDIB out = Halftone(dib, method, 10, &error);
        if (!out) {
            state.SkipWithError("halftone failed");
            break;
        }
        GlobalFree(out);
    }
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(dib));
    GlobalFree(dib);
}

// Arguments: source depth, target depth.
BENCHMARK_TEMPLATE(BM_Dither, DitherFS4)->Args({8, 1})->Args({8, 4})->Args({24, 1})->Args({24, 8})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Dither, DitherJJN)->Args({8, 1})->Args({8, 4})->Args({24, 1})->Args({24, 8})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Dither, DitherSmooth)->Args({8, 1})->Args({8, 4})->Args({24, 1})->Args({24, 4})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Dither, DitherSharp)->Args({8, 1})->Args({8, 4})->Args({24, 1})->Args({24, 4})
    ->Unit(benchmark::kMillisecond);
// Arguments: source depth, method.
BENCHMARK(BM_Halftone)->Args({8, 0})->Args({8, 1})->Args({8, 2})->Args({24, 0})->Args({24, 1})->Args({24, 2})
    ->Unit(benchmark::kMillisecond);

}  // namespace
