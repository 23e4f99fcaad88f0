// ScaleDIB: a new image of any size at the source's depth, resampled in
// RGB planes with a linear or a cubic kernel; 1-bit images are sampled by
// the 1-bit stretcher.
#include "core/dib.h"
#include "core/dib_header.h"
#include "core/errors.h"
#include "display/stretch.h"
#include "geometry/scale_kernels.h"
#include "geometry/scale_simd.h"
#include "platform/export.h"

#include <cstring>
#include <memory>
#include <new>

namespace prism {

namespace {

// Widest results whose tap walk stays inside a 16-bit byte offset.
constexpr std::uint32_t kLinearWidthLimit = 16384;
constexpr std::uint32_t kCubicWidthLimit = 10923;

// Red, green and blue of colour-table entries 0..255, read at header plus 40
// (an index beyond the table reads whatever follows it in the block; bytes
// past the block read 0).
struct TableColors {
    unsigned char red[256], green[256], blue[256];
};
void ReadTableColors(const unsigned char* block, std::uint64_t blockBytes, TableColors* c) {
    auto at = [&](std::uint64_t offset) -> unsigned char { return offset < blockBytes ? block[offset] : 0; };
    for (unsigned i = 0; i < 256; ++i) {
        const std::uint64_t e = kInfoHeaderSize + 4 * static_cast<std::uint64_t>(i);
        c->blue[i] = at(e);
        c->green[i] = at(e + 1);
        c->red[i] = at(e + 2);
    }
}

// Sets the guard bytes of a plane: the byte before pixel 0 repeats pixel 0
// and the three behind the last pixel repeat it, so the taps at -1 and +2
// never need a test.
inline void SetGuards(unsigned char* plane, unsigned count) {
    plane[-1] = plane[0];
    const unsigned char last = plane[static_cast<int>(count) - 1];
    plane[count] = plane[count + 1] = plane[count + 2] = last;
}

// One source row to three planes (each pointing at its pixel 0).
void UnpackDibRow(const unsigned char* row, std::uint16_t count, int bitCount, const TableColors& colors,
                  unsigned char* red, unsigned char* green, unsigned char* blue) {
    switch (bitCount) {
        case 24: {
            unsigned x = 0;
#if PRISM_X86
            if (Simd().ssse3) {
                unsigned char* const planes[3] = {blue, green, red};
                x = UnpackRow24Ssse3(row, count, planes);
                row += 3 * x;
            }
#endif
            for (; x < count; ++x, row += 3) {
                blue[x] = row[0];
                green[x] = row[1];
                red[x] = row[2];
            }
            break;
        }
        case 8:
            for (unsigned x = 0; x < count; ++x) {
                const unsigned i = row[x];
                red[x] = colors.red[i];
                green[x] = colors.green[i];
                blue[x] = colors.blue[i];
            }
            break;
        default:  // 4 bits, high nibble first
            for (unsigned x = 0; x < count; ++x) {
                const unsigned i = x & 1 ? row[x >> 1] & 0x0Fu : row[x >> 1] >> 4;
                red[x] = colors.red[i];
                green[x] = colors.green[i];
                blue[x] = colors.blue[i];
            }
            break;
    }
    SetGuards(red, count);
    SetGuards(green, count);
    SetGuards(blue, count);
}

// Answers of the palette search already asked in this call, one slot per
// hash of the colour.  The search gives the same answer for the same colour,
// so this only saves the platform call; it is consulted behind the
// last-colour cache, whose starting value still decides black at a row's
// start.
class NearestMemo {
public:
    explicit NearestMemo(HPALETTE palette) : palette_(palette) {
        for (std::uint32_t& c : color_) c = 0xFFFFFFFFu;  // no colour has the top byte set
    }
    std::uint32_t Index(std::uint32_t color) {
        const unsigned slot = ((color * 2654435761u) >> 20) & (kSlots - 1);
        if (color_[slot] != color) {
            color_[slot] = color;
            index_[slot] = plat::NearestPaletteIndex(palette_, color);
        }
        return index_[slot];
    }

private:
    static constexpr unsigned kSlots = 4096;
    HPALETTE palette_;
    std::uint32_t color_[kSlots];
    std::uint32_t index_[kSlots];
};

// One finished row back to DIB form.  Palette depths map each colour to
// its nearest palette entry, with the last colour and its index cached; the
// cache starts at black and index 0 on each row.
void PackDibRow(const unsigned char* red, const unsigned char* green, const unsigned char* blue, int bitCount,
                unsigned char* row, std::uint16_t count, NearestMemo* nearest) {
    if (bitCount == 24) {
        unsigned x = 0;
#if PRISM_X86
        if (Simd().ssse3) {
            const unsigned char* const planes[3] = {blue, green, red};
            x = PackRow24Ssse3(planes, row, count);
            row += 3 * x;
        }
#endif
        for (; x < count; ++x, row += 3) {
            row[0] = blue[x];
            row[1] = green[x];
            row[2] = red[x];
        }
        return;
    }
    std::uint32_t cachedColor = 0, cachedIndex = 0;
    auto index = [&](unsigned x) {
        const std::uint32_t color = static_cast<std::uint32_t>(blue[x]) << 16 | green[x] << 8 | red[x];
        if (color != cachedColor) {
            cachedColor = color;
            cachedIndex = nearest->Index(color);
        }
        return cachedIndex;
    };
    if (bitCount == 8) {
        for (unsigned x = 0; x < count; ++x) row[x] = static_cast<unsigned char>(index(x));
        return;
    }
    // Pairs of pixels per byte.  With an odd count the loop still looks up
    // a second colour, made of the bytes behind each output plane, and puts
    // its index into the row's padding nibble.
    for (unsigned x = 0; x < count; x += 2) {
        const std::uint32_t hi = index(x);
        const std::uint32_t lo = index(x + 1);
        row[x >> 1] = static_cast<unsigned char>((hi & 0x0Fu) << 4 | (lo & 0x0Fu));
    }
}

}  // namespace

// ScaleDIB(dib, mode, newWidth, newHeight): a new image of newWidth by
// newHeight at the source's depth (1, 4, 8 or 24) with its colour table.
// Mode 0 interpolates linearly, any other mode cubically; depth 1 is
// sampled.  At depths 4, 8 and 24 only the low 16 bits of the sizes count.
// Failure: 0 with LastImgError 8 (no image, a result too wide for the tap
// walk, a mode whose low half is 0 but not the rest), 1 (memory, a new
// width of 0), 21 (depth), 18 (compressed); a block that does not hold
// the image it describes gives 0 and leaves the code alone.  The source is
// not freed.
PRISM_API HDIB WINAPI ScaleDIB(HDIB dib, int mode, int newWidth, int newHeight) {
    if (!dib) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BlockLock source(dib);
    if (!source) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    DibView view;
    // Pixels are read behind a 40-byte header; other headers and blocks too
    // small for their rows are refused rather than read past.
    if (ViewDib(source.get(), source.size(), &view) != DibStatus::kOk || !view.infoHeader) return nullptr;
    if (view.compression != 0) {
        LastImgError = kErrCompressed;
        return nullptr;
    }
    if (view.bitCount == 1) {
        if (!view.RowsFit()) return nullptr;
        return StretchRows1(view.header, view.bits, 0, 0, static_cast<int>(view.width),
                            static_cast<int>(view.height), newWidth, newHeight);
    }
    if (view.bitCount != 4 && view.bitCount != 8 && view.bitCount != 24) {
        LastImgError = kErrHeaderBits;
        return nullptr;
    }
    if (!view.RowsFit()) return nullptr;

    const int bitCount = view.bitCount;
    const bool cubic = mode != 0;
    const std::uint16_t sw = static_cast<std::uint16_t>(view.width);
    const std::uint16_t sh = static_cast<std::uint16_t>(view.height);
    const std::uint16_t nw = static_cast<std::uint16_t>(newWidth);
    const std::uint16_t nh = static_cast<std::uint16_t>(newHeight);
    // The tap walk indexes its table by a 16-bit byte offset: a wider result
    // would never end it.  A mode with a zero low half would build linear
    // taps for the cubic loop; both are refused.
    if (nw >= (cubic ? kCubicWidthLimit : kLinearWidthLimit) || (cubic && (mode & 0xFFFF) == 0)) {
        LastImgError = kErrParameter;
        return nullptr;
    }

    const std::uint64_t newStride = DibRowBytes(nw, bitCount);
    const std::uint64_t tableBytes = view.paletteBytes;
    const std::uint32_t colors = view.colors;
    WorkBlock result, logPalette, planes, output, lines, product, taps;
    if (!result.Make(kInfoHeaderSize + tableBytes + newStride * nh)) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    unsigned char* out = result.data();
    std::memcpy(out, view.header, static_cast<size_t>(kInfoHeaderSize + tableBytes));
    BITMAPINFOHEADER h;
    std::memcpy(&h, out, sizeof(h));
    h.biWidth = nw;
    h.biHeight = nh;
    h.biSizeImage = static_cast<DWORD>(newStride * nh);
    std::memcpy(out, &h, sizeof(h));

    HPALETTE palette = nullptr;
    if (bitCount < 24) {
        if (!logPalette.Make(LogPaletteBytes(colors))) {
            LastImgError = kErrMemory;
            return nullptr;
        }
        unsigned char* lp = logPalette.data();
        FillLogPalette(lp, view.palette, 4 * static_cast<std::uint64_t>(colors), colors);
        palette = plat::CreatePalette(lp);  // a failure shows only as index answers of 255
    }
    // The palette object serves this call alone and goes with it.
    struct PaletteHolder {
        HPALETTE p;
        ~PaletteHolder() {
            if (p) plat::DeletePalette(p);
        }
    } paletteHolder{palette};

    // Planes: pixel 0 at byte 1 of each, behind one guard byte, with three
    // guard bytes after the last pixel.  The output planes carry one more,
    // zero byte, read when a 4-bit row of odd width looks up its padding.
    const std::uint64_t planeBytes = static_cast<std::uint64_t>(sw) + 4;
    const std::uint64_t lineCount = cubic ? 4 : 2;
    if (!planes.Make(3 * planeBytes) || !output.Make(3 * static_cast<std::uint64_t>(nw) + (nw ? 1 : 0)) ||
        !lines.Make(3 * lineCount * nw) || !product.Make(kScaleProductTableBytes) ||
        !taps.Make((cubic ? kCubicTapBytes : kLinearTapBytes) * nw)) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    BuildScaleProductTable(product.data());
    BuildTapTable(sw, nw, taps.data(), static_cast<unsigned>(mode));

    TableColors tableColors;
    if (bitCount < 24) ReadTableColors(view.header, view.blockBytes, &tableColors);
    unsigned char* red = planes.data() + 1;
    unsigned char* green = red + planeBytes;
    unsigned char* blue = green + planeBytes;
    unsigned char* outRed = output.data();
    unsigned char* outGreen = outRed + nw;
    unsigned char* outBlue = outGreen + nw;
    unsigned char* outBits = out + kInfoHeaderSize + tableBytes;
    // A source of no rows still asks for row 0: it reads as zeros.
    unsigned char zeroRow[3 * 4] = {};
    const std::uint64_t rowsInBlock = view.stride ? view.pixelBytes / view.stride : 0;
    const unsigned char* productTable = product.data();
    const unsigned char* tapTable = taps.data();
    auto line = [&](unsigned colour, unsigned k) { return lines.data() + (colour * lineCount + k) * nw; };
    auto load = [&](std::uint16_t row, unsigned k) {
        const unsigned char* src = row < rowsInBlock ? view.Row(row) : zeroRow;
        UnpackDibRow(src, row < rowsInBlock ? sw : 0, bitCount, tableColors, red, green, blue);
        const unsigned char* const planeOf[3] = {red, green, blue};
        unsigned char* const lineOf[3] = {line(0, k), line(1, k), line(2, k)};
        if (cubic)
            ResampleRowCubic(productTable, tapTable, planeOf, lineOf, 3, nw);
        else
            ResampleRowLinear(productTable, tapTable, planeOf, lineOf, 3, nw,
                              static_cast<std::uint32_t>(planeBytes - 1));
    };
    auto copy = [&](unsigned from, unsigned to) {
        for (unsigned c = 0; c < 3; ++c) PlaneRowCopy(line(c, to), line(c, from), nw);
    };
    std::unique_ptr<NearestMemo> nearest;
    if (bitCount < 24) {
        nearest.reset(new (std::nothrow) NearestMemo(palette));
        if (!nearest) {
            LastImgError = kErrMemory;
            return nullptr;
        }
    }
    auto pack = [&](std::uint32_t y) {
        PackDibRow(outRed, outGreen, outBlue, bitCount, outBits + static_cast<size_t>(y) * newStride, nw,
                   nearest.get());
    };
    if (cubic) {
        auto fill = [&](unsigned k) {
            for (unsigned c = 0; c < 3; ++c) PlaneRowFill(line(c, k), nw, 0);
        };
        WalkRowsCubic(sh, nh, load, copy, fill, [&](std::uint32_t y, CubicWeights w) {
            unsigned char* outPlane[3] = {outRed, outGreen, outBlue};
            for (unsigned c = 0; c < 3; ++c)
                BlendRowsCubic(productTable, line(c, 0), outPlane[c], nw, w.w0, w.w1, w.w2, w.w3);
            pack(y);
        });
    } else {
        WalkRowsLinear(sh, nh, load, copy, [&](std::uint32_t y, std::uint16_t weight) {
            unsigned char* outPlane[3] = {outRed, outGreen, outBlue};
            for (unsigned c = 0; c < 3; ++c)
                BlendRowsLinear(productTable, line(c, 0), line(c, 1), outPlane[c], nw, weight);
            pack(y);
        });
    }
    return result.Hand(false);
}

}  // namespace prism
