// Images for the dithering and halftone tests, built byte by byte.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <cstring>
#include <functional>

namespace reduce_test {

using testing_support::Bytes;

// Pixel function: x, y with y counted as stored (bottom row first).  At 4
// and 8 bits it gives a palette index, at 24 bits 0xRRGGBB.
using PixelFn = std::function<unsigned(int x, int y)>;

inline void Put32(Bytes& b, size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<unsigned char>(v >> (8 * i));
}
inline std::uint32_t Get32(const Bytes& b, size_t at) {
    return std::uint32_t(b[at]) | std::uint32_t(b[at + 1]) << 8 | std::uint32_t(b[at + 2]) << 16 |
           std::uint32_t(b[at + 3]) << 24;
}

// A DIB with a grey ramp for a colour table (entry i = i * 255 / (n - 1)),
// resolution 1234 by 5678.
inline Bytes MakeDib(int width, int height, int bitCount, const PixelFn& pixel) {
    const int colors = bitCount <= 8 ? 1 << bitCount : 0;
    const size_t stride = testing_support::Stride(width, bitCount);
    Bytes b(40 + colors * 4 + stride * height, 0);
    Put32(b, 0, 40);
    Put32(b, 4, static_cast<std::uint32_t>(width));
    Put32(b, 8, static_cast<std::uint32_t>(height));
    b[12] = 1;
    b[14] = static_cast<unsigned char>(bitCount);
    Put32(b, 20, static_cast<std::uint32_t>(stride * height));
    Put32(b, 24, 1234);
    Put32(b, 28, 5678);
    Put32(b, 32, static_cast<std::uint32_t>(colors));
    for (int i = 0; i < colors; ++i) {
        unsigned char v = static_cast<unsigned char>(i * 255 / (colors - 1));
        b[40 + 4 * i] = b[41 + 4 * i] = b[42 + 4 * i] = v;
    }
    unsigned char* bits = b.data() + 40 + colors * 4;
    for (int y = 0; y < height; ++y) {
        unsigned char* row = bits + stride * y;
        for (int x = 0; x < width; ++x) {
            unsigned v = pixel(x, y);
            if (bitCount == 4) row[x / 2] |= static_cast<unsigned char>(x % 2 ? v & 15 : (v & 15) << 4);
            else if (bitCount == 8) row[x] = static_cast<unsigned char>(v);
            else {
                row[3 * x] = static_cast<unsigned char>(v);
                row[3 * x + 1] = static_cast<unsigned char>(v >> 8);
                row[3 * x + 2] = static_cast<unsigned char>(v >> 16);
            }
        }
    }
    return b;
}

// The same grey picture at 4, 8 or 24 bits: `level` gives 0..15 per pixel,
// shown as grey level * 17.
inline Bytes GreyDib(int width, int height, int bitCount, unsigned (*level)(int, int)) {
    return MakeDib(width, height, bitCount, [=](int x, int y) -> unsigned {
        unsigned l = level(x, y) & 15;
        if (bitCount == 4) return l;
        unsigned g = l * 17;
        if (bitCount == 8) return g;
        return g << 16 | g << 8 | g;
    });
}

// A constant grey image of value g (0..255) at any depth; at 4 bits g is
// taken to the nearest of its 16 levels.
inline Bytes FlatGrey(int width, int height, int bitCount, unsigned g) {
    return MakeDib(width, height, bitCount, [=](int, int) -> unsigned {
        if (bitCount == 4) return (g + 8) / 17;
        if (bitCount == 8) return g;
        return g << 16 | g << 8 | g;
    });
}

// Runs an export on a copy of `dib` in a block and returns the result's
// bytes (empty on failure); the source block is checked to be unchanged.
template <typename F>
Bytes RunOn(const Bytes& dib, F&& op) {
    HGLOBAL block = testing_support::BlockFrom(dib);
    HDIB result = op(block);
    Bytes out;
    if (result) {
        out = testing_support::BlockBytes(result);
        GlobalFree(result);
    }
    Bytes after = testing_support::BlockBytes(block);
    GlobalFree(block);
    if (after != dib) out.clear();  // a changed source fails the caller's checks
    return out;
}

// True when the block still carries a lock left by an operation.
inline bool StillLocked(HGLOBAL block) {
    GlobalLock(block);
    return GlobalUnlock(block) != 0;
}

// Fraction of set pixels of a 1-bit result.
inline double WhiteFraction(const Bytes& dib) {
    int w = static_cast<int>(Get32(dib, 4)), h = static_cast<int>(Get32(dib, 8));
    int n = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) n += testing_support::PixelAt(dib, x, y);
    return double(n) / (double(w) * h);
}

}  // namespace reduce_test
