// Nearest-neighbour stretchers for 1, 4, 8 and 24 bits: the result, one
// source line and one destination line are all the memory they use.
#include "display/stretch.h"

#include "core/dib.h"

#include <cstring>

namespace prism {

namespace {

// Holds a work block locked for a scope and frees it at the end.
class LineBlock {
public:
    LineBlock() = default;
    ~LineBlock() {
        if (data_) GlobalUnlock(block_);
        if (block_) GlobalFree(block_);
    }
    LineBlock(const LineBlock&) = delete;
    LineBlock& operator=(const LineBlock&) = delete;
    bool Make(std::uint64_t bytes) {
        block_ = AllocBlock(bytes);
        if (block_) data_ = static_cast<unsigned char*>(GlobalLock(block_));
        return data_ != nullptr;
    }
    unsigned char* data() const { return data_; }
    // Unlocks the block and hands it to the caller.
    HGLOBAL Hand() {
        GlobalUnlock(block_);
        data_ = nullptr;
        HGLOBAL b = block_;
        block_ = nullptr;
        return b;
    }

private:
    HGLOBAL block_ = nullptr;
    unsigned char* data_ = nullptr;
};

// Bytes of a rectangle of `count` pixels whose first pixel stands `offset`
// pixels into its first byte.
std::uint64_t SpanBytes(int depth, std::uint64_t offset, std::uint64_t count) {
    switch (depth) {
        case 1: return (offset + count + 7) / 8;
        case 4: return (offset + count + 1) / 2;
        case 8: return count;
        default: return 3 * count;
    }
}

// Pixels of a byte-packed line: offset of pixel `x` within its byte.
inline unsigned Bit(const unsigned char* line, std::uint64_t x) {
    return (line[x >> 3] >> (7 - (x & 7))) & 1u;
}
inline void SetBit(unsigned char* line, std::uint64_t x, unsigned v) {
    const unsigned char mask = static_cast<unsigned char>(0x80u >> (x & 7));
    if (v)
        line[x >> 3] |= mask;
    else
        line[x >> 3] &= static_cast<unsigned char>(~mask);
}
inline unsigned Nibble(const unsigned char* line, std::uint64_t x) {
    return x & 1 ? line[x >> 1] & 0x0Fu : line[x >> 1] >> 4;
}
inline void SetNibble(unsigned char* line, std::uint64_t x, unsigned v) {
    unsigned char& b = line[x >> 1];
    // An even index is the high nibble; the other nibble is kept.
    if (x & 1)
        b = static_cast<unsigned char>((b & 0xF0u) | (v & 0x0Fu));
    else
        b = static_cast<unsigned char>((b & 0x0Fu) | (v << 4));
}

// Copies `count` pixels starting at pixel `srcX` of an image row into the
// source line, whole bytes from the byte that holds srcX.  Pixels of those
// bytes that lie past `count` are cleared, so a rectangle that passes the
// image's right edge sees pixel 0 there.
void FillSourceLine(int depth, const unsigned char* row, std::int64_t srcX, std::int64_t count,
                    std::uint64_t offset, unsigned char* line, std::uint64_t lineBytes, bool clip) {
    std::memset(line, 0, static_cast<size_t>(lineBytes));
    const std::int64_t firstByte = depth == 1 ? srcX / 8 : depth == 4 ? srcX / 2 : depth == 8 ? srcX : 3 * srcX;
    const std::uint64_t bytes = SpanBytes(depth, offset, static_cast<std::uint64_t>(count));
    std::memcpy(line, row + firstByte, static_cast<size_t>(bytes));
    if (!clip) return;
    const std::uint64_t end = offset + static_cast<std::uint64_t>(count);  // first pixel to clear
    if (depth == 1 && (end & 7)) line[end >> 3] &= static_cast<unsigned char>(0xFF00u >> (end & 7));
    if (depth == 4 && (end & 1)) line[end >> 1] &= 0xF0u;
}

// The destination line for one source line.
void BuildDestinationLine(int depth, const unsigned char* src, std::uint64_t offset, std::int64_t srcW,
                          unsigned char* dst, std::int64_t dstW, std::uint64_t dstStride) {
    std::memset(dst, 0, static_cast<size_t>(dstStride));
    const std::uint64_t w = static_cast<std::uint64_t>(dstW);
    if (dstW == srcW) {
        switch (depth) {
            case 1: {
                const std::uint64_t n = (w + 7) / 8;
                const unsigned s = static_cast<unsigned>(offset);
                for (std::uint64_t k = 0; k < n; ++k)
                    dst[k] = s ? static_cast<unsigned char>((src[k] << s) | (src[k + 1] >> (8 - s))) : src[k];
                if (w & 7) dst[n - 1] &= static_cast<unsigned char>(0xFF00u >> (w & 7));
                break;
            }
            case 4: {
                const std::uint64_t n = (w + 1) / 2;
                for (std::uint64_t k = 0; k < n; ++k)
                    dst[k] = offset ? static_cast<unsigned char>((src[k] << 4) | (src[k + 1] >> 4)) : src[k];
                if (w & 1) dst[n - 1] &= 0xF0u;
                break;
            }
            case 8: std::memcpy(dst, src, static_cast<size_t>(w)); break;
            default: std::memcpy(dst, src, static_cast<size_t>(3 * w)); break;
        }
        return;
    }
    // Column i takes source column (4 dstW + 8 srcW i) / (8 dstW): the
    // quotient is stepped, not divided, column by column.
    const std::uint64_t den = 8 * w;
    const std::uint64_t step = 8 * static_cast<std::uint64_t>(srcW);
    const std::uint64_t stepQ = step / den, stepR = step % den;
    std::uint64_t q = (4 * w) / den, r = (4 * w) % den;
    const std::uint64_t limit = static_cast<std::uint64_t>(srcW);
    for (std::uint64_t i = 0; i < w; ++i) {
        if (q >= limit) break;
        switch (depth) {
            case 1: SetBit(dst, i, Bit(src, q + offset)); break;
            case 4: SetNibble(dst, i, Nibble(src, q + offset)); break;
            case 8: dst[i] = src[q]; break;
            default: std::memcpy(dst + 3 * i, src + 3 * q, 3); break;
        }
        q += stepQ;
        r += stepR;
        if (r >= den) {
            r -= den;
            ++q;
        }
    }
}

HDIB StretchRowsAt(int depth, const void* header, const unsigned char* pixels, int srcX, int srcY,
                   int srcW, int srcH, int dstW, int dstH) {
    if (!header || !pixels) return nullptr;
    BITMAPINFOHEADER h;
    std::memcpy(&h, header, sizeof(h));
    // The fields below are read at the 40-byte header's offsets.
    if (h.biSize < kInfoHeaderSize || h.biBitCount != depth) return nullptr;
    if (srcW < 1 || srcH < 1 || dstW < 1 || dstH < 1 || srcX < 0 || srcY < 0) return nullptr;
    if (srcX >= h.biWidth || srcY >= h.biHeight) return nullptr;

    const std::uint64_t srcStride = DibRowBytes(h.biWidth, depth);
    const std::uint64_t dstStride = DibRowBytes(dstW, depth);
    const std::uint64_t colors = StretchColorCount(header);
    const std::uint64_t headBytes = kInfoHeaderSize + 4 * colors;

    LineBlock result, srcLine, dstLine;
    const std::uint64_t offset = depth == 1 ? srcX % 8 : depth == 4 ? srcX % 2 : 0;
    const std::uint64_t srcLineBytes = SpanBytes(depth, offset, static_cast<std::uint64_t>(srcW)) + 16;
    if (!result.Make((static_cast<std::uint64_t>(dstH) + 1) * dstStride + headBytes + 16)) return nullptr;
    if (!srcLine.Make(srcLineBytes) || !dstLine.Make(dstStride + 16)) return nullptr;

    unsigned char* out = result.data();
    std::memcpy(out, header, static_cast<size_t>(headBytes));
    // Only the size changes; biSizeImage keeps the source's value.
    const LONG width = dstW, height = dstH;
    std::memcpy(out + 4, &width, 4);
    std::memcpy(out + 8, &height, 4);
    unsigned char* outBits = out + headBytes;

    // Row j (from the top) takes source row srcY + (4 dstH + 8 srcH j) / (8 dstH),
    // the nearest row with halves going up.
    const std::int64_t rowEnd = static_cast<std::int64_t>(srcY) + srcH;
    const std::int64_t visible = static_cast<std::int64_t>(srcW) <= h.biWidth - static_cast<std::int64_t>(srcX)
                                     ? srcW
                                     : h.biWidth - static_cast<std::int64_t>(srcX);
    std::int64_t previous = -1;
    for (std::int64_t j = 0; j < dstH; ++j) {
        const std::int64_t a = 4 * static_cast<std::int64_t>(dstH) + 8 * static_cast<std::int64_t>(srcH) * j;
        const std::int64_t row = srcY + a / (8 * static_cast<std::int64_t>(dstH));
        if (row >= rowEnd) break;  // the rows left stay 0
        if (row != previous) {
            if (row < h.biHeight) {
                const unsigned char* src = pixels + static_cast<size_t>(h.biHeight - row - 1) * srcStride;
                FillSourceLine(depth, src, srcX, visible, offset, srcLine.data(), srcLineBytes, visible < srcW);
                BuildDestinationLine(depth, srcLine.data(), offset, srcW, dstLine.data(), dstW, dstStride);
            } else {
                std::memset(dstLine.data(), 0, static_cast<size_t>(dstStride));
            }
            previous = row;
        }
        std::memcpy(outBits + static_cast<size_t>(dstH - 1 - j) * dstStride, dstLine.data(),
                    static_cast<size_t>(dstStride));
    }
    return result.Hand();
}

}  // namespace

std::uint32_t StretchColorCount(const void* header) {
    std::uint32_t size, clrUsed = 0;
    std::uint16_t bitCount;
    const unsigned char* p = static_cast<const unsigned char*>(header);
    std::memcpy(&size, p, 4);
    if (size == kCoreHeaderSize) {
        std::memcpy(&bitCount, p + 10, 2);
    } else {
        std::memcpy(&bitCount, p + 14, 2);
        std::memcpy(&clrUsed, p + 32, 4);
        if (clrUsed) return clrUsed;
    }
    switch (bitCount) {
        case 1: return 2;
        case 4: return 16;
        case 8: return 256;
        default: return 0;
    }
}

HDIB StretchRows1(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                  int srcH, int dstW, int dstH) {
    return StretchRowsAt(1, header, pixels, srcX, srcY, srcW, srcH, dstW, dstH);
}
HDIB StretchRows4(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                  int srcH, int dstW, int dstH) {
    return StretchRowsAt(4, header, pixels, srcX, srcY, srcW, srcH, dstW, dstH);
}
HDIB StretchRows8(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                  int srcH, int dstW, int dstH) {
    return StretchRowsAt(8, header, pixels, srcX, srcY, srcW, srcH, dstW, dstH);
}
HDIB StretchRows24(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                   int srcH, int dstW, int dstH) {
    return StretchRowsAt(24, header, pixels, srcX, srcY, srcW, srcH, dstW, dstH);
}

}  // namespace prism
