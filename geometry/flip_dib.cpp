// FlipDIBVertical, FlipDIBHorizontal: mirroring a whole DIB.
#include "core/dib.h"
#include "geometry/dib_copy.h"
#include "geometry/turn_frame.h"
#include "platform/export.h"

namespace prism {
namespace {

// Whole stored rows, padding included, in mirrored order; works at any
// depth since no pixel is looked at.
void MoveVertical(const TurnJob& j) {
    for (std::uint32_t y = 0; y < j.height; ++y)
        DibRowCopy(j.dst + y * j.dstStride, j.src + (j.height - 1 - y) * j.srcStride,
                   static_cast<std::uint32_t>(j.dstStride));
}

// Rows go from the last down: an image just made or loaded has its last
// rows in cache, and the system clears a fresh result page with the part
// first touched last, so a walk down the addresses meets those bytes
// still in cache too.
template <class Pixel>
void Mirror(const TurnJob& j) {
    for (std::uint32_t y = j.height; y-- > 0;) {
        const unsigned char* s = j.src + y * j.srcStride;
        unsigned char* d = j.dst + y * j.dstStride;
        MirrorRow<Pixel>(s, d, j.width);
    }
}

// Depth 1: whole bytes at a time.
void MirrorBits(const TurnJob& j) {
    for (std::uint32_t y = 0; y < j.height; ++y) {
        const unsigned char* s = j.src + y * j.srcStride;
        unsigned char* d = j.dst + y * j.dstStride;
        MirrorBitsRow(s, d, j.width);
    }
}


}  // namespace

// Depths other than 1, 4, 8 and 24 give the zero picture.
void MoveMirror(const TurnJob& j) {
    switch (j.depth) {
        case 1: MirrorBits(j); break;
        case 4: Mirror<Pixel4>(j); break;
        case 8: Mirror<Pixel8>(j); break;
        case 24: Mirror<Pixel24>(j); break;
        default: break;
    }
}

// FlipDIBVertical(dib), FlipDIBHorizontal(dib): a new image of the same
// depth, colour table and header, mirrored top to bottom or left to right.
// The source is left with the caller.  0 on failure; no error code is set.
PRISM_API HDIB WINAPI FlipDIBVertical(HDIB dib) { return TurnDib(dib, TurnShape::kSame, MoveVertical); }

PRISM_API HDIB WINAPI FlipDIBHorizontal(HDIB dib) { return TurnDib(dib, TurnShape::kSame, MoveMirror); }

}  // namespace prism
