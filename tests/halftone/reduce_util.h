// Images and observers shared by the dithering and halftone tests.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <cstring>
#include <functional>

namespace reduce_test {

using testing_support::Bytes;
using testing_support::PixelAt;

// A DIB from PackedDib with a grey-ramp table (entry i = i * 255 / (n - 1))
// and resolution 1234 by 5678.  pixel(x, y), y as stored (bottom row
// first), is an index at 4 and 8 bits and 0xRRGGBB at 24.
inline Bytes MakeDib(int width, int height, int depth, std::function<unsigned(int, int)> pixel) {
    static std::function<unsigned(int, int)> current;
    static int rows;
    current = std::move(pixel);
    rows = height;
    testing_support::DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = depth;
    Bytes b = testing_support::PackedDib(spec, [](int x, int y) { return current(x, rows - 1 - y); });
    const int n = depth <= 8 ? 1 << depth : 0;
    for (int i = 0; i < n; ++i) std::memset(&b[40 + 4 * i], i * 255 / (n - 1), 3);
    const unsigned char resolution[8] = {0xD2, 0x04, 0, 0, 0x2E, 0x16, 0, 0};  // 1234, 5678
    std::memcpy(&b[24], resolution, 8);
    return b;
}

// Grey g (0..255) as a pixel of `depth`; at 4 bits the nearest of 16 levels.
inline unsigned Grey(int depth, unsigned g) { return depth == 4 ? (g + 8) / 17 : depth == 8 ? g : g * 0x010101u; }
inline Bytes FlatGrey(int width, int height, int depth, unsigned g) {
    return MakeDib(width, height, depth, [=](int, int) { return Grey(depth, g); });
}

// Runs an export on a copy of `dib` in a block and returns the result's
// bytes; empty on failure or when the source block was changed.
template <typename F>
Bytes RunOn(const Bytes& dib, F&& op) {
    HGLOBAL block = testing_support::BlockFrom(dib);
    HDIB result = op(block);
    Bytes out;
    if (result) {
        out = testing_support::BlockBytes(result);
        GlobalFree(result);
    }
    if (testing_support::BlockBytes(block) != dib) out.clear();
    GlobalFree(block);
    return out;
}

// True when the block still carries a lock left by an operation.
inline bool StillLocked(HGLOBAL block) {
    GlobalLock(block);
    return GlobalUnlock(block) != 0;
}

// Pixels of a (small) result that have value v, and the white share of a 1-bit one.
inline int CountOf(const Bytes& dib, unsigned v) {
    if (dib.size() < 40) return -1;
    const int w = dib[4] | dib[5] << 8, h = dib[8] | dib[9] << 8;
    int n = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) n += PixelAt(dib, x, y) == v;
    return n;
}
inline double WhiteFraction(const Bytes& dib) {
    return dib.size() < 40 ? -1.0 : CountOf(dib, 1) / double((dib[4] | dib[5] << 8) * (dib[8] | dib[9] << 8));
}

// FNV-1a over the first n bytes: pins headers with their fixed palettes.
inline std::uint32_t Fnv(const Bytes& b, size_t n) {
    std::uint32_t h = 2166136261u;
    for (size_t i = 0; i < n && i < b.size(); ++i) h = (h ^ b[i]) * 16777619u;
    return h;
}

}  // namespace reduce_test
