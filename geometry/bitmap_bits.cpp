// The pixel walks of the right-angle turns and flips of device bitmaps.
#include "geometry/bitmap_bits.h"

#include "geometry/dib_copy.h"
#include "geometry/turn_frame.h"

namespace prism {
namespace {

// Bits of up to 64 KB keep their planes interleaved row by row; larger
// ones store the planes one after another.  The source's size decides for
// the target too, whatever the target's own size.
constexpr std::uint64_t kInterleavedLimit = 65536;

struct PlaneSteps {
    std::uint64_t row;
    std::uint64_t plane;
};

PlaneSteps StepsOf(bool interleaved, std::uint64_t widthBytes, std::uint64_t rows, std::uint64_t planes) {
    return interleaved ? PlaneSteps{planes * widthBytes, widthBytes} : PlaneSteps{widthBytes, rows * widthBytes};
}

// Rows are stored top first, so with the DIB walk's index mapping the
// counter-clockwise turn on screen is the exact inverse of Move90: source
// row y goes to result column height - 1 - y.  The DIB walk over the first
// height - 1 rows gives that; at depth 1 the last row is left out, so
// result column 0 stays zero, and at the other depths it is copied here.
template <class Pixel>
void LastRowToColumnZero(const TurnJob& j) {
    const unsigned char* s = j.src + static_cast<std::uint64_t>(j.height - 1) * j.srcStride;
    for (std::uint32_t x = 0; x < j.width; ++x) Pixel::Copy(s, x, j.dst + x * j.dstStride, 0);
}

void Move270Exact(const TurnJob& j) {
    if (j.height == 0) return;
    TurnJob first = j;
    first.height = j.height - 1;
    Move270(first);
    switch (j.depth) {
        case 4: LastRowToColumnZero<Pixel4>(j); break;
        case 8: LastRowToColumnZero<Pixel8>(j); break;
        case 24: LastRowToColumnZero<Pixel24>(j); break;
        default: break;  // depth 1: column 0 stays zero
    }
}

void MoveRows(const TurnJob& j, std::uint32_t rowBytes) {
    for (std::uint32_t y = 0; y < j.height; ++y)
        DibRowCopy(j.dst + y * j.dstStride, j.src + (j.height - 1 - y) * j.srcStride, rowBytes);
}

bool RowsHoldWidth(const BitmapBitsShape& s) {
    const int d = s.bitsPixel;
    if (d != 1 && d != 4 && d != 8 && d != 24) return true;  // no pixel is read
    return static_cast<std::uint64_t>(s.widthBytes) * 8 >= static_cast<std::uint64_t>(s.width) * d;
}

}  // namespace

std::uint64_t BitmapBitsBytes(const BitmapBitsShape& s) {
    if (s.width < 0 || s.height < 0 || s.widthBytes < 0 || s.planes < 0) return 0;
    return static_cast<std::uint64_t>(s.planes) * static_cast<std::uint64_t>(s.height) *
           static_cast<std::uint64_t>(s.widthBytes);
}

std::int32_t TurnedWidthBytes(const BitmapBitsShape& s) {
    const std::int64_t bits = static_cast<std::int64_t>(s.bitsPixel) * s.height;
    return static_cast<std::int32_t>((bits + 15) / 16 * 2);
}

std::uint64_t MovedBitsBytes(BitmapMove move, const BitmapBitsShape& s) {
    if (move != BitmapMove::kRotate90 && move != BitmapMove::kRotate270) return BitmapBitsBytes(s);
    if (s.width < 0 || s.height < 0 || s.planes < 0 || s.bitsPixel < 0) return 0;
    return static_cast<std::uint64_t>(s.planes) * static_cast<std::uint64_t>(TurnedWidthBytes(s)) *
           static_cast<std::uint64_t>(s.width);
}

void MoveBitmapBits(BitmapMove move, const BitmapBitsShape& s, const unsigned char* from, unsigned char* to) {
    const std::uint64_t n = BitmapBitsBytes(s);
    if (n == 0 || !RowsHoldWidth(s)) return;
    const auto w = static_cast<std::uint32_t>(s.width), h = static_cast<std::uint32_t>(s.height);
    const auto p = static_cast<std::uint32_t>(s.planes), wb = static_cast<std::uint32_t>(s.widthBytes);
    if (move == BitmapMove::kFlipHorizontal) {
        // Every row of every plane alike, widthBytes apart.
        MoveMirror(TurnJob{from, wb, to, wb, w, p * h, s.bitsPixel});
        return;
    }
    const bool quarter = move == BitmapMove::kRotate90 || move == BitmapMove::kRotate270;
    const bool interleaved = n < kInterleavedLimit;
    const PlaneSteps src = StepsOf(interleaved, wb, h, p);
    const PlaneSteps dst = quarter ? StepsOf(interleaved, static_cast<std::uint32_t>(TurnedWidthBytes(s)), w, p) : src;
    for (std::uint32_t plane = 0; plane < p; ++plane) {
        const TurnJob j{from + plane * src.plane, src.row, to + plane * dst.plane, dst.row, w, h, s.bitsPixel};
        switch (move) {
            case BitmapMove::kRotate90: Move90(j); break;
            case BitmapMove::kRotate180: Move180(j); break;
            case BitmapMove::kRotate270: Move270Exact(j); break;
            case BitmapMove::kFlipVertical: MoveRows(j, wb); break;
            case BitmapMove::kFlipHorizontal: break;
        }
    }
}

}  // namespace prism
