// Halftone: a 4-, 8- or 24-bit DIB to 1 bit by a fixed threshold, by error
// diffusion, or by a 16-by-16 ordered screen, after a brightness offset.
#include "halftone/dither.h"

#include "core/dib.h"
#include "halftone/halftone_simd.h"
#include "platform/export.h"

#include <algorithm>
#include <cstring>

namespace prism {

void BuildHalftoneScreen(unsigned char screen[256]) {
    static const unsigned char kBase[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    unsigned char a[16][16] = {};
    unsigned char b[16][16] = {};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) a[r][c] = kBase[r][c];
    // Each doubling: four times the smaller table, plus 0 top left, 2 top
    // right, 3 bottom left and 1 bottom right.
    for (int n = 4; n < 16; n *= 2) {
        for (int r = 0; r < 2 * n; ++r) {
            for (int c = 0; c < 2 * n; ++c) {
                const int offset = r < n ? (c < n ? 0 : 2) : (c < n ? 3 : 1);
                b[r][c] = static_cast<unsigned char>(4 * a[r % n][c % n] + offset);
            }
        }
        std::memcpy(a, b, sizeof(a));
    }
    std::memcpy(screen, a, 256);
}

void HalftoneDiffuseRow(std::int32_t* row0, std::int32_t* row1, std::int32_t* row2, unsigned char* out,
                        int width) {
    unsigned acc = 0;
    int n8 = 0;
    for (int x = 0; x < width; ++x) {
        std::int32_t v = row0[x];
        unsigned bit = 0;
        if (v > 128) {
            bit = 1;
            v -= 255;
        }
        if (v != 0) {
            const std::int32_t a = 7 * v / 48, c5 = 5 * v / 48, c3 = 3 * v / 48, d = v / 48;
            row0[x + 1] += a;
            row0[x + 2] += c5;
            row1[x - 2] += c3;
            row1[x - 1] += c5;
            row1[x] += a;
            row1[x + 1] += c5;
            row1[x + 2] += c3;
            // Stored, and symmetric: 1, 3, 5, 3, 1.
            row2[x - 2] = d;
            row2[x - 1] = c3;
            row2[x] = c5;
            row2[x + 1] = c3;
            row2[x + 2] = d;
        }
        acc = (acc << 1) | bit;
        if (++n8 == 8) {
            *out++ = static_cast<unsigned char>(acc);
            acc = 0;
            n8 = 0;
        }
    }
    if (n8) *out = static_cast<unsigned char>(acc << (8 - n8));
}

namespace {

constexpr WORD kHalftoneParameter = 8;
constexpr WORD kHalftoneMemory = 1;

// Grey values of one output row, as the whole-image planes would hold them
// at plane position y * pitch + x, worked out row by row instead.
struct GreyRows {
    int depth = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::uint64_t pitch = 0;       // S
    std::uint64_t splitRow = 0;    // pixels per split row at 24 bits
    SourceRows src;
    unsigned char level[256] = {};  // palette index (4 and 8 bits) to grey
    unsigned char adjust[256] = {}; // plain grey to grey after brightness
    int brightness = 0;

    void Row(std::int64_t y, unsigned char* grey) const {
        const int w = static_cast<int>(width);
        if (depth == 8) {
            const unsigned char* row = src.Row(y);
            for (int x = 0; x < w; ++x) grey[x] = level[row[x]];
        } else if (depth == 4) {
            const unsigned char* row = src.Row(y);
            for (int x = 0; x < w; ++x) grey[x] = level[x & 1 ? row[x >> 1] & 15 : row[x >> 1] >> 4];
        } else {
            // At 24 bits the planes hold rows of splitRow pixels back to back
            // but are read at the 24-bit pitch, so output row y starts in
            // split row y * S / splitRow; behind the last split row the
            // planes are zero.
            const std::uint64_t p = static_cast<std::uint64_t>(y) * pitch;
            std::uint64_t j = p / splitRow;
            std::uint64_t c = p % splitRow;
            const unsigned char* row = j < static_cast<std::uint64_t>(height) ? src.Row(static_cast<std::int64_t>(j)) : nullptr;
            if (!row) {
                // Rows past the last split row read as zero, and so do all after them.
                std::memset(grey, adjust[0], static_cast<size_t>(w));
                return;
            }
            int x = 0;
#if PRISM_X86
            // The stretch of the row before the walk reaches the split row's end.
            if (Simd().ssse3) {
                const std::uint64_t run = std::min<std::uint64_t>(splitRow - c, static_cast<std::uint64_t>(w));
                x = static_cast<int>(HalftoneGrey24Ssse3(row + 3 * c, grey, static_cast<std::uint32_t>(run), brightness));
                c += static_cast<std::uint64_t>(x);
            }
#endif
            for (; x < w; ++x, ++c) {
                if (c == splitRow) {
                    ++j;
                    c = 0;
                    row = j < static_cast<std::uint64_t>(height) ? src.Row(static_cast<std::int64_t>(j)) : nullptr;
                }
                int g = 0;
                if (row) {
                    const unsigned char* px = row + 3 * c;
                    g = (59 * px[1] + 11 * px[0] + 30 * px[2]) / 100;
                }
                grey[x] = adjust[g];
            }
        }
    }
};

}  // namespace

HDIB HalftoneImage(HDIB dib, WORD method, int brightness, WORD* error) {
    unsigned char screen[256];
    BuildHalftoneScreen(screen);
    auto fail = [error](WORD code) -> HDIB {
        if (error) *error = code;
        return nullptr;
    };
    if (!dib || method > 2) return fail(kHalftoneParameter);
    BlockLock source(dib);
    if (!source) return fail(kHalftoneMemory);
    const std::uint64_t blockBytes = source.size();
    // Always read as a 40-byte header; bytes past a too-small block read 0.
    BITMAPINFOHEADER h;
    CopyHeaderBytes(source.get(), blockBytes, &h);
    const int depth = h.biBitCount;
    if (depth != 4 && depth != 8 && depth != 24) {
        // A refused depth leaves the source locked once more.
        source.Release();
        return fail(kHalftoneParameter);
    }
    const std::int64_t width = h.biWidth;
    const std::int64_t height = h.biHeight;
    const std::uint64_t pitch = DibRowBytes(width, depth) * (depth == 4 ? 2 : 1);
    // The image is worked as planes of S by H bytes; empty planes cannot be
    // locked and oversize ones cannot be made.
    if (width <= 0 || height <= 0 || pitch * static_cast<std::uint64_t>(height) > kMaxBlockBytes)
        return fail(kHalftoneMemory);
    // A header that claims more rows than the block holds is refused.
    if (!RowsInsideBlock(h, blockBytes)) return fail(kHalftoneParameter);

    GreyRows rows;
    rows.depth = depth;
    rows.width = width;
    rows.height = height;
    rows.pitch = pitch;
    rows.splitRow = DibRowBytes(width, 8);
    rows.src.base = source.bytes();
    rows.src.blockBytes = blockBytes;
    rows.src.start = kInfoHeaderSize + DibPaletteSize(&h);
    rows.src.stride = DibRowBytes(width, depth);
    rows.src.length = depth == 24 ? 3 * rows.splitRow : DibRowBytes(width, depth);
    rows.brightness = brightness;
    for (int g = 0; g < 256; ++g) {
        std::int64_t v = static_cast<std::int64_t>(g) + brightness;
        rows.adjust[g] = static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
    if (depth != 24) {
        unsigned char palette[1024];
        ReadFullPalette(source.bytes(), blockBytes, palette);
        for (int i = 0; i < 256; ++i) {
            const unsigned char* e = palette + 4 * i;
            rows.level[i] = rows.adjust[(59 * e[1] + 11 * e[0] + 30 * e[2]) / 100];
        }
    }

    std::uint64_t resultBytes = 0;
    if (!DibBlockBytes(width, height, 1, 2, &resultBytes)) return fail(kHalftoneMemory);
    OwnedBlock result(AllocBlock(resultBytes));
    BlockLock resultLock(result.get());
    if (!resultLock) return fail(kHalftoneMemory);

    // Work rows: diffusion cells (three rows with two cells of room on
    // each side), one grey row, and a scratch row for source rows that run
    // past the end of the block.
    const std::uint64_t cellPitch = static_cast<std::uint64_t>(width) + 4;
    const std::uint64_t cellBytes = method == 1 ? 3 * cellPitch * 4 : 0;
    OwnedBlock work(AllocBlock(cellBytes + static_cast<std::uint64_t>(width) + rows.src.length));
    BlockLock workLock(work.get());
    if (!workLock) return fail(kHalftoneMemory);
    std::int32_t* cells = reinterpret_cast<std::int32_t*>(workLock.bytes());
    std::int32_t* row0 = cells + 2;
    std::int32_t* row1 = row0 + cellPitch;
    std::int32_t* row2 = row1 + cellPitch;
    unsigned char* grey = workLock.bytes() + cellBytes;
    rows.src.scratch = grey + width;

    plat::WaitCursor cursor;
    const std::uint64_t stride1 = DibRowBytes(width, 1);
    unsigned char* out = resultLock.bytes() + kInfoHeaderSize + 8;
    const int w = static_cast<int>(width);
    for (std::int64_t y = 0; y < height; ++y, out += stride1) {
        rows.Row(y, grey);
        if (method == 1) {
            for (int x = 0; x < w; ++x) row0[x] += grey[x];
            HalftoneDiffuseRow(row0, row1, row2, out, w);
            // Row 2 keeps its values; only the cells below the width are read.
            std::memcpy(row0, row1, static_cast<size_t>(width) * 4);
            std::memcpy(row1, row2, static_cast<size_t>(width) * 4);
            continue;
        }
        const unsigned char* t = screen + 16 * (y & 15);
        unsigned acc = 0;
        int x = 0;
#if PRISM_X86
        if (Simd().sse2) x = static_cast<int>(HalftoneBitsSse2(grey, out, static_cast<std::uint32_t>(w), method == 0 ? nullptr : t));
#endif
        for (; x < w; ++x) {
            // The threshold is 129; the screen column counts from the row start.
            const bool white = method == 0 ? grey[x] > 128 : t[x & 15] < grey[x];
            acc = (acc << 1) | (white ? 1u : 0u);
            if ((x & 7) == 7) {
                out[x >> 3] = static_cast<unsigned char>(acc);
                acc = 0;
            }
        }
        if (w & 7) out[w >> 3] = static_cast<unsigned char>(acc << (8 - (w & 7)));
    }

    BITMAPINFOHEADER r = {};
    r.biSize = kInfoHeaderSize;
    r.biWidth = h.biWidth;
    r.biHeight = h.biHeight;
    r.biPlanes = 1;
    r.biBitCount = 1;
    r.biSizeImage = static_cast<DWORD>(stride1 * static_cast<std::uint64_t>(height));
    r.biXPelsPerMeter = h.biXPelsPerMeter;
    r.biYPelsPerMeter = h.biYPelsPerMeter;
    r.biClrUsed = 2;
    std::memcpy(resultLock.bytes(), &r, sizeof(r));
    unsigned char* palette = resultLock.bytes() + kInfoHeaderSize;
    palette[4] = palette[5] = palette[6] = 255;  // entry 1 white, entry 0 black
    resultLock.Unlock();
    return result.Release();
}

}  // namespace prism

// Halftone: a new 1-bit DIB from a 4-, 8- or 24-bit one.  method 0 is a
// fixed threshold, 1 error diffusion, 2 the ordered screen; brightness is
// added to each grey value first.  On failure 0 is returned and a code (8
// or 1) is written to *error; on success *error is left alone.
// LastImgError is neither read nor written.
PRISM_API HDIB WINAPI Halftone(HDIB dib, WORD method, int brightness, WORD* error) {
    return prism::HalftoneImage(dib, method, brightness, error);
}
