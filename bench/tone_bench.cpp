// Tone, filters and depth conversion on the full-size test images.
#include "bench_common.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

// Frees an image at the end of a benchmark.
struct Owned {
    HDIB dib;
    explicit Owned(HDIB d) : dib(d) {}
    ~Owned() {
        if (dib) GlobalFree(dib);
    }
};

// The window swept over the whole image in steps of 128 both ways, as a
// viewer panning across it would: every step is an update by difference.
void BM_Histogram(benchmark::State& state) {
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), 8));
    int error = 0;
    HGLOBAL table = ComputeHistogram(nullptr, PRISM_TABLE_CREATE, nullptr, nullptr, &error);
    std::int64_t updates = 0;
    for (auto _ : state) {
        for (int y = 0; y <= std::max(0, bench::Height() - 256); y += 128) {
            const bool leftward = (y / 128) % 2 == 1;  // snake, so each move stays within 128
            for (int k = 0; k <= std::max(0, bench::Width() - 256) / 128; ++k) {
                int x = k * 128;
                int position[2] = {leftward ? std::max(0, bench::Width() - 256) - x : x, y};
                benchmark::DoNotOptimize(ComputeHistogram(image.dib, PRISM_TABLE_UPDATE, table, position, &error));
                ++updates;
            }
        }
    }
    ComputeHistogram(nullptr, PRISM_TABLE_FREE, table, nullptr, nullptr);
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
    state.counters["updates"] = benchmark::Counter(static_cast<double>(updates), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_Histogram)->Unit(benchmark::kMillisecond);

void BM_ApplyLUT(benchmark::State& state) {
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), 8));
    int error = 0;
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, &error);
    ComputeLUT(nullptr, PRISM_TABLE_UPDATE, lut, 40, -10, &error);
    for (auto _ : state) benchmark::DoNotOptimize(ApplyLUT(image.dib, lut, 0, &error));
    ComputeLUT(nullptr, PRISM_TABLE_FREE, lut, 0, 0, nullptr);
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
}
BENCHMARK(BM_ApplyLUT)->Unit(benchmark::kMillisecond);

// Convolve in place: kind, size.
void BM_Convolve(benchmark::State& state) {
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), 8));
    const int kind = static_cast<int>(state.range(0)), size = static_cast<int>(state.range(1));
    int error = 0;
    for (auto _ : state) benchmark::DoNotOptimize(Convolve(image.dib, 0, kind, size, nullptr, nullptr, &error));
    if (error) state.SkipWithError("Convolve failed");
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
}
BENCHMARK(BM_Convolve)
    ->ArgNames({"kind", "size"})
    ->Args({3, 3})
    ->Args({4, 3})
    ->Args({6, 3})
    ->Args({3, 5})
    ->Args({4, 5})
    ->Args({6, 5})
    ->Unit(benchmark::kMillisecond);

void BM_ConvolveMatrix(benchmark::State& state) {
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), 8));
    const int size = static_cast<int>(state.range(0));
    int matrix[50] = {};
    for (int k = 0; k < size * size; ++k) matrix[k] = (k % 3) - 1 + (k == size * size / 2 ? 4 : 0);
    int error = 0;
    for (auto _ : state) benchmark::DoNotOptimize(Convolve(image.dib, 0, 1, size, nullptr, matrix, &error));
    if (error) state.SkipWithError("Convolve failed");
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
}
BENCHMARK(BM_ConvolveMatrix)->ArgName("size")->Arg(3)->Arg(5)->Unit(benchmark::kMillisecond);

void BM_ColorConvolution(benchmark::State& state) {
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), 24));
    const int kind = static_cast<int>(state.range(0)), size = static_cast<int>(state.range(1));
    int error = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(ColorConvolution(image.dib, 0, 1, static_cast<WORD>(kind), static_cast<short>(size),
                                                  nullptr, nullptr, &error));
    if (error) state.SkipWithError("ColorConvolution failed");
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
}
BENCHMARK(BM_ColorConvolution)
    ->ArgNames({"kind", "size"})
    ->Args({3, 3})
    ->Args({6, 3})
    ->Args({3, 5})
    ->Args({4, 5})
    ->Unit(benchmark::kMillisecond);

void BM_Convert8to24(benchmark::State& state) {
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), 8));
    for (auto _ : state) {
        HDIB out = Convert8to24(image.dib);
        benchmark::DoNotOptimize(out);
        GlobalFree(out);
        GlobalUnlock(image.dib);  // the lock each call leaves standing
    }
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
}
BENCHMARK(BM_Convert8to24)->Unit(benchmark::kMillisecond);

// Grey conversion: depth, smoothing mode, weighted.
void BM_Grey(benchmark::State& state) {
    const int bits = static_cast<int>(state.range(0));
    Owned image(bench::MakeImage(bench::Width(), bench::Height(), bits));
    for (auto _ : state) {
        HDIB out = ConvColorDIBtoGrayscale(image.dib, static_cast<int>(state.range(1)),
                                           static_cast<BOOL>(state.range(2)));
        benchmark::DoNotOptimize(out);
        GlobalFree(out);
        GlobalUnlock(image.dib);
    }
    state.SetBytesProcessed(state.iterations() * bench::PixelBytes(image.dib));
}
BENCHMARK(BM_Grey)
    ->ArgNames({"bits", "smooth", "weighted"})
    ->Args({8, 0, 1})
    ->Args({24, 0, 0})
    ->Args({24, 0, 1})
    ->Args({1, 0, 0})
    ->Args({1, 1, 0})
    ->Args({1, 2, 0})
    ->Unit(benchmark::kMillisecond);

}  // namespace
