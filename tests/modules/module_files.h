// Helpers of the codec module tests: pictures as blocks, colours read back
// through the table, and files removed at the end of a scope.
#pragma once

#include "support/test_support.h"

#include <cstdio>
#include <string>

namespace module_tests {

using testing_support::Bytes;

// A picture of the given depth: 1-bit with white at index 0 (as fax
// pages), other palette depths with distinct colours, 24-bit with at most
// 256 colours (so a GIF keeps them all).
inline HDIB Picture(int depth, int width, int height, bool blackFirst = false) {
    testing_support::DibShape shape;
    shape.width = width, shape.height = height, shape.bitCount = depth;
    Bytes b = testing_support::PackedDib(shape, [](int x, int y) -> unsigned {
        const unsigned v = (x * 7 + y * 13) & 255;
        return (v << 16) | ((255 - v) << 8) | ((v * 5) & 255) | ((x ^ y) & 1);
    });
    if (depth == 1) {
        const unsigned char first = blackFirst ? 0 : 255;
        for (int i = 0; i < 3; ++i) b[40 + i] = first, b[44 + i] = static_cast<unsigned char>(255 - first);
    }
    return testing_support::BlockFrom(b);
}

// 0xRRGGBB of pixel (x, y), y from the top, through the table if any.
inline unsigned ColorAt(const Bytes& dib, int x, int y) {
    const auto* h = reinterpret_cast<const BITMAPINFOHEADER*>(dib.data());
    const int depth = h->biBitCount;
    const unsigned v = testing_support::PixelAt(dib, x, h->biHeight - 1 - y);
    if (depth == 24) return v;
    const unsigned char* entry = dib.data() + 40 + 4 * v;
    return entry[2] << 16 | entry[1] << 8 | entry[0];
}

// Number of pixels whose colours differ; -1 when the sizes differ.
inline long ColorDifferences(HDIB a, HDIB b) {
    const Bytes x = testing_support::BlockBytes(a), y = testing_support::BlockBytes(b);
    const auto* hx = reinterpret_cast<const BITMAPINFOHEADER*>(x.data());
    const auto* hy = reinterpret_cast<const BITMAPINFOHEADER*>(y.data());
    if (hx->biWidth != hy->biWidth || hx->biHeight != hy->biHeight) return -1;
    long differ = 0;
    for (int r = 0; r < hx->biHeight; ++r)
        for (int c = 0; c < hx->biWidth; ++c) differ += ColorAt(x, c, r) != ColorAt(y, c, r);
    return differ;
}

// Whether the module of a format is built (TIFF, CALS, GIF and JPEG need
// libraries a build may lack).
inline bool ModuleBuilt(int format) {
#ifndef PRISM_HAVE_ALDER
    if (format == PRISM_FORMAT_TIFF || format == PRISM_FORMAT_CALS) return false;
#endif
#ifndef PRISM_HAVE_CEDAR
    if (format == PRISM_FORMAT_GIF) return false;
#endif
#ifndef PRISM_HAVE_HAZEL
    if (format == PRISM_FORMAT_JPEG) return false;
#endif
    return format != PRISM_FORMAT_NONE;
}

// A named file in the working directory, removed when the scope ends.
struct TempFile {
    explicit TempFile(std::string n) : name(std::move(n)) { std::remove(name.c_str()); }
    ~TempFile() { std::remove(name.c_str()); }
    const char* path() const { return name.c_str(); }
    std::string name;
};

}  // namespace module_tests
