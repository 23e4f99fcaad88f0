// Every export that takes an image, fed every kind of broken image: each
// call must come back (no crash, no read or write outside a block, which
// the sanitizer build checks), and any image it returns must be a live
// block the host can free.
#include "prism32.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace testing_support;

namespace {

// ---- the broken images -------------------------------------------------------

struct Hostile {
    std::string name;
    std::function<HGLOBAL()> make;  // a fresh block per call (may be null)
};

// A 40-byte header with the given fields over a block of `blockBytes`
// (header, 256-entry table room and a few rows of real bytes).
HGLOBAL HeaderBlock(std::int32_t width, std::int32_t height, int bitCount, std::uint32_t compression,
                    std::uint32_t clrUsed, size_t blockBytes) {
    Bytes b(blockBytes, 0x5A);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bitCount);
    h.biCompression = compression;
    h.biClrUsed = clrUsed;
    std::memcpy(b.data(), &h, blockBytes < sizeof(h) ? blockBytes : sizeof(h));
    return BlockFrom(b);
}

std::vector<Hostile> HostileImages() {
    std::vector<Hostile> v;
    const size_t small = 40 + 1024 + 64;  // room for a table and a little more
    v.push_back({"null handle", [] { return HGLOBAL(nullptr); }});
#ifndef _WIN32
    // Only the POSIX handle table can tell a freed block from a live one.
    v.push_back({"freed handle", [] {
                     HGLOBAL b = GlobalAlloc(GHND, 100);
                     GlobalFree(b);
                     return b;
                 }});
#endif
    v.push_back({"block of 3 bytes", [] { return BlockFrom(Bytes(3, 40)); }});
    v.push_back({"header cut at 20 bytes", [] { return HeaderBlock(8, 8, 8, 0, 0, 20); }});
    v.push_back({"8-bit table cut short", [] { return HeaderBlock(8, 8, 8, 0, 0, 40 + 100); }});
    v.push_back({"rows cut short", [small] { return HeaderBlock(64, 64, 8, 0, 0, small); }});
    for (std::int32_t size : {0, 1, 65535, 0x7FFFFFFF}) {
        for (int bits : {1, 8, 24}) {
            v.push_back({"width " + std::to_string(size) + " at " + std::to_string(bits),
                         [=] { return HeaderBlock(size, 4, bits, 0, 0, small); }});
            v.push_back({"height " + std::to_string(size) + " at " + std::to_string(bits),
                         [=] { return HeaderBlock(4, size, bits, 0, 0, small); }});
        }
    }
    // Millions of rows claimed by a tiny block (found by fuzzing: the dithers
    // once walked them all).
    v.push_back({"height 2^24+5 in 1 KB", [] { return HeaderBlock(9, 16777221, 8, 0, 256, 1124); }});
    v.push_back({"negative height", [small] { return HeaderBlock(4, -4, 8, 0, 0, small); }});
    v.push_back({"negative width", [small] { return HeaderBlock(-4, 4, 8, 0, 0, small); }});
    v.push_back({"most negative height", [small] { return HeaderBlock(4, INT32_MIN, 24, 0, 0, small); }});
    for (int bits : {0, 2, 16, 32, 255})
        v.push_back({"depth " + std::to_string(bits), [=] { return HeaderBlock(4, 4, bits, 0, 0, small); }});
    for (std::uint32_t compression : {1u, 2u, 3u})
        v.push_back({"compression " + std::to_string(compression),
                     [=] { return HeaderBlock(8, 8, compression == 2 ? 4 : 8, compression, 0, small); }});
    v.push_back({"biClrUsed 300", [] { return HeaderBlock(4, 4, 8, 0, 300, 40 + 1200 + 64); }});
    v.push_back({"biClrUsed 2^31", [small] { return HeaderBlock(4, 4, 8, 0, 0x80000000u, small); }});
    v.push_back({"core header", [] {
                     DibShape shape;
                     shape.coreHeader = true;
                     shape.width = 9;
                     shape.height = 3;
                     shape.bitCount = 4;
                     return BlockFrom(PackedDib(shape));
                 }});
    return v;
}

// ---- the exports ---------------------------------------------------------------

struct Operation {
    std::string name;
    // Calls the export; returns what it made (0 when it makes nothing or
    // failed, or the input itself when it worked in place).
    std::function<HGLOBAL(HGLOBAL)> call;
};

std::vector<Operation> Operations() {
    std::vector<Operation> ops;
    ops.push_back({"SaveDIB", [](HGLOBAL dib) {
                       ScratchFile out("hostile");
                       SaveDIB(out.path(), dib);
                       return HGLOBAL(nullptr);
                   }});
    using Turn = HDIB(WINAPI*)(HDIB);
    const std::pair<const char*, Turn> turns[] = {
        {"RotateDIB90", RotateDIB90},         {"RotateDIB180", RotateDIB180},
        {"RotateDIB270", RotateDIB270},       {"FlipDIBVertical", FlipDIBVertical},
        {"FlipDIBHorizontal", FlipDIBHorizontal}, {"CompressDIB", CompressDIB},
        {"ExpandCompressedDIB", ExpandCompressedDIB}};
    for (const auto& t : turns) {
        Turn fn = t.second;
        ops.push_back({t.first, [=](HGLOBAL dib) { return fn(dib); }});
    }
    for (int angle : {0, 45, 90, 181, -30}) {
        for (int walk : {0, 1}) {
            ops.push_back({"RotateDIB_" + std::to_string(angle < 0 ? 360 + angle : angle) + "_walk" +
                               std::to_string(walk),
                           [=](HGLOBAL dib) {
                               int error = 0, corners[8];
                               return RotateDIB(dib, angle, walk, &error, corners);
                           }});
        }
    }
    for (int horizontal : {0, 1}) {
        ops.push_back({std::string("SkewDIB_") + (horizontal ? "horizontal" : "vertical"), [=](HGLOBAL dib) {
                           int error = 0, corners[8];
                           return SkewDIB(dib, horizontal, 7, &error, corners);
                       }});
    }
    ops.push_back({"SaveDIBInImageFormat_bmp", [](HGLOBAL dib) {
                       ScratchFile out("hostile-format");
                       SaveDIBInImageFormat(out.path(), dib, 6, 0, 0);
                       return HGLOBAL(nullptr);
                   }});
    for (int mode : {0, 1}) {
        for (int size : {1, 7, 40}) {
            ops.push_back({"ScaleDIB_" + std::string(mode ? "cubic_" : "linear_") + std::to_string(size),
                           [=](HGLOBAL dib) { return ScaleDIB(dib, mode, size, size + 3); }});
        }
        ops.push_back({std::string("ScaleGrayDIB_") + (mode ? "cubic" : "linear"), [=](HGLOBAL dib) {
                           return ScaleGrayDIB(dib, 1, 1, 5, 4, 2, 3, mode);
                       }});
    }
    using Dither = HDIB(WINAPI*)(HDIB, int);
    const std::pair<const char*, Dither> dithers[] = {
        {"DitherFS4", DitherFS4}, {"DitherJJN", DitherJJN}, {"DitherSmooth", DitherSmooth}, {"DitherSharp", DitherSharp}};
    for (const auto& d : dithers) {
        for (int bits : {1, 4, 8}) {
            Dither fn = d.second;
            ops.push_back({std::string(d.first) + "_" + std::to_string(bits),
                           [=](HGLOBAL dib) { return fn(dib, bits); }});
        }
    }
    for (WORD method : {0, 1, 2}) {
        ops.push_back({"Halftone_" + std::to_string(method), [=](HGLOBAL dib) {
                           WORD error = 0;
                           return Halftone(dib, method, 10, &error);
                       }});
    }
    ops.push_back({"ComputeHistogram", [](HGLOBAL dib) {
                       int error = 0, position[2] = {3, 2};
                       HGLOBAL table = ComputeHistogram(dib, 30, nullptr, position, &error);
                       if (table) {
                           ComputeHistogram(dib, 31, table, position, &error);
                           GlobalFree(table);
                       }
                       return HGLOBAL(nullptr);
                   }});
    for (BOOL copy : {0, 1}) {
        const std::string how = copy ? "_copy" : "_in_place";
        ops.push_back({"ApplyLUT" + how, [=](HGLOBAL dib) {
                           int error = 0;
                           HGLOBAL lut = ComputeLUT(nullptr, 30, nullptr, 0, 0, &error);
                           HGLOBAL result = ApplyLUT(dib, lut, copy, &error);
                           if (lut) GlobalFree(lut);
                           return result;
                       }});
        for (int kind : {1, 3, 4, 5, 6}) {
            for (int size : {3, 5, 7}) {
                ops.push_back({"Convolve" + how + "_kind" + std::to_string(kind) + "_size" + std::to_string(size),
                               [=](HGLOBAL dib) {
                                   int error = 0;
                                   std::vector<int> matrix(size * size + 1, 1);
                                   return Convolve(dib, copy, kind, size, nullptr, matrix.data(), &error);
                               }});
                ops.push_back({"ColorConvolution" + how + "_kind" + std::to_string(kind) + "_size" +
                                   std::to_string(size),
                               [=](HGLOBAL dib) {
                                   int error = 0;
                                   std::vector<short> matrix(size * size + 1, 1);
                                   return ColorConvolution(dib, copy, 0, static_cast<WORD>(kind),
                                                           static_cast<short>(size), nullptr, matrix.data(), &error);
                               }});
            }
        }
    }
    ops.push_back({"ColorBrightnessContrast", [](HGLOBAL dib) { return ColorBrightnessContrast(dib, 20, -30); }});
    ops.push_back({"InvertDIBPalette", [](HGLOBAL dib) {
                       InvertDIBPalette(dib);
                       return HGLOBAL(nullptr);
                   }});
    ops.push_back({"Convert8to24", [](HGLOBAL dib) { return Convert8to24(dib); }});
    for (int smoothing : {0, 3, 5}) {
        for (BOOL weighted : {0, 1}) {
            ops.push_back({"ConvColorDIBtoGrayscale_" + std::to_string(smoothing) + (weighted ? "_weighted" : ""),
                           [=](HGLOBAL dib) { return ConvColorDIBtoGrayscale(dib, smoothing, weighted); }});
        }
        ops.push_back({"ConvMonoDIBtoGrayscale_" + std::to_string(smoothing),
                       [=](HGLOBAL dib) { return ConvMonoDIBtoGrayscale(dib, smoothing); }});
    }
#ifdef PRISM32_HAS_GRAPHICS
    // Device objects made from a broken image are deleted at once.
    ops.push_back({"ConvertDIBToBitmap", [](HGLOBAL dib) {
                       DeleteObject(ConvertDIBToBitmap(dib));
                       return HGLOBAL(nullptr);
                   }});
    ops.push_back({"CreateDIBPalette", [](HGLOBAL dib) {
                       DeleteObject(CreateDIBPalette(dib));
                       return HGLOBAL(nullptr);
                   }});
    // Shown in a window: started, painted, scrolled and painted directly.
    ops.push_back({"Display", [](HGLOBAL dib) {
                       static HWND window = CreateWindowA("STATIC", "", WS_POPUP | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL, 0,
                                                          0, 200, 150, nullptr, nullptr, nullptr, nullptr);
                       DisplayState state;
                       const int zoom[4] = {3, 1, 3, 1}, position[4] = {0, 0, 5, 5};
                       int cpp[4] = {0, 0, 0, 0};
                       DisplayWmCreate(window, 0, 0, &state);
                       DisplayDIBStart(window, dib, nullptr, zoom, DF_CENTRE | DF_MAKE_BITMAP, &state);
                       DisplayWmVertScroll(window, SB_PAGEDOWN, 0, &state);
                       InvalidateRect(window, nullptr, FALSE);
                       DisplayWmPaint(window, &state);
                       DisplayWmDestroy(window, 0, 0, &state);
                       SetLowMemStretch(1);
                       DisplayDIBImage(window, dib, position, zoom, 0);
                       SetLowMemStretch(0);
                       DisplayDIBImage(window, dib, position, nullptr, DF_FIT);
                       DisplayCPPSize(window, dib, cpp, zoom, DF_CENTRE, MAKELPARAM(200, 150));
                       DisplayCPPImage(window, dib, cpp, zoom, 0);
                       return HGLOBAL(nullptr);
                   }});
#endif
    return ops;
}

class HostileInput : public ::testing::TestWithParam<size_t> {};

TEST_P(HostileInput, EveryImageExportSurvivesEveryBrokenImage) {
    const Operation op = Operations()[GetParam()];
    for (const Hostile& h : HostileImages()) {
        SCOPED_TRACE(op.name + " on " + h.name);
        HGLOBAL input = h.make();
        HGLOBAL result = op.call(input);
        if (result && result != input) {
            EXPECT_NE(GlobalLock(result), nullptr);
            GlobalUnlock(result);
            // A lock left standing by the export does not stop the free.
            EXPECT_EQ(GlobalFree(result), nullptr);
        }
        if (input && h.name != "freed handle") {
            // The caller's block is still the caller's: alive and freeable.
            EXPECT_GT(GlobalSize(input), 0u);
            EXPECT_EQ(GlobalFree(input), nullptr);
        }
    }
}

std::string OperationName(const ::testing::TestParamInfo<size_t>& info) {
    return Operations()[info.param].name;
}

INSTANTIATE_TEST_SUITE_P(Exports, HostileInput, ::testing::Range<size_t>(0, Operations().size()),
                         OperationName);

}  // namespace
