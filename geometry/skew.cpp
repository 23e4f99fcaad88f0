// SkewDIB: shears a DIB sideways (rows slide) or vertically (columns
// slide) into a larger image whose free corners stay zero.
//
// SkewDIB(source, horizontal, skew, error, corners)
//   source      the image, uncompressed, 40-byte header, any depth.
//   horizontal  non-zero: rows slide sideways; 0: columns slide up.
//   skew        total shift in pixels; its sign picks the end that moves.
//   error       receives the code on failure (8, 17, 18, 19, 1); left as
//               it was on success.  May be null: then only LastImgError
//               carries the code.
//   corners     eight ints, the moved corners P0..P3, written once the
//               header checks have passed.  Null is skipped.
// LastImgError is cleared on entry and set with the same code on failure.
// Result: a new image, or 0.  On success the source is left locked once
// more than on entry; every failure behind the lock unlocks it.
#include "core/dib.h"
#include "core/errors.h"
#include "platform/export.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace prism {
namespace {

// Horizontal shear.  Rows are stored bottom first, so a positive skew
// leaves the bottom row in place and moves the top row furthest right.
// At depths below 8 a row moves by a sub-byte amount: each source byte is
// split over two target bytes, the spill stored first and the next byte
// ORed over it.  The spill of a row's last byte lands in the first byte of
// the row above when the row has no padding; on the top row that byte
// would lie past the block, and the write is dropped.
void ShearRows(const unsigned char* src, std::uint64_t srcStride, unsigned char* dst, std::uint64_t dstStride,
               std::int64_t w, std::int64_t h, int depth, std::int64_t skew) {
    const std::uint32_t absSkew = static_cast<std::uint32_t>(skew < 0 ? -skew : skew);
    const std::uint64_t rowBytes = (static_cast<std::uint64_t>(w) * static_cast<std::uint64_t>(depth) + 7) / 8;
    const std::uint64_t areaBytes = dstStride * static_cast<std::uint64_t>(h);
    // Bits per unit of factor, in the unsigned 32-bit arithmetic the shear
    // has always used.
    const std::uint32_t skewBits = absSkew * static_cast<std::uint32_t>(depth);
    const std::uint32_t height = static_cast<std::uint32_t>(h);

    const unsigned char* srow = src;
    std::uint64_t rowAt = 0;  // offset of result row i in the pixel area
    for (std::int64_t i = 0; i < h; ++i, srow += srcStride, rowAt += dstStride) {
        const std::uint32_t factor = static_cast<std::uint32_t>(skew > 0 ? i : h - i);
        std::uint64_t shift = (factor * skewBits) / height;
        if (depth == 8 || depth == 24) shift = (shift + 7) / 8 * 8;
        std::uint64_t byteShift = shift / 8;
        unsigned rem = static_cast<unsigned>(shift % 8);
        if (depth == 24) byteShift = byteShift / 3 * 3;  // whole pixels only
        if (depth == 4) rem = rem >= 4 ? 4 : 0;

        // Bytes this row may write: up to the end of the pixel area.  The
        // shift never exceeds the room the result was given, so only the
        // top row's spill byte is ever cut here.
        const std::uint64_t start = rowAt + byteShift;
        if (start >= areaBytes) continue;
        const std::uint64_t room = areaBytes - start;
        unsigned char* t = dst + start;
        if (rem == 0) {
            const std::uint64_t n = rowBytes < room ? rowBytes : room;
            std::memcpy(t, srow, static_cast<size_t>(n));
            continue;
        }
        const unsigned left = 8 - rem;
        const std::uint64_t n = rowBytes < room ? rowBytes : room;
        for (std::uint64_t k = 0; k < n; ++k) {
            const unsigned b = srow[k];
            if (k + 1 < room) t[k + 1] = static_cast<unsigned char>(b << left);
            t[k] |= static_cast<unsigned char>(b >> rem);
        }
    }
}

// Vertical shear.  Each pixel keeps its place within its byte and only
// changes rows; the shift is worked out once per column.  Columns are taken
// in groups of kGroup so that each source row is read once per group, with
// one running target pointer per column.
constexpr int kGroup = 64;

template <int Depth>
void ShearColumnsAt(const unsigned char* src, std::uint64_t srcStride, unsigned char* dst, std::uint64_t dstStride,
                    std::int64_t w, std::int64_t h, std::int64_t skew) {
    const std::uint32_t absSkew = static_cast<std::uint32_t>(skew < 0 ? -skew : skew);
    const std::uint32_t width = static_cast<std::uint32_t>(w);
    std::size_t byteOf[kGroup];
    unsigned char mask[kGroup];
    unsigned char* out[kGroup];
    for (std::int64_t c0 = 0; c0 < w; c0 += kGroup) {
        const int n = static_cast<int>(w - c0 < kGroup ? w - c0 : kGroup);
        for (int j = 0; j < n; ++j) {
            const std::int64_t c = c0 + j;
            const std::uint32_t factor = static_cast<std::uint32_t>(skew > 0 ? c : w - c);
            const std::uint32_t rowShift = (factor * absSkew) / width;
            const std::uint64_t bit = static_cast<std::uint64_t>(c) * Depth;
            byteOf[j] = static_cast<std::size_t>(bit / 8);
            unsigned rem = static_cast<unsigned>(bit % 8);
            if (Depth == 4) rem = rem >= 4 ? 4 : 0;
            mask[j] = Depth == 1 ? static_cast<unsigned char>(0x80u >> rem) : (rem == 0 ? 0xF0 : 0x0F);
            out[j] = dst + rowShift * dstStride + byteOf[j];
        }
        const unsigned char* srow = src;
        for (std::int64_t y = 0; y < h; ++y, srow += srcStride) {
            for (int j = 0; j < n; ++j) {
                unsigned char* t = out[j];
                const unsigned char* s = srow + byteOf[j];
                if (Depth == 1 || Depth == 4) {
                    *t |= static_cast<unsigned char>(*s & mask[j]);
                } else if (Depth == 8) {
                    *t = *s;
                } else {
                    t[0] = s[0];
                    t[1] = s[1];
                    t[2] = s[2];
                }
                out[j] = t + dstStride;
            }
        }
    }
}

void ShearColumns(const unsigned char* src, std::uint64_t srcStride, unsigned char* dst, std::uint64_t dstStride,
                  std::int64_t w, std::int64_t h, int depth, std::int64_t skew) {
    switch (depth) {
        case 1: ShearColumnsAt<1>(src, srcStride, dst, dstStride, w, h, skew); break;
        case 4: ShearColumnsAt<4>(src, srcStride, dst, dstStride, w, h, skew); break;
        case 8: ShearColumnsAt<8>(src, srcStride, dst, dstStride, w, h, skew); break;
        case 24: ShearColumnsAt<24>(src, srcStride, dst, dstStride, w, h, skew); break;
        default: break;  // other depths move no pixel: a zero picture
    }
}

void WriteCorners(int* corners, std::int64_t w, std::int64_t h, bool horizontal, std::int64_t skew) {
    std::int64_t p[8] = {0, 0, w, 0, w, h, 0, h};
    if (horizontal) {
        if (skew > 0) {
            p[0] = skew;
            p[2] = w + skew;
        } else {
            p[6] = -skew;
            p[4] = w - skew;
        }
    } else if (skew > 0) {
        p[1] = skew;
        p[3] = skew;
    } else {
        // P3 and P2 move together: the corners describe a rectangle.
        p[7] = h - skew;
        p[5] = h - skew;
    }
    // Values beyond 32 bits wrap, as 32-bit sums do.
    for (int i = 0; i < 8; ++i) corners[i] = static_cast<int>(static_cast<std::uint32_t>(p[i]));
}

HDIB Skew(HDIB dib, bool horizontal, int skewArg, int* error, int* corners) {
    LastImgError = kErrNone;
    auto fail = [error](int code) -> HDIB {
        LastImgError = code;
        if (error) *error = code;
        return nullptr;
    };
    if (!dib) return fail(kErrParameter);
    BlockLock source(dib);
    if (!source) return fail(kErrLock);
    const std::uint64_t blockBytes = source.size();
    BITMAPINFOHEADER hdr;
    CopyHeaderBytes(source.get(), blockBytes, &hdr);
    // A block too short for its own header or colour table is a parameter
    // error like a wrong header size.
    if (hdr.biSize != kInfoHeaderSize || blockBytes < kInfoHeaderSize) return fail(kErrParameter);
    if (hdr.biCompression != 0) return fail(kErrCompressed);
    if (hdr.biWidth == 0 || hdr.biHeight == 0) return fail(kErrDibSize);
    DibView view;
    DibStatus status = ViewDib(source.get(), blockBytes, &view);
    if (status == DibStatus::kTooSmall) return fail(kErrParameter);
    // Negative sizes, and rows that do not fit in the block, are an invalid
    // size as well.
    if (status != DibStatus::kOk || !view.RowsFit()) return fail(kErrDibSize);

    const std::int64_t w = view.width, h = view.height, skew = skewArg;
    const int depth = view.bitCount;
    if (corners) WriteCorners(corners, w, h, horizontal, skew);

    const std::int64_t absSkew = skew < 0 ? -skew : skew;
    const std::int64_t newW = horizontal ? w + absSkew : w;
    const std::int64_t newH = horizontal ? h : h + absSkew;
    // Sizes a header cannot hold, or a block cannot, are out of memory.
    std::uint64_t bytes = 0;
    if (newW > 0x7FFFFFFF || newH > 0x7FFFFFFF || !DibBlockBytes(newW, newH, depth, view.colors, &bytes))
        return fail(kErrMemory);
    OwnedBlock owned(AllocBlock(bytes));
    if (owned) plat::SparseBlock(owned.get());  // the triangles beside the picture stay zero
    if (!owned) return fail(kErrMemory);
    BlockLock result(owned.get());
    if (!result) return fail(kErrLock);

    const std::uint64_t newStride = DibRowBytes(newW, depth);
    const size_t tableBytes = static_cast<size_t>(view.colors) * 4;
    std::memcpy(result.get(), source.get(), kInfoHeaderSize + tableBytes);
    BITMAPINFOHEADER out = hdr;
    out.biWidth = static_cast<LONG>(newW);
    out.biHeight = static_cast<LONG>(newH);
    out.biSizeImage = static_cast<DWORD>(newStride * static_cast<std::uint64_t>(newH));
    std::memcpy(result.get(), &out, sizeof(out));

    unsigned char* dst = result.bytes() + kInfoHeaderSize + tableBytes;
    if (horizontal)
        ShearRows(view.bits, view.stride, dst, newStride, w, h, depth, skew);
    else
        ShearColumns(view.bits, view.stride, dst, newStride, w, h, depth, skew);

    result.Unlock();
    source.Release();  // the source stays locked once more, as callers expect
    return owned.Release();
}

}  // namespace
}  // namespace prism

PRISM_API HDIB WINAPI SkewDIB(HDIB dib, BOOL horizontal, int skew, int* error, int* corners) {
    return prism::Skew(dib, horizontal != 0, skew, error, corners);
}
