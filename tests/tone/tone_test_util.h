// Small images for the tone tests, built byte by byte.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace tone_test {

using testing_support::Bytes;

inline std::uint32_t Get32(const Bytes& b, size_t at) {
    std::uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}
inline void Put32(Bytes& b, size_t at, std::uint32_t v) { std::memcpy(b.data() + at, &v, 4); }
inline std::uint16_t Get16(const Bytes& b, size_t at) {
    std::uint16_t v;
    std::memcpy(&v, b.data() + at, 2);
    return v;
}

// An image of the given depth with all pixels 0 and `colors` table entries
// (-1: by depth), biClrUsed as given.
inline Bytes Blank(int width, int height, int bitCount, int colors = -1, std::uint32_t clrUsed = 0) {
    testing_support::DibSpec spec;
    spec.width = width;
    spec.height = height;
    spec.bitCount = bitCount;
    spec.colors = colors;
    spec.clrUsed = clrUsed;
    return testing_support::PackedDib(spec, [](int, int) { return 0u; });
}

inline size_t PixelOffset(const Bytes& b) {
    std::uint32_t used = Get32(b, 32);
    int bits = Get16(b, 14);
    std::uint32_t n = used ? used : (bits <= 8 ? 1u << bits : 0u);
    return 40 + n * 4;
}

inline size_t RowStride(const Bytes& b) {
    return testing_support::Stride(static_cast<int>(Get32(b, 4)), Get16(b, 14));
}

// Byte of pixel (x, y), y counted from the bottom, of an 8-bit image.
inline unsigned char& At8(Bytes& b, int x, int y) { return b[PixelOffset(b) + y * RowStride(b) + x]; }
inline unsigned char At8(const Bytes& b, int x, int y) { return b[PixelOffset(b) + y * RowStride(b) + x]; }

// Sets a bit of a 1-bit image; y from the bottom.
inline void SetBit(Bytes& b, int x, int y) {
    b[PixelOffset(b) + y * RowStride(b) + x / 8] |= static_cast<unsigned char>(0x80 >> (x % 8));
}

// Writes a grey ramp as the colour table of an 8-bit image.
inline void GreyTable(Bytes& b, int entries = 256) {
    for (int i = 0; i < entries; ++i) {
        b[40 + i * 4] = b[41 + i * 4] = b[42 + i * 4] = static_cast<unsigned char>(i);
        b[43 + i * 4] = 0;
    }
}

// The pixel bytes of a block as an image (RAII over a result handle).
struct Result {
    HDIB dib;
    explicit Result(HDIB d) : dib(d) {}
    ~Result() {
        if (dib) GlobalFree(dib);
    }
    Bytes bytes() const { return testing_support::BlockBytes(dib); }
};

}  // namespace tone_test
