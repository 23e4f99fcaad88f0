// Small images for the tone tests, on top of the shared test helpers.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

namespace tone_test {

using namespace testing_support;

inline std::uint32_t Get32(const Bytes& b, size_t at) {
    std::uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}
inline void Put32(Bytes& b, size_t at, std::uint32_t v) { std::memcpy(b.data() + at, &v, 4); }

inline unsigned Zero(int, int) { return 0; }

// A packed image; pixels from `f` (x, y from the top), the fixed pattern
// without one.  The table entry i is (blue 3i+1, green 5i+2, red 255-i).
inline Bytes Image(int width, int height, int bitCount, unsigned (*f)(int, int) = Zero, int colors = -1,
                   std::uint32_t clrUsed = 0) {
    DibShape layout;
    layout.width = width;
    layout.height = height;
    layout.bitCount = bitCount;
    layout.colors = colors;
    layout.clrUsed = clrUsed;
    return PackedDib(layout, f);
}

// Every pixel of one value.
inline unsigned uniformValue;
inline Bytes Uniform(int width, int height, int bitCount, unsigned value) {
    uniformValue = value;
    return Image(width, height, bitCount, [](int, int) { return uniformValue; });
}

// The bytes of a result block, freed; empty for no result.
inline Bytes Take(HDIB dib) {
    if (!dib) return Bytes();
    Bytes b = BlockBytes(dib);
    GlobalFree(dib);
    return b;
}

// Runs filter(dib, copy, &error) on a copy and in place: both must agree,
// and a copy or a refusal leaves the source alone.
template <class Filter>
Bytes CopyAndInPlace(const Bytes& src, Filter filter, int* errorOut) {
    HDIB dib = BlockFrom(src);
    int error = -1, inPlaceError = -1;
    Bytes copy = Take(filter(dib, 1, &error));
    EXPECT_EQ(BlockBytes(dib), src);
    EXPECT_EQ(filter(dib, 0, &inPlaceError), copy.empty() ? nullptr : dib);
    EXPECT_EQ(inPlaceError, error);
    EXPECT_EQ(BlockBytes(dib), copy.empty() ? src : copy);
    GlobalFree(dib);
    if (errorOut) *errorOut = error;
    return copy;
}

}  // namespace tone_test
