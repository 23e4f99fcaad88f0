// One pixel or one row between byte positions: the small copying helpers of
// the right-angle turns and flips, shared with their device-bitmap twins.
#pragma once

#include <cstdint>

namespace prism {

// Entry n selects the pixel at bit offset n of a 1-bit byte; the most
// significant bit is the first pixel.
extern const unsigned char MaskTable[8];

// Copies `count` bytes forward, byte by byte in effect; 0 copies nothing.
void DibRowCopy(unsigned char* to, const unsigned char* from, std::uint32_t count);

// Copies one pixel of `depth` bits from a byte and bit offset to another.
// Depth 1 sets or clears the target bit; depth 4 copies a nibble for the
// offset pairs (0,0), (4,4), (4,0), (0,4) and keeps the other nibble;
// depths 8 and 24 copy 1 or 3 bytes and ignore the offsets.  Every other
// depth or offset pair copies nothing.
void DibPixelCopy(const unsigned char* from, int fromOffset, unsigned char* to, int toOffset, int depth);

}  // namespace prism
