// The yardsticks every other figure is read against: a plain copy of the
// same image's pixel rows, into memory already touched (warm) and into a
// fresh block of the library's allocator, whose page faults are counted
// as every operation's result block counts them.
#include "bench_common.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

void BM_Memcpy(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    const std::int64_t bytes = bench::PixelBytes(dib);
    std::vector<unsigned char> to(static_cast<size_t>(bytes));
    const unsigned char* from = static_cast<const unsigned char*>(GlobalLock(dib));
    for (auto _ : state) {
        std::memcpy(to.data(), from, to.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    GlobalUnlock(dib);
    GlobalFree(dib);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_Memcpy)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

void BM_MemcpyFreshBlock(benchmark::State& state) {
    const int bitCount = static_cast<int>(state.range(0));
    HDIB dib = bench::MakeImage(bench::Width(), bench::Height(), bitCount);
    const std::int64_t bytes = bench::PixelBytes(dib);
    const unsigned char* from = static_cast<const unsigned char*>(GlobalLock(dib));
    for (auto _ : state) {
        HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, static_cast<SIZE_T>(bytes));
        void* to = GlobalLock(block);
        if (!to) {
            state.SkipWithError("no block");
            break;
        }
        std::memcpy(to, from, static_cast<size_t>(bytes));
        benchmark::DoNotOptimize(to);
        benchmark::ClobberMemory();
        GlobalUnlock(block);
        GlobalFree(block);
    }
    GlobalUnlock(dib);
    GlobalFree(dib);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_MemcpyFreshBlock)->Arg(1)->Arg(8)->Arg(24)->Unit(benchmark::kMillisecond);

}  // namespace
