// Nearest-neighbour stretchers, one per depth: a rectangle of a DIB scaled
// into a new image a row at a time, without floating point.
#pragma once

#include "prism32.h"

#include <cstdint>

namespace prism {

// Colour-table entries a stretched copy carries: biClrUsed unless the
// header is a 12-byte one or the field is 0, else 2, 16 or 256 by depth.
std::uint32_t StretchColorCount(const void* header);

// Each takes a locked 40-byte-header DIB (header, and its first pixel
// byte), a source rectangle counted from the top row of the picture, and
// the result size.  The caller guarantees that biHeight rows of the
// header's stride stand behind `pixels`.  Result: a new unlocked image, or
// 0 when a size is below 1, the corner lies outside the image, the header
// is not a 40-byte one of the routine's depth, or memory is short.  Parts
// of the rectangle beyond the image come out as pixel 0.
HDIB StretchRows1(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                  int srcH, int dstW, int dstH);
HDIB StretchRows4(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                  int srcH, int dstW, int dstH);
HDIB StretchRows8(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                  int srcH, int dstW, int dstH);
HDIB StretchRows24(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                   int srcH, int dstW, int dstH);

}  // namespace prism
