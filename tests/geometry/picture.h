// Pictures as plain pixel grids for the geometry and compression tests,
// turned into DIB bytes and back without the library's help.
#pragma once

#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

namespace picture {

using testing_support::Bytes;

struct Picture {
    int width = 0;
    int height = 0;
    int bits = 8;
    std::vector<unsigned> px;  // row y (stored order, bottom first) at y * width

    Picture() = default;
    Picture(int w, int h, int b) : width(w), height(h), bits(b), px(static_cast<size_t>(w) * h, 0) {}
    unsigned& at(int x, int y) { return px[static_cast<size_t>(y) * width + x]; }
    unsigned at(int x, int y) const { return px[static_cast<size_t>(y) * width + x]; }
    bool operator==(const Picture& o) const {
        return width == o.width && height == o.height && bits == o.bits && px == o.px;
    }
};

inline unsigned MaxValue(int bits) { return bits >= 24 ? 0xFFFFFFu : (1u << bits) - 1; }

// A picture filled by fn(x, y), y counted from the bottom, masked to the depth.
inline Picture Make(int w, int h, int bits, const std::function<unsigned(int, int)>& fn) {
    Picture p(w, h, bits);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) p.at(x, y) = fn(x, y) & MaxValue(bits);
    return p;
}

// A fixed, varied picture: a small mixing function, different per depth.
inline Picture Varied(int w, int h, int bits) {
    return Make(w, h, bits, [bits](int x, int y) {
        std::uint32_t v = static_cast<std::uint32_t>(x * 73856093u) ^ static_cast<std::uint32_t>(y * 19349663u) ^
                          static_cast<std::uint32_t>(bits * 83492791u);
        v ^= v >> 13;
        v *= 0x5bd1e995u;
        return v ^ (v >> 15);
    });
}

inline std::uint32_t Get32(const Bytes& b, size_t at) {
    std::uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}
inline void Put32(Bytes& b, size_t at, std::uint32_t v) { std::memcpy(b.data() + at, &v, 4); }
inline unsigned Get16(const Bytes& b, size_t at) { return b[at] | b[at + 1] << 8; }

// Offset of the first pixel byte of a 40-byte-header DIB.
inline size_t BitsOffset(const Bytes& dib) {
    const unsigned bits = Get16(dib, 14);
    const std::uint32_t used = Get32(dib, 32);
    const size_t colors = used ? used : bits <= 8 ? (1u << bits) : 0;
    return 40 + colors * 4;
}

// Writes a pixel value at an absolute bit position of a byte area, the
// first pixel of a byte in its high bits; 24-bit values as blue, green, red.
inline void PutBits(unsigned char* area, std::uint64_t bitPos, int bits, unsigned v) {
    if (bits == 24) {
        unsigned char* p = area + bitPos / 8;
        p[0] = static_cast<unsigned char>(v);
        p[1] = static_cast<unsigned char>(v >> 8);
        p[2] = static_cast<unsigned char>(v >> 16);
        return;
    }
    for (int k = 0; k < bits; ++k) {
        const std::uint64_t b = bitPos + k;
        const unsigned bit = (v >> (bits - 1 - k)) & 1;
        unsigned char mask = static_cast<unsigned char>(0x80 >> (b % 8));
        if (bit)
            area[b / 8] |= mask;
        else
            area[b / 8] &= static_cast<unsigned char>(~mask);
    }
}

// DIB bytes of a picture (40-byte header, table by depth, zero padding).
inline Bytes ToDib(const Picture& p) {
    testing_support::DibShape shape;
    shape.width = p.width;
    shape.height = p.height;
    shape.bitCount = p.bits;
    Bytes dib = testing_support::PackedDib(shape, [](int, int) { return 0u; });
    const size_t stride = testing_support::Stride(p.width, p.bits);
    unsigned char* bits = dib.data() + BitsOffset(dib);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            PutBits(bits + stride * y, static_cast<std::uint64_t>(x) * p.bits, p.bits, p.at(x, y));
    return dib;
}

// A signed 32-bit header field: 4 width, 8 height, 20 biSizeImage, 32 biClrUsed.
inline int Field(const Bytes& b, size_t at) { return static_cast<std::int32_t>(Get32(b, at)); }

// DIB bytes with the support library's table and pixels (x, y from the top).
inline Bytes Image(int w, int h, int bits, unsigned (*pixel)(int, int) = nullptr) {
    testing_support::DibShape shape;
    shape.width = w;
    shape.height = h;
    shape.bitCount = bits;
    return testing_support::PackedDib(shape, pixel);
}

// RotateDIB and SkewDIB: the result's bytes, the error word (-7 if never
// written) and the corners.  The source is locked once before the call: a
// success must leave one more lock, a failure none, the result none.
struct Moved {
    Bytes result;
    int error = -7;
    int corners[8] = {};
};
template <class Op>
Moved Move(Op op, const Bytes& source, int a, int b) {
    Moved m;
    HGLOBAL src = testing_support::BlockFrom(source);
    EXPECT_NE(GlobalLock(src), nullptr);
    if (HDIB out = op(src, a, b, &m.error, m.corners)) {
        EXPECT_TRUE(GlobalUnlock(src)) << "a success leaves one lock on the source";
        EXPECT_FALSE(GlobalUnlock(out)) << "the result comes back unlocked";
        m.result = testing_support::BlockBytes(out);
        GlobalFree(out);
    }
    EXPECT_FALSE(GlobalUnlock(src)) << "no lock left behind";
    GlobalFree(src);
    return m;
}

using DibOp = HDIB(WINAPI*)(HDIB);

// Runs an export on bytes and gives back the result's bytes (empty for a
// 0 result); the input block is checked to be unchanged and freed.
inline Bytes Run(DibOp op, const Bytes& in) {
    HGLOBAL block = testing_support::BlockFrom(in);
    HDIB out = op(block);
    Bytes result = out ? testing_support::BlockBytes(out) : Bytes();
    EXPECT_TRUE(testing_support::BlockBytes(block) == in) << "the input block was changed";
    if (out) GlobalFree(out);
    GlobalFree(block);
    return result;
}

}  // namespace picture
