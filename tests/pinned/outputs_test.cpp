// Canonical outputs pinned by hash: every export that computes pixels, over
// depths, sizes and arguments, one row per family.  Any change of output
// shows here, and every build (32-bit ones included) must give the same
// numbers, floating-point work included.  A row hashes its results one
// after another, each followed by a marker.  Run-length coding has no row:
// its streams are written out in tests/core/rle_test.cpp.
#include "display/stretch.h"
#include "halftone/dither.h"
#include "support/test_support.h"

#include <cinttypes>
#include <cstdio>

namespace {

using namespace testing_support;

unsigned GreyRamp(int x, int y) { return static_cast<unsigned>((x * 13 + y * 29) % 256) * 0x010101u; }

struct Out {
    Bytes all;
    void Add(const Bytes& b) {
        all.insert(all.end(), b.begin(), b.end());
        all.push_back(0xA5);
    }
    void Add(const int* v, int n) { Add(Bytes(reinterpret_cast<const unsigned char*>(v), reinterpret_cast<const unsigned char*>(v + n))); }
};

// A grey table (entry k = k * 255 / (n - 1)) under Pattern's indices.
Bytes GreyTable(int w, int h, int depth) { return GreyImage(w, h, depth, depth == 24 ? GreyRamp : Pattern); }

Bytes Turns(int depth) {
    Out o;
    for (auto [w, h] : {std::pair{1, 1}, {7, 5}, {13, 32}, {33, 9}, {3, 17}, {130, 7}}) {
        Bytes src = ToDib(Varied(w, h, depth));
        for (auto [at, v] : {std::pair{24u, 100u}, {28u, 200u}, {36u, 3u}}) Put32(src, at, v);
        for (DibOp op : {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBVertical, FlipDIBHorizontal}) o.Add(Call(op, src));
    }
    return o.all;
}

// RotateDIB (angle, walk mode) and SkewDIB (direction, skew): every amount
// with both flags, result and corners.
Bytes Moves(MoveOp op, int depth, std::vector<std::pair<int, int>> sizes, std::vector<int> amounts) {
    Out o;
    for (auto [w, h] : sizes)
        for (int amount : amounts)
            for (int flag : {0, 1}) {
                Moved m = op == RotateDIB ? Move(op, Image(w, h, depth, Pattern), amount, flag)
                                          : Move(op, Image(w, h, depth, Pattern), flag, amount);
                o.Add(m.result);
                o.Add(m.corners, 8);
            }
    return o.all;
}
Bytes Rotations(int depth) {
    std::vector<int> angles;
    for (int angle = -34; angle < 400; angle += angle % 45 == 0 ? 11 : 17) angles.push_back(angle);
    return Moves(RotateDIB, depth, {{19, 11}, {24, 16}, {5, 4}}, angles);
}
// Rows without padding and a sub-byte shift on the top row: the spill of
// its last byte would land past the block and is dropped.
Bytes Skews(int depth) {
    return Moves(SkewDIB, depth, {{13, 7}, {31, 3}, {1, 4}, {31, 1}, {7, 1}, {70, 2}}, {-9, -4, -1, 0, 1, 3, 8, 70});
}

Bytes Scales(int depth) {
    Out o;
    for (int mode : {0, 1})
        for (auto [w, h] : {std::pair{23, 17}, {4, 3}, {9, 7}, {6, 14}, {1, 1}, {2, 9}}) {
            o.Add(Call([&](HGLOBAL d) { return ScaleDIB(d, mode, w, h); }, Image(9, 7, depth, Pattern)));
        }
    return o.all;
}

Bytes GreyScales(int depth) {
    Out o;
    const int rects[][6] = {{2, 3, 6, 4, 1, 1}, {0, 0, 8, 6, 3, 2}, {1, 1, 5, 5, 2, 3}, {0, 0, 2, 1, 2, 1}};
    for (int mode : {0, 1})
        for (const auto& r : rects)
            o.Add(Call([&](HGLOBAL d) { return ScaleGrayDIB(d, r[0], r[1], r[2], r[3], r[4], r[5], mode); }, GreyTable(14, 9, depth)));
    return o.all;
}

Bytes Dithers(HDIB(WINAPI* fn)(HDIB, int)) {
    Out o;
    for (int depth : {4, 8, 24})
        for (int bits : {1, 4, 8})
            for (auto [w, h] : {std::pair{37, 9}, {1, 5}, {64, 64}, {16, 2}}) {
                if (bits >= depth) continue;
                const Bytes src = w == 16 ? Image(w, h, depth, Pattern) : GreyTable(w, h, depth);  // colours, greys
                o.Add(Call([&](HGLOBAL d) { return fn(d, bits); }, src));
            }
    return o.all;
}

Bytes Halftones() {
    Out o;
    unsigned char screen[256];
    prism::BuildHalftoneScreen(screen);
    o.Add(Bytes(screen, screen + 256));
    for (int depth : {4, 8, 24})
        for (WORD method : {0, 1, 2})
            for (int brightness : {0, 40, -20})
                for (auto [w, h] : {std::pair{37, 33}, {16, 7}, {6, 5}})
                    o.Add(Call([&](HGLOBAL d) { WORD e = 0; return Halftone(d, method, brightness, &e); }, GreyTable(w, h, depth)));
    return o.all;
}

Bytes Filters(bool colour) {
    Out o;
    const int matrix[] = {0, 3, 0, 2, 1, 0, 0, -1, 0, 4};
    const short shorts[] = {1, 0, 2, 0, 3, 0, -1, 0, 1, 5};
    for (int width : {19, 9, 3})
        for (int kind = 1; kind <= 6; ++kind)
            for (int size : {3, 5, 7})
                for (int mode = 0; mode < (colour ? 3 : 1); ++mode) {
                    if (kind == 2 || (kind == 1 && size != 3)) continue;
                    o.Add(Call([&](HGLOBAL d) {
                        int e = 0;
                        return colour ? ColorConvolution(d, 1, mode, WORD(kind), short(size), nullptr, shorts, &e)
                                      : Convolve(d, 1, kind, size, nullptr, matrix, &e);
                    }, Image(width, 11, colour ? 24 : 8, Pattern)));
                }
    return o.all;
}

Bytes Greys() {
    Out o;
    for (int depth : {1, 4, 8, 24})
        for (int smoothing : {0, 1, 2})
            for (int weighted : {0, 1}) {
                HDIB dib = BlockFrom(Image(17, 12, depth, Pattern));
                o.Add(Take(ConvColorDIBtoGrayscale(dib, smoothing, weighted)));
                if (depth == 1 && !weighted) o.Add(Take(ConvMonoDIBtoGrayscale(dib, smoothing)));
                if (depth == 8 && smoothing == 0) o.Add(Take(Convert8to24(dib)));
                GlobalFree(dib);
            }
    return o.all;
}

Bytes Tones() {
    Out o;
    const short pairs[][2] = {{50, 50}, {0, -50}, {-100, -100}, {30, 100}, {-70, 20}};
    for (int depth : {4, 8, 24})
        for (const auto& p : pairs)
            o.Add(Call([&](HGLOBAL d) { return ColorBrightnessContrast(d, p[0], p[1]); }, Image(13, 5, depth, Pattern)));
    int error = 0;
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, &error);
    for (const auto& p : pairs) {
        ComputeLUT(nullptr, PRISM_TABLE_UPDATE, lut, p[1] * 2, p[0], &error);
        o.Add(BlockBytes(lut));
        o.Add(Call([&](HGLOBAL d) { return ApplyLUT(d, lut, 1, &error); }, Image(13, 5, 8, Pattern)));
    }
    GlobalFree(lut);
    return o.all;
}

Bytes Stretches() {
    Out o;
    using Stretcher = HDIB (*)(const void*, const unsigned char*, int, int, int, int, int, int);
    const Stretcher stretchers[] = {prism::StretchRows1, prism::StretchRows4, prism::StretchRows8, prism::StretchRows24};
    const int rects[][6] = {{3, 2, 11, 5, 11, 5}, {1, 0, 16, 8, 8, 4}, {2, 1, 6, 4, 12, 8}, {0, 0, 19, 9, 7, 3}, {17, 7, 6, 4, 5, 9}};
    const int depths[] = {1, 4, 8, 24};
    for (int i = 0; i < 4; ++i)
        for (const auto& r : rects) {
            const Bytes src = Image(19, 9, depths[i], Pattern);
            o.Add(Take(stretchers[i](src.data(), src.data() + BitsOffset(src), r[0], r[1], r[2], r[3], r[4], r[5])));
        }
    return o.all;
}

using Dither = HDIB(WINAPI*)(HDIB, int);
const Dither kDithers[] = {DitherFS4, DitherJJN, DitherSmooth, DitherSharp};

// A family and its hashes, one for each argument (a depth, or an index).
struct Pin {
    const char* name;
    Bytes (*make)(int);
    std::vector<int> args;
    std::vector<std::uint64_t> hashes;
};
const std::vector<int> kDepths = {1, 4, 8, 24};
const Pin kPins[] = {
    {"turns", Turns, kDepths, {0xcc4b04949f2d8957u, 0x3682e81c85f86d36u, 0x0458220959fca08bu, 0x1701390bda8c65c8u}},
    {"RotateDIB", Rotations, kDepths, {0x1e7e90d6bb9003c9u, 0x3826bbf04c2f0f28u, 0x8fcf01ad8279d5d2u, 0xe8e2e99d33a8500cu}},
    {"SkewDIB", Skews, kDepths, {0x11ecde68043f4f35u, 0x7fcead53ad09eebfu, 0x8c2a50bd2deb7776u, 0xc86f0681ced99c33u}},
    {"ScaleDIB", Scales, kDepths, {0x872b4e2d43ebdb19u, 0xc7d68332036422a9u, 0xf15de182f020d3fcu, 0x2a78511cac6b247du}},
    {"ScaleGrayDIB", GreyScales, {4, 8}, {0x1dd6f79da585566du, 0x2299cf43c8fd36d1u}},
    {"DitherFS4, JJN, Smooth, Sharp", [](int i) { return Dithers(kDithers[i]); }, {0, 1, 2, 3},
     {0x2a1564187929d413u, 0x3153e256bcd93a1au, 0xc4929adb21b9f4ebu, 0x8480a0ebb328dc16u}},
    {"Halftone", [](int) { return Halftones(); }, {0}, {0xa222d85c49224e31u}},
    {"Convolve, ColorConvolution", [](int colour) { return Filters(colour); }, {0, 1}, {0x829571546cbe7a90u, 0x66c70be9fe637fc2u}},
    {"grey conversions", [](int) { return Greys(); }, {0}, {0xfe24fec43a04bf50u}},
    {"brightness, contrast, tables", [](int) { return Tones(); }, {0}, {0xe1b897e10989b23cu}},
    {"stretchers", [](int) { return Stretches(); }, {0}, {0x29a07ca05cb7e554u}},
};

std::string Hex(std::uint64_t v) {
    char text[40];
    std::snprintf(text, sizeof text, "0x%016" PRIx64, v);
    return text;
}

TEST(PinnedOutputs, EveryFamilyHashesAsPinned) {
    for (const Pin& p : kPins)
        for (size_t i = 0; i < p.args.size(); ++i) EXPECT_EQ(Hex(Hash(p.make(p.args[i]))), Hex(p.hashes[i])) << p.name << " " << p.args[i];
}

}  // namespace
