// RotateDIB: turns a DIB about its centre by any whole number of degrees,
// one source pixel per target pixel, into a larger image with zero corners.
//
// RotateDIB(source, angle, walkMode, error, corners)
//   source    the image, uncompressed, 40-byte header; depths 1, 4, 8, 24
//             are turned, any other depth gives a zero picture of the
//             turned size.
//   angle     whole degrees, positive turns counter-clockwise on screen.
//   walkMode  0 walks each target row in floating point; any other value
//             takes the integer line stepper.
//   error     the caller's word: 0 on entry, then 500, 501, 503, 505 or
//             506 on failure.  LastImgError is never touched.
//   corners   eight ints (x, y of each turned corner from the centre), or
//             null.
// Result: a new image, or 0.  On success the source is left locked once
// more than on entry; every failure behind the lock unlocks it.
#include "core/dib.h"
#include "platform/export.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace prism {
namespace {

// Codes of the caller's error word; they belong to this export alone.
constexpr int kRotateOk = 0;
constexpr int kRotateCompressed = 500;
constexpr int kRotateEmpty = 501;
constexpr int kRotateNoMemory = 503;
constexpr int kRotateLock = 505;
constexpr int kRotateBadImage = 506;

// The library's degree-to-radian constant; a turn by 90 is therefore not
// exactly a quarter turn, and right angles take the ordinary walk.
constexpr double kRadiansPerDegree = 0.01745329;

struct Point {
    double x;
    double y;
};

Point Turn(Point p, double c, double s) { return {p.x * c - p.y * s, p.y * c + p.x * s}; }

// Rounds half away from zero, as a row start is rounded.
int RoundAway(double v) { return static_cast<int>(v >= 0 ? v + 0.5 : v - 0.5); }

// Everything the row walk needs, worked out once per call.
struct Walk {
    int w = 0, h = 0;              // source size (low 16 bits of the header)
    int newW = 0, newH = 0;
    Point start{};                 // source position of target pixel (0, 0)
    Point rowStep{}, colStep{};
    int sx = 1, sy = 1;
    // integer walk: error growth per step and the run
    int adx2 = 0, ady2 = 0, run = 0, run2 = 0;
    std::ptrdiff_t srcStride = 0;  // source row stride
    std::ptrdiff_t dstStride = 0;  // result row stride
};

// Pixel access per depth: where pixel x sits, how the read position moves
// when x changes, how one pixel is copied.
template <int Depth>
struct Pixels;

template <>
struct Pixels<24> {
    static std::ptrdiff_t Offset(int x) { return static_cast<std::ptrdiff_t>(x) * 3; }
    static bool MovesByte(int, int) { return true; }
    static constexpr int kByteStep = 3;
    static void Copy(const unsigned char* src, std::ptrdiff_t at, int, unsigned char* dstRow, unsigned char*& wp, int) {
        (void)dstRow;
        wp[0] = src[at];
        wp[1] = src[at + 1];
        wp[2] = src[at + 2];
        wp += 3;
    }
};

template <>
struct Pixels<8> {
    static std::ptrdiff_t Offset(int x) { return x; }
    static bool MovesByte(int, int) { return true; }
    static constexpr int kByteStep = 1;
    static void Copy(const unsigned char* src, std::ptrdiff_t at, int, unsigned char*, unsigned char*& wp, int) {
        *wp++ = src[at];
    }
};

template <>
struct Pixels<4> {
    static std::ptrdiff_t Offset(int x) { return x >> 1; }
    // The byte changes on entering an even column going right, an odd one
    // going left.
    static bool MovesByte(int x, int sx) { return sx > 0 ? (x & 1) == 0 : (x & 1) == 1; }
    static constexpr int kByteStep = 1;
    static void Copy(const unsigned char* src, std::ptrdiff_t at, int x, unsigned char* dstRow, unsigned char*&,
                     int col) {
        // The nibble is always chosen by the current x.
        unsigned v = (x & 1) ? src[at] & 0x0Fu : static_cast<unsigned>(src[at]) >> 4;
        dstRow[col >> 1] |= static_cast<unsigned char>((col & 1) ? v : v << 4);
    }
};

template <>
struct Pixels<1> {
    static std::ptrdiff_t Offset(int x) { return x >> 3; }
    static bool MovesByte(int x, int sx) { return sx > 0 ? (x & 7) == 0 : (x & 7) == 7; }
    static constexpr int kByteStep = 1;
    static void Copy(const unsigned char* src, std::ptrdiff_t at, int x, unsigned char* dstRow, unsigned char*&,
                     int col) {
        if ((src[at] >> (7 - (x & 7))) & 1) dstRow[col >> 3] |= static_cast<unsigned char>(0x80u >> (col & 7));
    }
};

// Walks every target row as a straight line through the source.  The read
// position follows x and y by pixel and stride moves, never recomputed, so
// no multiplication happens per pixel.  In the floating walk a row start is
// rounded to nearest while the steps round by half a pixel in the walking
// direction; the first step of a row that starts inside the source can then
// move x or y by two while the read position moves by one, and the rest of
// that row reads one pixel behind the tested position.  That is kept: the
// read position stays between the row's first read and the tested
// position, so it never leaves the source.
template <int Depth, bool IntegerWalk>
void WalkRows(const Walk& g, const unsigned char* src, unsigned char* dst) {
    using P = Pixels<Depth>;
    const int w = g.w, h = g.h, newW = g.newW, sx = g.sx, sy = g.sy;
    const double dx = g.colStep.x, dy = g.colStep.y;
    const double hx = sx * 0.5, hy = sy * 0.5;
    const std::ptrdiff_t byteStep = sx * static_cast<std::ptrdiff_t>(P::kByteStep);
    const std::ptrdiff_t strideStep = sy * g.srcStride;
    Point rowStart = g.start;
    unsigned char* row = dst;

    for (int r = 0; r < g.newH; ++r, row += g.dstStride, rowStart.x += g.rowStep.x, rowStart.y += g.rowStep.y) {
        double X = rowStart.x, Y = rowStart.y;
        int x = RoundAway(X), y = RoundAway(Y);
        int col = 0, e1 = 0, e2 = 0;

        // One step along the row; sets xMoved / yMoved.
        bool xMoved = false, yMoved = false;
        auto step = [&]() {
            if (IntegerWalk) {
                e1 += g.adx2;
                xMoved = e1 > g.run;
                if (xMoved) {
                    e1 -= g.run2;
                    x += sx;
                }
                e2 += g.ady2;
                yMoved = e2 > g.run;
                if (yMoved) {
                    e2 -= g.run2;
                    y += sy;
                }
            } else {
                X += dx;
                Y += dy;
                int nx = static_cast<int>(X + hx);
                int ny = static_cast<int>(Y + hy);
                xMoved = nx != x;
                yMoved = ny != y;
                x = nx;
                y = ny;
            }
        };
        auto reached = [&]() { return (sx > 0 ? x >= 0 : x < w) && (sy > 0 ? y >= 0 : y < h); };
        auto inside = [&]() { return (sx > 0 ? x < w : x >= 0) && (sy > 0 ? y < h : y >= 0); };

        // Entry: step over the empty corner pixel by pixel.
        while (!reached() && col < newW) {
            ++col;
            step();
        }
        if (col >= newW || !inside()) continue;  // the row misses the source

        std::ptrdiff_t at = static_cast<std::ptrdiff_t>(y) * g.srcStride + P::Offset(x);
        unsigned char* wp = row + P::Offset(col);
        while (col < newW && inside()) {
            P::Copy(src, at, x, row, wp, col);
            ++col;
            step();
            if (xMoved && P::MovesByte(x, sx)) at += byteStep;
            if (yMoved) at += strideStep;
        }
    }
}

template <bool IntegerWalk>
void WalkByDepth(int depth, const Walk& g, const unsigned char* src, unsigned char* dst) {
    switch (depth) {
        case 1: WalkRows<1, IntegerWalk>(g, src, dst); break;
        case 4: WalkRows<4, IntegerWalk>(g, src, dst); break;
        case 8: WalkRows<8, IntegerWalk>(g, src, dst); break;
        case 24: WalkRows<24, IntegerWalk>(g, src, dst); break;
        default: break;  // other depths stay a zero picture
    }
}

HDIB Rotate(HDIB dib, int angle, int walkMode, int* error, int* corners) {
    *error = kRotateOk;
    if (!dib) {
        *error = kRotateBadImage;
        return nullptr;
    }
    BlockLock source(dib);
    if (!source) {
        *error = kRotateLock;
        return nullptr;
    }
    const std::uint64_t blockBytes = source.size();
    BITMAPINFOHEADER hdr;
    CopyHeaderBytes(source.get(), blockBytes, &hdr);
    // A block too short for its 40-byte header counts as a bad header.
    if (hdr.biSize != kInfoHeaderSize || blockBytes < kInfoHeaderSize) {
        *error = kRotateBadImage;
        return nullptr;
    }
    if (hdr.biCompression != 0) {
        *error = kRotateCompressed;
        return nullptr;
    }
    // Width and height count by their low 16 bits.
    const int w = static_cast<int>(static_cast<std::uint32_t>(hdr.biWidth) & 0xFFFFu);
    const int h = static_cast<int>(static_cast<std::uint32_t>(hdr.biHeight) & 0xFFFFu);
    if (w == 0 || h == 0) {
        *error = kRotateEmpty;
        return nullptr;
    }
    // The colour table and the h rows read must lie inside the block;
    // negative sizes and short blocks are refused as bad images.
    DibView view;
    if (ViewDib(source.get(), blockBytes, &view) != DibStatus::kOk ||
        view.stride * static_cast<std::uint64_t>(h) > view.pixelBytes) {
        *error = kRotateBadImage;
        return nullptr;
    }
    const int depth = view.bitCount;

    // Angles of -360 and above end in 0..359; below -360 in -359..0.
    int a = angle;
    if (a < 0) a += 360;
    a -= 360 * (a / 360);
    double radians = a * kRadiansPerDegree;

    // Size of the result from the turned corners.
    double c = std::cos(radians), s = std::sin(radians);
    const double hw = w / 2.0, hh = h / 2.0;
    const Point box[4] = {{-hw, -hh}, {hw, -hh}, {hw, hh}, {-hw, hh}};
    int halfW = 0, halfH = 0;
    for (int i = 0; i < 4; ++i) {
        Point p = Turn(box[i], c, s);
        if (corners) {
            corners[2 * i] = static_cast<int>(p.x);
            corners[2 * i + 1] = static_cast<int>(p.y);
        }
        int ax = static_cast<int>(std::fabs(p.x) + 0.5);
        int ay = static_cast<int>(std::fabs(p.y) + 0.5);
        if (ax > halfW) halfW = ax;
        if (ay > halfH) halfH = ay;
    }
    // Sides are at least 2, so the steps below never divide by zero even if
    // rounding were to shave a corner of a 1 by 1 image.
    if (halfW < 1) halfW = 1;
    if (halfH < 1) halfH = 1;
    const int newW = 2 * halfW, newH = 2 * halfH;

    // One block for the result, tried twice.  Sizes outside the 32-bit
    // range are refused like a failed allocation.
    const std::uint32_t colors = view.colors;
    std::uint64_t bytes = 0;
    HGLOBAL block = nullptr;
    if (DibBlockBytes(newW, newH, depth, colors, &bytes)) {
        block = AllocBlock(bytes);
        if (!block) block = AllocBlock(bytes);
    }
    if (!block) {
        *error = kRotateNoMemory;
        return nullptr;
    }
    plat::SparseBlock(block);  // the corners stay zero
    OwnedBlock owned(block);
    BlockLock result(block);
    if (!result) {
        *error = kRotateLock;
        return nullptr;
    }
    const std::uint64_t newStride = DibRowBytes(newW, depth);
    std::memcpy(result.get(), source.get(), kInfoHeaderSize + static_cast<size_t>(colors) * 4);
    BITMAPINFOHEADER out = hdr;
    out.biWidth = newW;
    out.biHeight = newH;
    out.biSizeImage = static_cast<DWORD>(newStride * static_cast<std::uint64_t>(newH));
    std::memcpy(result.get(), &out, sizeof(out));

    // Inverse mapping: target corners turned back into the source.
    c = std::cos(-radians);
    s = std::sin(-radians);
    Point p1 = Turn({-static_cast<double>(halfW), -static_cast<double>(halfH)}, c, s);
    Point p2 = Turn({-static_cast<double>(halfW), halfH - 1.0}, c, s);
    Point p3 = Turn({halfW - 1.0, -static_cast<double>(halfH)}, c, s);
    p1 = {p1.x + hw, p1.y + hh};
    p2 = {p2.x + hw, p2.y + hh};
    p3 = {p3.x + hw, p3.y + hh};

    Walk g;
    g.w = w;
    g.h = h;
    g.newW = newW;
    g.newH = newH;
    g.start = p1;
    g.rowStep = {(p2.x - p1.x) / (newH - 1), (p2.y - p1.y) / (newH - 1)};
    g.colStep = {(p3.x - p1.x) / (newW - 1), (p3.y - p1.y) / (newW - 1)};
    g.sx = g.colStep.x >= 0 ? 1 : -1;
    g.sy = g.colStep.y >= 0 ? 1 : -1;
    g.run = newW - 1;
    g.run2 = 2 * g.run;
    g.adx2 = 2 * static_cast<int>(std::fabs(p3.x - p1.x) + 0.5);
    g.ady2 = 2 * static_cast<int>(std::fabs(p3.y - p1.y) + 0.5);
    g.srcStride = static_cast<std::ptrdiff_t>(view.stride);
    g.dstStride = static_cast<std::ptrdiff_t>(newStride);

    unsigned char* dst = result.bytes() + kInfoHeaderSize + static_cast<size_t>(colors) * 4;
    if (walkMode == 0)
        WalkByDepth<false>(depth, g, view.bits, dst);
    else
        WalkByDepth<true>(depth, g, view.bits, dst);

    result.Unlock();
    source.Release();  // the source stays locked once more, as callers expect
    return owned.Release();
}

}  // namespace
}  // namespace prism

PRISM_API HDIB WINAPI RotateDIB(HDIB dib, int angle, int walkMode, int* error, int* corners) {
    // A null error word is not allowed; rather than crash, the code goes to
    // a word of our own and the result alone tells failure.
    int scratch = 0;
    return prism::Rotate(dib, angle, walkMode, error ? error : &scratch, corners);
}
