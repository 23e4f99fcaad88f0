// ExpandCompressedDIB: decoding RLE8 and RLE4 streams back into
// uncompressed rows.
#include "core/dib.h"
#include "core/errors.h"
#include "core/rle.h"
#include "platform/export.h"

#include <cstring>

namespace prism {
namespace {

// The stream runs from the fixed offset to the end of the block; reading
// past its end counts as the end of the image.
struct Stream {
    const unsigned char* p;
    std::uint64_t length;
    std::uint64_t pos = 0;

    bool Pair(unsigned* a, unsigned* b) {
        if (length - pos < 2) return false;
        *a = p[pos];
        *b = p[pos + 1];
        pos += 2;
        return true;
    }
    std::uint64_t Left() const { return length - pos; }
    // Moves on by `count` bytes; false when the stream ends first.
    bool Skip(std::uint64_t count) {
        if (count > Left()) return false;
        pos += count;
        return true;
    }
};

// The target rows: `height` rows of `stride` bytes.
struct Target {
    unsigned char* bits;
    std::uint64_t stride;
    std::uint64_t height;
    std::uint64_t bytes;  // stride * height
};

// RLE8.  x and y are unchecked counters as in the stream's own terms; a
// write is placed at byte y * stride + x and whatever falls outside the
// pixel rows is dropped.
void ExpandRle8(Stream& s, const Target& t, std::uint32_t width) {
    std::uint32_t x = 0;
    std::uint64_t y = 0;
    unsigned a, b;
    // Where `count` bytes at (x, y) start, and how many of them land.
    auto place = [&](std::uint32_t count, std::uint64_t* at) -> std::uint64_t {
        if (y >= t.height) return 0;
        *at = y * t.stride + x;
        if (*at >= t.bytes) return 0;
        const std::uint64_t room = t.bytes - *at;
        return count < room ? count : room;
    };
    while (s.Pair(&a, &b)) {
        if (a != 0) {
            // Cut at the row's end; past the right edge (after an offset)
            // width - x wraps and the run goes on into the next row's bytes.
            const std::uint32_t count = a < width - x ? a : width - x;
            std::uint64_t at = 0;
            const std::uint64_t n = place(count, &at);
            if (n) std::memset(t.bits + at, static_cast<int>(b), static_cast<size_t>(n));
            x += count;
            // A full row wraps to column 0 of the same row.
            if (x == width) x = 0;
        } else if (b == kRleEndOfRow) {
            x = 0;
            ++y;
        } else if (b == kRleEndOfImage) {
            break;
        } else if (b == kRleOffset) {
            unsigned dx, dy;
            if (!s.Pair(&dx, &dy)) break;
            x += dx;
            y += dy;
        } else {
            const std::uint32_t count = b < width - x ? b : width - x;
            const std::uint64_t have = s.Left() < count ? s.Left() : count;
            std::uint64_t at = 0;
            const std::uint64_t n = place(static_cast<std::uint32_t>(have), &at);
            if (n) std::memcpy(t.bits + at, s.p + s.pos, static_cast<size_t>(n));
            x += count;
            if (x == width) x = 0;
            if (!s.Skip(b + (b & 1))) break;
        }
    }
}

// Writes `n` pixels of a repeat pair from column x: the high nibble of b,
// then the low one, in turn.  Whole target bytes are filled at once.
void FillNibbles(unsigned char* row, std::uint32_t x, std::uint32_t n, unsigned char b) {
    std::uint32_t k = 0;
    unsigned char pair = b;
    if (x & 1) {
        // The first pixel takes a low nibble; the pairs after it are swapped.
        PutNibble(row, x, b >> 4);
        k = 1;
        pair = static_cast<unsigned char>((b << 4) | (b >> 4));
    }
    const std::uint32_t whole = (n - k) / 2;
    std::memset(row + (x + k) / 2, pair, whole);
    k += 2 * whole;
    if (k < n) PutNibble(row, x + k, k & 1 ? b & 0x0F : b >> 4);
}

// RLE4.  Pixels are written only while x is below the width:
// a run is cut at the row's end and x stays there, so a pair after a full
// row is lost.
void ExpandRle4(Stream& s, const Target& t, std::uint32_t width) {
    std::uint32_t x = 0;
    std::uint64_t y = 0;
    unsigned a, b;
    while (s.Pair(&a, &b)) {
        unsigned char* row = y < t.height ? t.bits + y * t.stride : nullptr;
        if (a != 0) {
            if (x >= width) continue;
            const std::uint32_t n = a < width - x ? a : width - x;
            if (row) FillNibbles(row, x, n, static_cast<unsigned char>(b));
            x += n;
        } else if (b == kRleEndOfRow) {
            x = 0;
            ++y;
        } else if (b == kRleEndOfImage) {
            break;
        } else if (b == kRleOffset) {
            unsigned dx, dy;
            if (!s.Pair(&dx, &dy)) break;
            x += dx;
            y += dy;
        } else {
            const std::uint64_t bytes = (b + 1) / 2;
            const std::uint32_t n = x < width ? (b < width - x ? b : width - x) : 0;
            if (x % 2 == 0 && (n + 1) / 2 <= s.Left()) {
                // Whole source bytes line up with whole target bytes.
                if (row) {
                    std::memcpy(row + x / 2, s.p + s.pos, n / 2);
                    if (n & 1) PutNibble(row, x + n - 1, s.p[s.pos + n / 2] >> 4);
                }
                x += n;
                if (!s.Skip(bytes + (bytes & 1))) break;
                continue;
            }
            // Source bytes are read only while pixels still land in the row.
            for (unsigned k = 0; k < b && x < width; ++k, ++x) {
                if (k / 2 >= s.Left()) return;
                const unsigned char v = s.p[s.pos + k / 2];
                if (row) PutNibble(row, x, k & 1 ? v & 0x0F : v >> 4);
            }
            if (!s.Skip(bytes + (bytes & 1))) break;
        }
    }
}

}  // namespace

// ExpandCompressedDIB(dib): a new uncompressed image from an RLE8 or RLE4
// one; the input is left as it is.  0 on failure, with code 8 for a
// missing, unreadable or unsuitable image and 1 when memory is short.
// Success clears the last error.  A damaged stream never reaches outside
// either block: writes beyond the pixel rows are dropped, and the block's
// end counts as the end of the image.
PRISM_API HDIB WINAPI ExpandCompressedDIB(HDIB dib) {
    if (!dib) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BlockLock lock(dib);
    DibView view;
    if (!lock || ViewDib(lock.get(), lock.size(), &view) != DibStatus::kOk || !view.infoHeader) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BITMAPINFOHEADER h;
    std::memcpy(&h, lock.get(), sizeof(h));
    // Compression values above 2 are read as RLE4; they are taken only at
    // the two depths whose rows a 4-bit stream can fill without overrun.
    const bool depthFits = h.biCompression == kBiRle8   ? h.biBitCount == 8
                           : h.biCompression == kBiRle4 ? h.biBitCount == 4
                                                        : h.biBitCount == 4 || h.biBitCount == 8;
    if (h.biCompression == kBiRgb || !depthFits || h.biSizeImage == 0) {
        LastImgError = kErrParameter;
        return nullptr;
    }

    const std::uint64_t offset = RleTableOffset(view.bitCount);
    std::uint64_t bytes;
    if (!DibBlockBytes(view.width, view.height, view.bitCount, std::uint64_t(1) << view.bitCount, &bytes)) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    OwnedBlock result(AllocBlock(bytes));
    BlockLock out(result.get());
    if (!out) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    // Header and full-size table; a source block that ends sooner reads as 0.
    std::memcpy(out.get(), view.header, static_cast<size_t>(view.blockBytes < offset ? view.blockBytes : offset));
    const std::uint64_t pixelBytes = view.stride * static_cast<std::uint64_t>(view.height);
    BITMAPINFOHEADER nh;
    std::memcpy(&nh, out.get(), sizeof(nh));
    nh.biCompression = kBiRgb;
    nh.biSizeImage = static_cast<DWORD>(pixelBytes);
    std::memcpy(out.get(), &nh, sizeof(nh));

    Stream stream{view.header + (offset < view.blockBytes ? offset : view.blockBytes),
                  offset < view.blockBytes ? view.blockBytes - offset : 0};
    Target target{out.bytes() + offset, view.stride, static_cast<std::uint64_t>(view.height), pixelBytes};
    const std::uint32_t width = static_cast<std::uint32_t>(view.width);
    if (h.biCompression == kBiRle8)
        ExpandRle8(stream, target, width);
    else
        ExpandRle4(stream, target, width);

    out.Unlock();
    lock.Unlock();
    LastImgError = kErrNone;
    return result.Release();
}

}  // namespace prism
