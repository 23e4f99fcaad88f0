// RotateBitmap90, RotateBitmap180, RotateBitmap270, FlipBitmapVertical,
// FlipBitmapHorizontal and InvertBitmap: turning, mirroring and inverting
// device bitmaps.
#include "core/dib.h"
#include "core/errors.h"
#include "geometry/bitmap_bits.h"
#include "platform/export.h"
#include "platform/gdi.h"

namespace prism {
namespace {

// Bytes behind the bits of every work block but those of the vertical
// flip.
constexpr std::uint64_t kSpareBytes = 4;

// The frame of the five bit-moving exports: the bits out of the bitmap,
// the walk, and the bits back into it (same shape) or into a new bitmap
// (quarter turns).  Failures set codes 15, 1, 7 and 11.
HBITMAP MoveBitmap(HBITMAP bitmap, BitmapMove move) {
    BITMAP bm;
    if (!gdi::BitmapRecord(bitmap, &bm)) {
        LastImgError = kErrBitmapParams;
        return nullptr;
    }
    const BitmapBitsShape shape{bm.bmWidth, bm.bmHeight, bm.bmWidthBytes, bm.bmPlanes, bm.bmBitsPixel};
    const std::uint64_t n = BitmapBitsBytes(shape);
    const std::uint64_t spare = move == BitmapMove::kFlipVertical ? 0 : kSpareBytes;
    OwnedBlock srcBlock(AllocBlock(n + spare));
    BlockLock src(srcBlock.get());
    if (!src) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    if (gdi::ReadBitmapBits(bitmap, n, src.get()) == 0) {
        LastImgError = kErrCopyBits;
        return nullptr;
    }
    OwnedBlock dstBlock(AllocBlock(MovedBitsBytes(move, shape) + spare));
    BlockLock dst(dstBlock.get());
    if (!dst) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    plat::WaitCursor wait;
    MoveBitmapBits(move, shape, src.bytes(), dst.bytes());
    if (move == BitmapMove::kRotate90 || move == BitmapMove::kRotate270) {
        BITMAP turned = bm;
        turned.bmWidth = bm.bmHeight;
        turned.bmHeight = bm.bmWidth;
        turned.bmWidthBytes = TurnedWidthBytes(shape);
        turned.bmBits = dst.get();
        HBITMAP result = gdi::CreateBitmapIndirect(&turned);
        if (!result) LastImgError = kErrCreateBitmap;
        return result;
    }
    gdi::WriteBitmapBits(bitmap, n, dst.get());  // a failure here is not reported
    return bitmap;
}

BOOL MoveInPlace(HBITMAP bitmap, BitmapMove move) { return MoveBitmap(bitmap, move) ? TRUE : FALSE; }

}  // namespace

// RotateBitmap90(bitmap), RotateBitmap270(bitmap): a new bitmap, turned by
// a quarter.  Rows of a device bitmap are stored top first, so the first
// turns the picture counter-clockwise on screen and the second clockwise,
// the other way round from the DIB turns.  At depth 1 the second leaves the
// first result column blank and drops the bottom row.  Depths other than
// 1, 4, 8 and 24 give a blank bitmap.  The source stays the caller's.
PRISM_API HBITMAP WINAPI RotateBitmap90(HBITMAP bitmap) { return MoveBitmap(bitmap, BitmapMove::kRotate90); }

PRISM_API HBITMAP WINAPI RotateBitmap270(HBITMAP bitmap) { return MoveBitmap(bitmap, BitmapMove::kRotate270); }

// RotateBitmap180, FlipBitmapVertical, FlipBitmapHorizontal: the bitmap
// changed in place; 1, or 0 with a code.  Depths other than 1, 4, 8 and 24
// come out black, except from the vertical flip, which moves whole rows.
PRISM_API BOOL WINAPI RotateBitmap180(HBITMAP bitmap) { return MoveInPlace(bitmap, BitmapMove::kRotate180); }

PRISM_API BOOL WINAPI FlipBitmapVertical(HBITMAP bitmap) { return MoveInPlace(bitmap, BitmapMove::kFlipVertical); }

PRISM_API BOOL WINAPI FlipBitmapHorizontal(HBITMAP bitmap) {
    return MoveInPlace(bitmap, BitmapMove::kFlipHorizontal);
}

// InvertBitmap(bitmap): inverts every pixel in place through a memory
// context made for the active window (the screen when there is none).
// 1, or 0 without a context; no error code.  A bitmap the context cannot
// hold is left as it is, and the answer is still 1.
PRISM_API BOOL WINAPI InvertBitmap(HBITMAP bitmap) {
    gdi::WindowDC window(gdi::GetActiveWindow());
    if (!window) return FALSE;
    gdi::MemoryDC memory(window.get());
    window.Release();
    if (!memory) return FALSE;
    BITMAP bm;
    gdi::BitmapRecord(bitmap, &bm);  // a failure leaves a size of 0: nothing to invert
    gdi::Selection selected(memory.get(), bitmap);
    gdi::BitBlt(memory.get(), 0, 0, bm.bmWidth, bm.bmHeight, nullptr, 0, 0, DSTINVERT);
    return TRUE;
}

}  // namespace prism
