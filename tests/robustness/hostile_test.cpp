// Every export that takes an image, fed every kind of broken image: each
// call must come back (no crash, no read or write outside a block, which
// the sanitizer build checks), and any image it returns must be a live
// block the host can free.
#include "support/test_support.h"

#include <climits>

using namespace testing_support;

namespace {

using Make = std::function<HGLOBAL()>;
using Call = std::function<HGLOBAL(HGLOBAL)>;  // what the export made, or 0

// A 40-byte header with the given fields over a block of `blockBytes`
// (header, 256-entry table room and a few rows of real bytes).
HGLOBAL HeaderBlock(std::int32_t width, std::int32_t height, int bitCount, std::uint32_t compression,
                    std::uint32_t clrUsed, size_t blockBytes = 40 + 1024 + 64) {
    Bytes b(blockBytes, 0x5A);
    const std::int32_t fields[] = {40, width, height, 1 | bitCount << 16, std::int32_t(compression), 0, 0, 0,
                                   std::int32_t(clrUsed), 0};
    std::memcpy(b.data(), fields, std::min(blockBytes, sizeof fields));
    return BlockFrom(b);
}

std::vector<std::pair<std::string, Make>> HostileImages() {
    std::vector<std::pair<std::string, Make>> v = {
        {"null handle", [] { return HGLOBAL(nullptr); }},
        {"block of 3 bytes", [] { return BlockFrom(Bytes(3, 40)); }},
        {"header cut at 20 bytes", [] { return HeaderBlock(8, 8, 8, 0, 0, 20); }},
        {"8-bit table cut short", [] { return HeaderBlock(8, 8, 8, 0, 0, 40 + 100); }},
        {"rows cut short", [] { return HeaderBlock(64, 64, 8, 0, 0); }},
        // Millions of rows claimed by a tiny block (found by fuzzing: the
        // dithers once walked them all).
        {"height 2^24+5 in 1 KB", [] { return HeaderBlock(9, 16777221, 8, 0, 256, 1124); }},
        {"negative height", [] { return HeaderBlock(4, -4, 8, 0, 0); }},
        {"negative width", [] { return HeaderBlock(-4, 4, 8, 0, 0); }},
        {"most negative height", [] { return HeaderBlock(4, INT32_MIN, 24, 0, 0); }},
        {"biClrUsed 300", [] { return HeaderBlock(4, 4, 8, 0, 300, 40 + 1200 + 64); }},
        {"biClrUsed 2^31", [] { return HeaderBlock(4, 4, 8, 0, 0x80000000u); }},
        {"core header", [] { return BlockFrom(PackedDib({9, 3, 4, -1, 0, 0, true})); }}};
#ifndef _WIN32
    // Only the POSIX handle table can tell a freed block from a live one.
    v.push_back({"freed handle", [] { HGLOBAL b = GlobalAlloc(GHND, 100); return GlobalFree(b), b; }});
#endif
    for (std::int32_t size : {0, 1, 65535, 0x7FFFFFFF})
        for (int bits : {1, 8, 24}) {
            v.push_back({"width " + std::to_string(size) + " at " + std::to_string(bits), [=] { return HeaderBlock(size, 4, bits, 0, 0); }});
            v.push_back({"height " + std::to_string(size) + " at " + std::to_string(bits), [=] { return HeaderBlock(4, size, bits, 0, 0); }});
        }
    for (int bits : {0, 2, 16, 32, 255}) v.push_back({"depth " + std::to_string(bits), [=] { return HeaderBlock(4, 4, bits, 0, 0); }});
    for (std::uint32_t c : {1u, 2u, 3u}) v.push_back({"compression " + std::to_string(c), [=] { return HeaderBlock(8, 8, c == 2 ? 4 : 8, c, 0); }});
    return v;
}

std::vector<std::pair<std::string, Call>> Operations() {
    std::vector<std::pair<std::string, Call>> ops = {
        {"SaveDIB", [](HGLOBAL d) { ScratchFile out("hostile"); return SaveDIB(out.path(), d), HGLOBAL(nullptr); }},
        {"SaveDIBInImageFormat", [](HGLOBAL d) { ScratchFile out("hostile"); return SaveDIBInImageFormat(out.path(), d, 6, 0, 0), HGLOBAL(nullptr); }},
        {"ComputeHistogram", [](HGLOBAL d) {
             int error = 0, position[2] = {3, 2};
             HGLOBAL table = ComputeHistogram(d, PRISM_TABLE_CREATE, nullptr, position, &error);
             ComputeHistogram(d, PRISM_TABLE_UPDATE, table, position, &error);
             return table;
         }},
        {"ColorBrightnessContrast", [](HGLOBAL d) { return ColorBrightnessContrast(d, 20, -30); }},
        {"InvertDIBPalette", [](HGLOBAL d) { return InvertDIBPalette(d), HGLOBAL(nullptr); }},
        {"Convert8to24", [](HGLOBAL d) { return Convert8to24(d); }}};
    const std::pair<const char*, DibOp> plain[] = {
        {"RotateDIB90", RotateDIB90},         {"RotateDIB180", RotateDIB180}, {"RotateDIB270", RotateDIB270},
        {"FlipDIBVertical", FlipDIBVertical}, {"FlipDIBHorizontal", FlipDIBHorizontal},
        {"CompressDIB", CompressDIB},         {"ExpandCompressedDIB", ExpandCompressedDIB}};
    for (const auto& [name, fn] : plain) ops.push_back({name, [fn = fn](HGLOBAL d) { return fn(d); }});
    for (int a : {0, 45, 90, 181, -30})
        for (int walk : {0, 1})
            ops.push_back({"RotateDIB_" + std::to_string(a + 30) + "_" + std::to_string(walk), [=](HGLOBAL d) {
                               int error = 0, corners[8];
                               return RotateDIB(d, a, walk, &error, corners);
                           }});
    for (int h : {0, 1})
        ops.push_back({"SkewDIB_" + std::to_string(h), [=](HGLOBAL d) { int e = 0, c[8]; return SkewDIB(d, h, 7, &e, c); }});
    for (int mode : {0, 1}) {
        for (int size : {1, 7, 40})
            ops.push_back({"ScaleDIB_" + std::to_string(mode) + "_" + std::to_string(size), [=](HGLOBAL d) { return ScaleDIB(d, mode, size, size + 3); }});
        ops.push_back({"ScaleGrayDIB_" + std::to_string(mode), [=](HGLOBAL d) { return ScaleGrayDIB(d, 1, 1, 5, 4, 2, 3, mode); }});
    }
    const std::pair<const char*, HDIB(WINAPI*)(HDIB, int)> dithers[] = {
        {"DitherFS4", DitherFS4}, {"DitherJJN", DitherJJN}, {"DitherSmooth", DitherSmooth}, {"DitherSharp", DitherSharp}};
    for (const auto& [name, fn] : dithers)
        for (int bits : {1, 4, 8}) ops.push_back({name + std::to_string(bits), [fn = fn, bits](HGLOBAL d) { return fn(d, bits); }});
    for (WORD method : {0, 1, 2})
        ops.push_back({"Halftone_" + std::to_string(method), [=](HGLOBAL d) { WORD e = 0; return Halftone(d, method, 10, &e); }});
    for (BOOL copy : {0, 1}) {
        const std::string how = copy ? "_copy" : "_in_place";
        ops.push_back({"ApplyLUT" + how, [=](HGLOBAL d) {
                           int error = 0;
                           HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, &error);
                           HGLOBAL result = ApplyLUT(d, lut, copy, &error);
                           return GlobalFree(lut), result;
                       }});
        for (int kind : {1, 3, 4, 5, 6})
            for (int n : {3, 5, 7}) {
                const std::string at = how + "_" + std::to_string(kind) + "_" + std::to_string(n);
                ops.push_back({"Convolve" + at, [=](HGLOBAL d) {
                                   int error = 0;
                                   const std::vector<int> m(n * n + 1, 1);
                                   return Convolve(d, copy, kind, n, nullptr, m.data(), &error);
                               }});
                ops.push_back({"ColorConvolution" + at, [=](HGLOBAL d) {
                                   int error = 0;
                                   const std::vector<short> m(n * n + 1, 1);
                                   return ColorConvolution(d, copy, 0, WORD(kind), short(n), nullptr, m.data(), &error);
                               }});
            }
    }
    for (int smoothing : {0, 3, 5}) {
        for (BOOL weighted : {0, 1})
            ops.push_back({"ConvColorDIBtoGrayscale_" + std::to_string(smoothing) + "_" + std::to_string(weighted),
                           [=](HGLOBAL d) { return ConvColorDIBtoGrayscale(d, smoothing, weighted); }});
        ops.push_back({"ConvMonoDIBtoGrayscale_" + std::to_string(smoothing), [=](HGLOBAL d) { return ConvMonoDIBtoGrayscale(d, smoothing); }});
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
    const auto op = Operations()[GetParam()];
    for (const auto& [name, make] : HostileImages()) {
        SCOPED_TRACE(op.first + " on " + name);
        HGLOBAL input = make();
        HGLOBAL result = op.second(input);
        if (result && result != input) {
            EXPECT_NE(GlobalLock(result), nullptr);
            GlobalUnlock(result);
            EXPECT_EQ(GlobalFree(result), nullptr);  // a lock left standing does not stop the free
        }
        if (input && name != "freed handle") {
            EXPECT_GT(GlobalSize(input), 0u);  // the caller's block is still the caller's
            EXPECT_EQ(GlobalFree(input), nullptr);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Exports, HostileInput, ::testing::Range<size_t>(0, Operations().size()),
                         [](const ::testing::TestParamInfo<size_t>& info) { return Operations()[info.param].first; });

}  // namespace
