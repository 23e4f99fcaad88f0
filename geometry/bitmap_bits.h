// The pixel walks of the right-angle turns and flips of device bitmaps, on
// the plain bits buffers the graphics system hands over.
#pragma once

#include <cstdint>

namespace prism {

// What a device bitmap's record says of its bits: rows of widthBytes
// (16-bit aligned), stored top row first, in `planes` planes of bitsPixel.
struct BitmapBitsShape {
    std::int32_t width;
    std::int32_t height;
    std::int32_t widthBytes;
    int planes;
    int bitsPixel;
};

enum class BitmapMove { kRotate90, kRotate180, kRotate270, kFlipVertical, kFlipHorizontal };

// All the bits of a bitmap of that shape: planes times height times
// widthBytes, 0 for negative sizes.
std::uint64_t BitmapBitsBytes(const BitmapBitsShape& shape);
// widthBytes of the quarter-turned bitmap: its rows, height pixels long,
// end on a 16-bit boundary.
std::int32_t TurnedWidthBytes(const BitmapBitsShape& shape);
// Bytes the target of a move needs (without spare bytes).
std::uint64_t MovedBitsBytes(BitmapMove move, const BitmapBitsShape& shape);

// Fills the zero-filled `to` (MovedBitsBytes of room) from `from`
// (BitmapBitsBytes of room).  A quarter turn gives a bitmap of height
// `width` and width `height`.  Depths other than 1, 4, 8 and 24 move no
// pixel, except in the vertical flip, which moves whole rows.  A shape
// whose rows are too short for its width moves nothing.
void MoveBitmapBits(BitmapMove move, const BitmapBitsShape& shape, const unsigned char* from, unsigned char* to);

}  // namespace prism
