// Helpers of the codec module tests: pictures as blocks, colours read back
// through the table, and files removed at the end of a scope.
#pragma once

#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <string>

namespace module_tests {

using testing_support::Bytes;

// A picture of the given depth with distinct colours (24-bit: at most 256,
// so a GIF keeps them all); at 1 bit white is index 0 unless blackFirst.
inline HDIB Picture(int depth, int width, int height, bool blackFirst = false) {
    Bytes b = testing_support::Image(width, height, depth, [](int x, int y) -> unsigned {
        const unsigned v = (x * 7 + y * 13) & 255;
        return (v << 16) | ((255 - v) << 8) | ((v * 5) & 255) | ((x ^ y) & 1);
    });
    for (int i = 0; depth == 1 && i < 3; ++i) b[40 + i] = blackFirst ? 0 : 255, b[44 + i] = blackFirst ? 255 : 0;
    return testing_support::BlockFrom(b);
}

// 0xRRGGBB of pixel (x, y), y from the top, through the table if any.
inline unsigned ColorAt(const Bytes& dib, int x, int y) {
    const auto* h = reinterpret_cast<const BITMAPINFOHEADER*>(dib.data());
    const unsigned v = testing_support::PixelAt(dib, x, h->biHeight - 1 - y);
    const unsigned char* entry = dib.data() + 40 + 4 * v;
    return h->biBitCount == 24 ? v : entry[2] << 16 | entry[1] << 8 | entry[0];
}

// Number of pixels whose colours differ; -1 when the sizes differ.
inline long ColorDifferences(HDIB a, HDIB b) {
    const Bytes x = testing_support::BlockBytes(a), y = testing_support::BlockBytes(b);
    if (testing_support::Field(x, 4) != testing_support::Field(y, 4) || testing_support::Field(x, 8) != testing_support::Field(y, 8)) return -1;
    long differ = 0;
    for (int r = 0; r < testing_support::Field(x, 8); ++r)
        for (int c = 0; c < testing_support::Field(x, 4); ++c) differ += ColorAt(x, c, r) != ColorAt(y, c, r);
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

// A file written by a module: the options as SaveDIBInImageFormat passes
// them on, the depth it loads at, and for a damaged file the damage done
// to it and the status its loading sets (-1 where the entry has none).
struct FileCase {
    const char* file;
    int format, depth, option1, option2, loadedDepth;
    void (*spoil)(Bytes&) = nullptr;
    int status = 0;
};
class ModuleFile : public ::testing::TestWithParam<FileCase> {};

// A test name made of the file name.
inline std::string NameOf(const ::testing::TestParamInfo<FileCase>& info) {
    std::string n = info.param.file;
    for (char& c : n) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return n;
}

}  // namespace module_tests
