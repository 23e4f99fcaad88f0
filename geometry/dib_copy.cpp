// The pixel and row copying helpers of the right-angle turns and flips.
#include "geometry/dib_copy.h"

#include <cstring>

namespace prism {

const unsigned char MaskTable[8] = {128, 64, 32, 16, 8, 4, 2, 1};

void DibRowCopy(unsigned char* to, const unsigned char* from, std::uint32_t count) {
    if (count == 0) return;
    // Apart areas take the fast copy; overlapping ones keep the forward,
    // byte-by-byte result.
    if (to + count <= from || from + count <= to) {
        std::memcpy(to, from, count);
        return;
    }
    for (std::uint32_t i = 0; i < count; ++i) to[i] = from[i];
}

void DibPixelCopy(const unsigned char* from, int fromOffset, unsigned char* to, int toOffset, int depth) {
    if (depth < 1 || depth > 24) return;
    switch (depth) {
        case 1:
            if (fromOffset < 0 || fromOffset > 7 || toOffset < 0 || toOffset > 7) return;
            if (*from & MaskTable[fromOffset])
                *to = static_cast<unsigned char>(*to | MaskTable[toOffset]);
            else
                *to = static_cast<unsigned char>(*to & ~MaskTable[toOffset]);
            return;
        case 4: {
            const unsigned value = fromOffset == 0 ? *from >> 4 : fromOffset == 4 ? *from & 0x0F : 16;
            if (value > 15) return;
            if (toOffset == 0)
                *to = static_cast<unsigned char>((*to & 0x0F) | (value << 4));
            else if (toOffset == 4)
                *to = static_cast<unsigned char>((*to & 0xF0) | value);
            return;
        }
        case 8:
            *to = *from;
            return;
        case 24:
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
            return;
        default:
            return;
    }
}

}  // namespace prism
