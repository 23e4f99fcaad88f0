// CompressDIB: run-length coding of uncompressed 4-bit and 8-bit DIBs into
// RLE4 and RLE8 streams meant for this library's own decoder.
#include "core/dib.h"
#include "core/errors.h"
#include "core/rle.h"
#include "core/simd_pixels.h"
#include "platform/export.h"

#include <cstring>

namespace prism {
namespace {

// A stored row as the coder reads it.  The coder looks a few bytes past the
// row's last pixel (the tail test and the end of absolute runs); inside the
// block those are the padding or the next row's first bytes and are read as
// they stand.
struct DirectRow {
    const unsigned char* p;
    std::uint64_t readable;  // bytes from p that lie in the block
    unsigned char operator[](std::uint64_t i) const { return p[i]; }
};
// Rows near the block's end: bytes past the end read as 0.
struct GuardedRow {
    const unsigned char* p;
    std::uint64_t avail;
    unsigned char operator[](std::uint64_t i) const { return i < avail ? p[i] : 0; }
};

class StreamWriter {
public:
    explicit StreamWriter(unsigned char* out) : start_(out), out_(out) {}
    void Pair(unsigned a, unsigned b) {
        out_[0] = static_cast<unsigned char>(a);
        out_[1] = static_cast<unsigned char>(b);
        out_ += 2;
    }
    void Byte(unsigned char b) { *out_++ = b; }
    template <class Row>
    void Bytes(const Row& row, std::uint64_t at, std::uint32_t count) {
        for (std::uint32_t k = 0; k < count; ++k) out_[k] = row[at + k];
        out_ += count;
    }
    void Bytes(const DirectRow& row, std::uint64_t at, std::uint32_t count) {
        std::memcpy(out_, row.p + at, count);
        out_ += count;
    }
    std::uint64_t Length() const { return static_cast<std::uint64_t>(out_ - start_); }

private:
    unsigned char* start_;
    unsigned char* out_;
};

// Lengthens a run of v at i from c: by whole vector loads where the row
// lies well inside the block, else not at all (the byte loop goes on).
template <class Row>
std::uint32_t ExtendRun(const Row&, std::uint64_t, unsigned char, std::uint32_t c, std::uint32_t) {
    return c;
}
inline std::uint32_t ExtendRun(const DirectRow& p, std::uint64_t i, unsigned char v, std::uint32_t c,
                               std::uint32_t limit) {
#if PRISM_X86
    if (Simd().sse2 && p.readable > i) return EqualRunSse2(p.p + i, v, c, limit, p.readable - i);
#endif
    (void)p, (void)i, (void)v, (void)limit;
    return c;
}

// One row of RLE8.  n counts the pixels left, i is the byte position.
template <class Row>
void CodeRowRle8(const Row& p, std::uint32_t width, StreamWriter& s) {
    std::uint64_t i = 0;
    std::uint32_t n = width;
    while (n != 0) {
        if (n < 3) {
            // Row tail: with one pixel left, the byte behind it is coded
            // as a further pixel.
            if (p[i + 1] == p[i]) {
                s.Pair(2, p[i]);
            } else {
                s.Pair(1, p[i]);
                s.Pair(1, p[i + 1]);
            }
            n = 0;
            break;
        }
        const std::uint32_t limit = n < kRleMaxRun ? n : kRleMaxRun;
        const unsigned char v = p[i];
        if (p[i + 1] == v) {
            std::uint32_t c = ExtendRun(p, i, v, 1, limit);
            while (c < limit && p[i + c] == v) ++c;
            s.Pair(c, v);
            i += c;
            n -= c;
        } else if (p[i + 2] == p[i + 1]) {
            s.Pair(1, v);
            i += 1;
            n -= 1;
        } else if (p[i + 3] == p[i + 2]) {
            s.Pair(1, v);
            s.Pair(1, p[i + 1]);
            i += 2;
            n -= 2;
        } else {
            // Absolute run; c is at least 3 since p[2] and p[3] differ.
            std::uint32_t c = 2;
            while (c < limit && p[i + c] != p[i + c + 1]) ++c;
            s.Pair(0, c);
            s.Bytes(p, i, c);
            if (c & 1) s.Byte(kRlePad);
            i += c;
            n -= c;
        }
    }
    s.Pair(0, kRleEndOfRow);
}

// Pixels taken by a step of the 4-bit coder.  With an odd width the last
// two branches can take 4 pixels when only 3 are left; the count would
// wrap and coding would run on through the following rows.  The step keeps
// its size (the decoder drops the padding pixel it covers) and the row ends.
inline void Take(std::uint32_t& n, std::uint32_t pixels) { n = pixels > n ? 0 : n - pixels; }

// One row of RLE4: bytes at p are pixel pairs, n counts pixels.
template <class Row>
void CodeRowRle4(const Row& p, std::uint32_t width, StreamWriter& s) {
    std::uint64_t i = 0;
    std::uint32_t n = width;
    while (n != 0) {
        if (n < 3) {
            s.Pair(n, p[i]);
            n = 0;
            break;
        }
        const std::uint32_t limit = n / 2 < kRleMaxRun / 2 ? n / 2 : kRleMaxRun / 2;
        const unsigned char v = p[i];
        if (p[i + 1] == v) {
            std::uint32_t c = 1;
            while (c < limit && p[i + c] == v) ++c;
            s.Pair(2 * c, v);
            i += c;
            Take(n, 2 * c);
        } else if (p[i + 2] == p[i + 1]) {
            s.Pair(2, v);
            i += 1;
            Take(n, 2);
        } else if (p[i + 3] == p[i + 2]) {
            s.Pair(2, v);
            s.Pair(2, p[i + 1]);
            i += 2;
            Take(n, 4);
        } else {
            // Absolute run of at least 2 bytes (4 pixels).
            std::uint32_t c = 2;
            while (c < limit && p[i + c] != p[i + c + 1]) ++c;
            s.Pair(0, 2 * c);
            s.Bytes(p, i, c);
            if (c & 1) s.Byte(kRlePad);
            i += c;
            Take(n, 2 * c);
        }
    }
    s.Pair(0, kRleEndOfRow);
}

// The new block: header and a full-size table copied as they stand, then
// the stream.  0 when memory is short.
HDIB MakeCompressedDib(const DibView& src, const unsigned char* stream, std::uint64_t length,
                       std::uint32_t compression) {
    const std::uint64_t offset = RleTableOffset(src.bitCount);
    HDIB dib = AllocBlock(offset + length);
    if (!dib) return nullptr;
    BlockLock lock(dib);
    if (!lock) {
        GlobalFree(dib);
        return nullptr;
    }
    unsigned char* p = lock.bytes();
    // The table is taken at its full size for the depth; a shorter table
    // (through biClrUsed) brings the first pixel bytes along, and a block
    // that ends before the full table reads as 0 there.
    const std::uint64_t have = src.blockBytes < offset ? src.blockBytes : offset;
    std::memcpy(p, src.header, static_cast<size_t>(have));
    BITMAPINFOHEADER h;
    std::memcpy(&h, p, sizeof(h));
    h.biSizeImage = static_cast<DWORD>(length);
    h.biCompression = compression;
    std::memcpy(p, &h, sizeof(h));
    if (length) std::memcpy(p + offset, stream, static_cast<size_t>(length));
    return dib;
}

// Codes every stored row, first to last, then ends the image.
HDIB CompressRows(const DibView& src, std::uint32_t compression) {
    const std::uint32_t width = static_cast<std::uint32_t>(src.width);
    const std::uint64_t height = static_cast<std::uint64_t>(src.height);
    const std::uint64_t rowWorst = RleRowWorstCase(width);
    if (height != 0 && rowWorst > (kMaxBlockBytes - 2) / height) return nullptr;
    OwnedBlock work(AllocBlock(rowWorst * height + 2));
    if (!work) return nullptr;
    plat::SparseBlock(work.get());  // written only as far as the code runs
    BlockLock workLock(work.get());
    if (!workLock) return nullptr;

    // The pixels stand at the fixed offset; bytes past the block read as 0.
    const std::uint64_t offset = RleTableOffset(src.bitCount);
    StreamWriter s(workLock.bytes());
    for (std::uint64_t y = 0; y < height; ++y) {
        const std::uint64_t start = offset + y * src.stride;
        const unsigned char* row = src.header + (start < src.blockBytes ? start : src.blockBytes);
        // The look-ahead reaches at most 4 bytes past the row's pixels.
        const bool direct = start + src.stride + 4 <= src.blockBytes;
        if (compression == kBiRle8) {
            if (direct)
                CodeRowRle8(DirectRow{row, src.blockBytes - start}, width, s);
            else
                CodeRowRle8(GuardedRow{row, start < src.blockBytes ? src.blockBytes - start : 0}, width, s);
        } else {
            if (direct)
                CodeRowRle4(DirectRow{row, src.blockBytes - start}, width, s);
            else
                CodeRowRle4(GuardedRow{row, start < src.blockBytes ? src.blockBytes - start : 0}, width, s);
        }
    }
    s.Pair(0, kRleEndOfImage);
    return MakeCompressedDib(src, workLock.bytes(), s.Length(), compression);
}

}  // namespace

// CompressDIB(dib): a new RLE8 (8-bit) or RLE4 (4-bit) image from an
// uncompressed one; the input is left as it is.  0 on failure, with code 8
// for a missing, unreadable or unsuitable image and 1 when memory is short.
// Success clears the last error.
PRISM_API HDIB WINAPI CompressDIB(HDIB dib) {
    if (!dib) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BlockLock lock(dib);
    DibView view;
    // An unreadable block, a core header, or one smaller than its header,
    // table and rows claim, is refused like a wrong depth.
    if (!lock || ViewDib(lock.get(), lock.size(), &view) != DibStatus::kOk || !view.infoHeader ||
        view.compression != kBiRgb || (view.bitCount != 4 && view.bitCount != 8) || !view.RowsFit()) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    HDIB result = CompressRows(view, view.bitCount == 8 ? kBiRle8 : kBiRle4);
    lock.Unlock();
    if (!result) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    LastImgError = kErrNone;
    return result;
}

}  // namespace prism
