// The row framework shared by the four dithers: source rows into red,
// green and blue byte rows, 16-bit cells, packed output planes, and the
// result with its fixed palette.
#include "halftone/dither.h"

#include "core/dib.h"
#include "core/errors.h"

#include <algorithm>
#include <cstring>

namespace prism {

const unsigned char* SourceRows::Row(std::int64_t y) const {
    const std::uint64_t at = start + static_cast<std::uint64_t>(y) * stride;
    if (at <= blockBytes && length <= blockBytes - at) return base + at;
    // The row runs past the end of the block: what lies inside is read as
    // it stands, the rest reads 0.
    std::uint64_t have = at < blockBytes ? blockBytes - at : 0;
    if (have) std::memcpy(scratch, base + at, static_cast<size_t>(have));
    std::memset(scratch + have, 0, static_cast<size_t>(length - have));
    return scratch;
}

void ReadFullPalette(const unsigned char* block, std::uint64_t blockBytes, unsigned char out[1024]) {
    std::memset(out, 0, 1024);
    if (blockBytes > kInfoHeaderSize) {
        std::uint64_t n = std::min<std::uint64_t>(blockBytes - kInfoHeaderSize, 1024);
        std::memcpy(out, block + kInfoHeaderSize, static_cast<size_t>(n));
    }
}

void DitherPaletteRow(const unsigned char* row, const unsigned char* component, unsigned char* out,
                      int count, int bitCount) {
    if (bitCount == 8) {
        for (int x = 0; x < count; ++x) out[x] = component[4 * row[x]];
        return;
    }
    for (int i = 0; i < count / 2; ++i) {
        out[2 * i] = component[4 * (row[i] >> 4)];
        out[2 * i + 1] = component[4 * (row[i] & 15)];
    }
}

void DitherSplitRGB(const unsigned char* row, unsigned char* red, unsigned char* green,
                    unsigned char* blue, int count) {
    for (int x = 0; x < count; ++x) {
        blue[x] = row[3 * x];
        green[x] = row[3 * x + 1];
        red[x] = row[3 * x + 2];
    }
}

void DitherGreyRow(unsigned char* red, const unsigned char* green, const unsigned char* blue,
                   int first, int count) {
    for (int x = first; x < count; ++x) {
        int g = (30 * red[x] + 59 * green[x] + 11 * blue[x]) / 100;
        red[x] = static_cast<unsigned char>(g > 255 ? 255 : g);
    }
}

void DitherAddRow(const unsigned char* bytes, std::int16_t* cells, int width) {
    for (int x = 0; x < width; ++x) cells[x] = static_cast<std::int16_t>(cells[x] + bytes[x]);
}

void DitherLoadRow(const unsigned char* bytes, std::int16_t* cells, int count) {
    for (int x = 0; x < count; ++x) cells[x] = bytes[x];
}

void DitherBuildHeader(unsigned char* block, int bits, std::int32_t width, std::int32_t height,
                       std::uint32_t imageBytes) {
    BITMAPINFOHEADER h = {};
    h.biSize = kInfoHeaderSize;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bits);
    h.biSizeImage = imageBytes;
    h.biClrUsed = 1u << bits;
    std::memcpy(block, &h, sizeof(h));
    unsigned char* e = block + kInfoHeaderSize;
    const int colors = 1 << bits;
    for (int i = 0; i < colors; ++i, e += 4) {
        switch (bits) {
            case 1: e[0] = e[1] = e[2] = i ? 255 : 0; e[3] = 0; break;
            case 4:
                // Odd entries repeat the even ones with a reserved byte of 255;
                // the pixels only ever use the even ones.
                e[0] = (i & 2) ? 255 : 0;
                e[1] = (i & 4) ? 255 : 0;
                e[2] = (i & 8) ? 255 : 0;
                e[3] = (i & 1) ? 255 : 0;
                break;
            default:
                // 3-3-2: red and green top out at 252, blue reaches 255.
                e[0] = static_cast<unsigned char>((i % 4) * 85);
                e[1] = static_cast<unsigned char>(((i / 4) % 8) * 36);
                e[2] = static_cast<unsigned char>((i / 32) * 36);
                e[3] = 0;
                break;
        }
    }
}

void DitherInterleavePlanes(std::uint64_t planeBytes, std::int64_t height, std::uint64_t planeStride,
                            const unsigned char* red, const unsigned char* green,
                            const unsigned char* blue, unsigned char* out) {
    // spread[v]: the eight bits of a plane byte as four output bytes (low
    // byte first), each pixel's bit at the bottom of its nibble.
    std::uint32_t spread[256];
    for (unsigned v = 0; v < 256; ++v) {
        std::uint32_t s = 0;
        for (int k = 0; k < 8; ++k)
            if (v >> (7 - k) & 1) s |= (k % 2 ? 0x01u : 0x10u) << (8 * (k / 2));
        spread[v] = s;
    }
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::uint64_t i = 0; i < planeBytes; ++i) {
            const std::uint32_t v = spread[red[i]] << 3 | spread[green[i]] << 2 | spread[blue[i]] << 1;
            out[0] = static_cast<unsigned char>(v);
            out[1] = static_cast<unsigned char>(v >> 8);
            out[2] = static_cast<unsigned char>(v >> 16);
            out[3] = static_cast<unsigned char>(v >> 24);
            out += 4;
        }
        red += planeStride;
        green += planeStride;
        blue += planeStride;
    }
}

namespace {

// Cell row k of the work block: rows start 6 cells in and stand 20 cells
// apart, so kernels may write a little before and after a row.
std::int16_t* CellRow(unsigned char* block, int k, std::uint64_t p) {
    const std::uint64_t pitch = (p & 0xFFFF) + 20;
    return reinterpret_cast<std::int16_t*>(block) + 6 + k * pitch;
}

std::uint64_t CellBlockBytes(DitherKind kind, int bits, std::uint64_t p) {
    const bool wide = kind == DitherKind::kJJN || kind == DitherKind::kSharp;
    if (bits == 1) return wide ? 6 * p + 220 : 4 * p + 180;
    return wide ? 18 * p + 460 : 12 * p + 340;
}

// Widest row the kernels take: they count pixels in 16 bits.
constexpr std::int64_t kMaxDitherWidth = 32767;

}  // namespace

HDIB DitherImage(HDIB dib, int bits, DitherKind kind) {
    const bool fs = kind == DitherKind::kFS;
    const bool redistribute = kind == DitherKind::kSmooth || kind == DitherKind::kSharp;
    const bool bitsOk = bits == 1 || bits == 4 || (bits == 8 && !redistribute);
    if (!bitsOk) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    if (!dib) {
        LastImgError = fs ? kErrParameter : kErrLock;
        return nullptr;
    }
    BlockLock source(dib);
    if (!source) {
        LastImgError = fs ? kErrLock : kErrMemory;
        return nullptr;
    }
    const std::uint64_t blockBytes = source.size();
    // The header is always taken as a 40-byte one; header bytes past the end
    // of a too-small block read 0.
    BITMAPINFOHEADER h;
    CopyHeaderBytes(source.get(), blockBytes, &h);
    const int depth = h.biBitCount;
    if (bits >= depth || (depth != 4 && depth != 8 && depth != 24)) {
        // A refused depth leaves the source locked once more; the block stays valid.
        source.Release();
        LastImgError = kErrDitherParameter;
        return nullptr;
    }
    const std::int64_t width = h.biWidth;
    const std::int64_t height = h.biHeight;
    if (width > kMaxDitherWidth) {
        // Refused rather than turned into an empty picture by a 16-bit count.
        LastImgError = kErrParameter;
        return nullptr;
    }
    if (!RowsInsideBlock(h, blockBytes)) {
        // The header claims more rows than the block holds: refused, so a
        // tiny block cannot make the dither walk millions of empty rows.
        LastImgError = kErrDibSize;
        return nullptr;
    }

    // P: row length in pixels, nibbles for 4 bits, the width taken up to a
    // multiple of 4 otherwise.  0 for a width of 0 or below.
    const std::uint64_t p = depth == 4 ? 2 * DibRowBytes(width, 4) : DibRowBytes(width, 8);
    const int count = static_cast<int>(p);
    const int w = static_cast<int>(width);
    // Pixels start behind a full colour table for the depth, whatever
    // biClrUsed says.
    SourceRows src;
    src.base = source.bytes();
    src.blockBytes = blockBytes;
    src.start = kInfoHeaderSize + (depth == 4 ? 64 : depth == 8 ? 1024 : 0);
    src.stride = DibRowBytes(width, depth);
    src.length = depth == 24 ? 3 * p : depth == 8 ? p : p / 2;
    unsigned char palette[1024];
    ReadFullPalette(source.bytes(), blockBytes, palette);

    LastImgError = kErrMemory;
    // Line planes: red, green and blue rows of P bytes, then a scratch row
    // for source rows that run past the end of the block.
    OwnedBlock lineBlock(AllocBlock(3 * p + src.length));
    BlockLock lines(lineBlock.get());
    if (!lines) return nullptr;  // the source is unlocked on this path
    unsigned char* red = lines.bytes();
    unsigned char* green = red + p;
    unsigned char* blue = green + p;
    src.scratch = blue + p;

    const std::uint64_t stride1 = DibRowBytes(width, 1);
    const std::uint64_t strideOut = DibRowBytes(width, bits);
    const std::uint64_t planeRows = height < 0 ? 0 : static_cast<std::uint64_t>(height);
    std::uint64_t planeBytes = bits == 8 ? planeRows * strideOut : planeRows * stride1;
    if (bits == 4) planeBytes *= 3;
    OwnedBlock outBlock(height < 0 ? nullptr : AllocBlock(planeBytes));
    BlockLock out(outBlock.get());
    if (!out) {
        // From here on a failure leaves the source locked once more.
        source.Release();
        return nullptr;
    }
    OwnedBlock cellBlock(AllocBlock(CellBlockBytes(kind, bits, p)));
    BlockLock cellLock(cellBlock.get());
    if (!cellLock) {
        source.Release();
        return nullptr;
    }

    plat::WaitCursor cursor;
    const int planes = bits == 1 ? 1 : 3;
    const bool jjn = kind == DitherKind::kJJN;
    const int rowsPerPlane = jjn ? 3 : 2;
    std::int16_t* rows[3][3] = {};
    for (int c = 0; c < planes; ++c)
        for (int k = 0; k < rowsPerPlane; ++k) rows[c][k] = CellRow(cellLock.bytes(), c * rowsPerPlane + k, p);
    unsigned char* const lineRows[3] = {red, green, blue};
    unsigned char* outRows[3] = {out.bytes(), out.bytes() + planeRows * stride1,
                                 out.bytes() + 2 * planeRows * stride1};

    // At one bit, rows after the first are diffused from red alone, so
    // green and blue are only filled for the first row.
    auto loadLines = [&](std::int64_t y) {
        const unsigned char* row = src.Row(y);
        const bool redOnly = bits == 1 && y > 0;
        if (depth == 24) {
            if (redOnly) {
                for (int x = 0; x < count; ++x) red[x] = row[3 * x + 2];
            } else {
                DitherSplitRGB(row, red, green, blue, count);
            }
        } else {
            DitherPaletteRow(row, palette + 2, red, count, depth);
            if (!redOnly) {
                DitherPaletteRow(row, palette + 1, green, count, depth);
                DitherPaletteRow(row, palette + 0, blue, count, depth);
            }
        }
    };
    const size_t rowCopy = 2 * p;

    loadLines(0);
    if (bits == 1) {
        // Only the first row becomes luminance; later rows are diffused from
        // their red component.  JJN and smooth leave index 0 plain red.
        // (Their walk also writes index P, which lies behind every pixel
        // used and is not kept.)
        const int first = (kind == DitherKind::kJJN || kind == DitherKind::kSmooth) ? 1 : 0;
        DitherGreyRow(red, green, blue, first, count);
    }

    if (!redistribute) {
        for (std::int64_t y = 0; y < height; ++y) {
            for (int c = 0; c < planes; ++c) DitherAddRow(lineRows[c], rows[c][0], w);
            if (bits == 8) {
                if (jjn) {
                    DiffuseRowJJN8(rows, outRows[0], w);
                } else {
                    std::int16_t* const cur[3] = {rows[0][0], rows[1][0], rows[2][0]};
                    std::int16_t* const next[3] = {rows[0][1], rows[1][1], rows[2][1]};
                    DiffuseRowFS8(cur, next, outRows[0], w);
                }
                outRows[0] += strideOut;
            } else {
                for (int c = 0; c < planes; ++c) {
                    if (jjn)
                        DiffuseRowJJN1(rows[c][0], rows[c][1], rows[c][2], outRows[c], w);
                    else
                        DiffuseRowFS1(rows[c][0], rows[c][1], outRows[c], w);
                    outRows[c] += stride1;
                }
            }
            // The row copied from keeps its values into the next line.
            for (int c = 0; c < planes; ++c) {
                std::memcpy(rows[c][0], rows[c][1], rowCopy);
                if (jjn) std::memcpy(rows[c][1], rows[c][2], rowCopy);
            }
            if (y < height - 1) loadLines(y + 1);
        }
    } else {
        const bool halve = kind == DitherKind::kSharp;
        for (int c = 0; c < planes; ++c) {
            DitherLoadRow(lineRows[c], rows[c][0], count);
            DitherLoadRow(lineRows[c], rows[c][1], count);
        }
        // Warm-up on the first row twice; its output row is written again
        // by the first pass of the loop.
        for (int c = 0; c < planes; ++c) {
            RedistributeRow(rows[c][0], rows[c][1], outRows[c], w, halve);
            std::memcpy(rows[c][0], rows[c][1], rowCopy);
        }
        // The source is read one row ahead, the second row even for a
        // one-row image (past the block it reads 0; it is never used).
        loadLines(1);
        for (std::int64_t y = 0; y < height; ++y) {
            for (int c = 0; c < planes; ++c) {
                if (y != height - 1) DitherLoadRow(lineRows[c], rows[c][1], count);
                RedistributeRow(rows[c][0], rows[c][1], outRows[c], w, halve);
                std::memcpy(rows[c][0], rows[c][1], rowCopy);
                outRows[c] += stride1;
            }
            if (y < height - 2) loadLines(y + 2);
        }
    }

    const LONG xPels = h.biXPelsPerMeter;
    const LONG yPels = h.biYPelsPerMeter;
    source.Unlock();

    std::uint64_t resultBytes = 0;
    HDIB result = nullptr;
    if (DibBlockBytes(width, height, bits, 1u << bits, &resultBytes)) result = AllocBlock(resultBytes);
    OwnedBlock resultOwner(result);
    BlockLock resultLock(result);
    if (!resultLock) return nullptr;
    const std::uint64_t imageBytes = planeRows * strideOut;
    DitherBuildHeader(resultLock.bytes(), bits, static_cast<std::int32_t>(width),
                      static_cast<std::int32_t>(height), static_cast<std::uint32_t>(imageBytes));
    std::memcpy(resultLock.bytes() + 24, &xPels, 4);
    std::memcpy(resultLock.bytes() + 28, &yPels, 4);
    unsigned char* pixels = resultLock.bytes() + kInfoHeaderSize + 4 * (1u << bits);
    if (bits == 4) {
        DitherInterleavePlanes(DibRowBytes(width, 4) / 4, height, stride1, out.bytes(),
                               out.bytes() + planeRows * stride1, out.bytes() + 2 * planeRows * stride1,
                               pixels);
    } else {
        std::memcpy(pixels, out.bytes(), static_cast<size_t>(imageBytes));
    }
    resultLock.Unlock();
    LastImgError = kErrNone;
    return resultOwner.Release();
}

}  // namespace prism
