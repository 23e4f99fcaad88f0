// ScaleGrayDIB: a rectangle of a grey-palette image enlarged by whole
// factors, interpolated in grey levels on the scaler's row kernels, and
// mapped back to palette indices through a fixed table.
#include "core/dib.h"
#include "geometry/scale_kernels.h"
#include "platform/export.h"

#include <cstring>

namespace prism {

namespace {

// Widest results whose signed 16-bit tap walk ends.
constexpr std::int32_t kGreyLinearWidthLimit = 8192;
constexpr std::int32_t kGreyCubicWidthLimit = 5462;
// Pixel 0 of the plane and of the packed row stands at this byte.
constexpr std::size_t kPlaneLead = 6;

// The source block as bytes: reads outside it see 0.
struct SourceBytes {
    const unsigned char* data;
    std::uint64_t size;
    unsigned char At(std::int64_t offset) const {
        return offset >= 0 && static_cast<std::uint64_t>(offset) < size ? data[offset] : 0;
    }
    void Copy(unsigned char* to, std::int64_t offset, std::int64_t count) const {
        if (count <= 0) return;
        if (offset >= 0 && static_cast<std::uint64_t>(offset + count) <= size) {
            std::memcpy(to, data + offset, static_cast<size_t>(count));
            return;
        }
        for (std::int64_t i = 0; i < count; ++i) to[i] = At(offset + i);
    }
};

// Copies count bytes of the row at `offset` and sets the byte before the
// target to the first of them and the three behind the last to the last.
void FetchGreyRow(const SourceBytes& source, std::int64_t offset, std::int16_t count, unsigned char* target) {
    if (count <= 0) return;
    source.Copy(target, offset, count);
    target[-1] = target[0];
    target[count] = target[count + 1] = target[count + 2] = target[count - 1];
}

void UnpackNibbleRow(const unsigned char* packed, unsigned char* target, std::int16_t count) {
    for (int k = 0; k < count; ++k) {
        target[2 * k] = packed[k] >> 4;
        target[2 * k + 1] = packed[k] & 0x0Fu;
    }
}

// Each byte b becomes the first byte (blue) of colour-table entry b; the
// 256 answers are read once per call into `greyOf`.
void PaletteToGreyRow(unsigned char* row, std::int32_t count, const unsigned char* greyOf) {
    for (std::int32_t i = 0; i < count; ++i) row[i] = greyOf[row[i]];
}

void GreyToIndexRow(unsigned char* row, std::int32_t count, const unsigned char* table) {
    for (std::int32_t i = 0; i < count; ++i) row[i] = table[row[i]];
}

// Target byte k = (source 2k shifted up by 4, in 8 bits) | source 2k + 1,
// unmasked.  Target and source may be the same row.
void PackNibbleRow(const unsigned char* source, unsigned char* target, std::int32_t count) {
    for (std::int32_t k = 0; k < count; ++k)
        target[k] = static_cast<unsigned char>(((source[2 * k] << 4) & 0xF0) | source[2 * k + 1]);
}

void GreyRowCopy(const unsigned char* source, unsigned char* target, std::int32_t count) {
    if (count > 0) std::memcpy(target, source, static_cast<size_t>(count));
}

// The index of the nearest level for every grey value, for a palette rising
// from black to white.  B(k), the first byte of entry k, is read one entry
// ahead of the index reported, as this export has always done.
void BuildGreyIndexTable(unsigned char* table, int colors, const SourceBytes& source, std::int64_t tableOffset) {
    auto B = [&](int k) { return static_cast<int>(source.At(tableOffset + 4 * static_cast<std::int64_t>(k))); };
    for (int v = 0; v < 256; ++v) {
        int i = 0, previous = 0, current = B(1);
        while (current < v && i < colors - 1) {
            ++i;
            previous = current;
            current = B(i + 1);
        }
        if (i == colors - 1 || current == v)
            table[v] = static_cast<unsigned char>(i);
        else if (v - previous <= current - v)
            table[v] = static_cast<unsigned char>(i - 1);  // 8 bits: i = 0 gives 255
        else
            table[v] = static_cast<unsigned char>(i);
    }
}

}  // namespace

// ScaleGrayDIB(dib, x0, y0, w, h, zx, zy, mode): the rectangle of w by h
// pixels at byte x0 of stored row y0, enlarged zx times across and zy
// times down; all but dib are taken as signed 16-bit values.  Mode 0 is
// linear, 1 cubic.  Depths 4 and 8 with a grey palette are the meaningful
// ones; 24 is accepted and walked as bytes.  The result keeps the depth and
// colour table and is returned still locked.  Failure: 0, LastImgError
// untouched; a depth other than 4, 8 or 24 leaves the source locked.
// Sizes whose product leaves 16 bits, results too wide for the tap walk,
// negative sizes and other modes are refused; source bytes outside the
// block read as 0.
PRISM_API HDIB WINAPI ScaleGrayDIB(HDIB dib, int x0Arg, int y0Arg, int wArg, int hArg, int zxArg, int zyArg,
                                   int modeArg) {
    if (!dib) return nullptr;
    BlockLock source(dib);
    if (!source) return nullptr;
    const std::int16_t x0 = static_cast<std::int16_t>(x0Arg), y0 = static_cast<std::int16_t>(y0Arg);
    const std::int16_t w = static_cast<std::int16_t>(wArg), h = static_cast<std::int16_t>(hArg);
    const std::int16_t zx = static_cast<std::int16_t>(zxArg), zy = static_cast<std::int16_t>(zyArg);
    const std::int16_t mode = static_cast<std::int16_t>(modeArg);

    const SourceBytes bytes{source.bytes(), source.size()};
    BITMAPINFOHEADER head;
    CopyHeaderBytes(source.get(), bytes.size, &head);
    if (bytes.size < kInfoHeaderSize || head.biSize != kInfoHeaderSize || head.biCompression != 0) return nullptr;
    const int bitCount = head.biBitCount;
    if (bitCount != 4 && bitCount != 8 && bitCount != 24) {
        source.Release();  // this path alone leaves the source locked
        return nullptr;
    }
    const std::int32_t wide = static_cast<std::int32_t>(w) * zx;
    const std::int32_t high = static_cast<std::int32_t>(h) * zy;
    if (w < 0 || h < 0 || wide <= 0 || high < 0 || wide > 32767 || high > 32767) return nullptr;
    if (mode != 0 && mode != 1) return nullptr;
    if (wide >= (mode ? kGreyCubicWidthLimit : kGreyLinearWidthLimit)) return nullptr;
    if (head.biWidth < 0) return nullptr;

    const std::uint16_t nw = static_cast<std::uint16_t>(wide), nh = static_cast<std::uint16_t>(high);
    const std::int64_t tableBytes = bitCount == 4 ? 64 : bitCount == 8 ? 1024 : 0;
    const int colors = bitCount == 4 ? 16 : bitCount == 8 ? 256 : 0;
    const int strideBits = bitCount == 4 ? 4 : 8;
    const std::int64_t sourceStride = (static_cast<std::int64_t>(head.biWidth) * strideBits + 31) / 32 * 4;
    const std::int64_t newStride = (static_cast<std::int64_t>(nw) * strideBits + 31) / 32 * 4;
    const std::int64_t sizeImage = (bitCount == 24 ? 3 : 1) * newStride * nh;
    const std::int64_t L = bitCount == 4 ? 2 * static_cast<std::int64_t>(nw) : newStride;
    const std::int64_t F = bitCount == 4 ? 2 * static_cast<std::int64_t>(w) : w;

    WorkBlock result, lines, product, greyIndex, taps, plane, packed, output;
    if (!result.Make(static_cast<std::uint64_t>(sizeImage + tableBytes + kInfoHeaderSize))) return nullptr;
    unsigned char* out = result.data();
    bytes.Copy(out, 0, kInfoHeaderSize + tableBytes);
    BITMAPINFOHEADER outHead;
    std::memcpy(&outHead, out, sizeof(outHead));
    outHead.biWidth = nw;
    outHead.biHeight = nh;
    outHead.biSizeImage = static_cast<DWORD>(sizeImage);
    std::memcpy(out, &outHead, sizeof(outHead));

    const std::uint64_t lineCount = mode ? 4 : 2;
    // The packing at 4 bits reads two bytes per target byte of the padded
    // stride, which can reach past the L bytes of the output row: those
    // read as 0.
    const std::int64_t outputBytes = bitCount == 4 && 2 * newStride > L ? 2 * newStride : L;
    if (!lines.Make(lineCount * L) || !product.Make(kScaleProductTableBytes) || !greyIndex.Make(256) ||
        !taps.Make((mode ? kCubicTapBytes : kLinearTapBytes) * L) || !plane.Make(F + 42) ||
        (bitCount == 4 && !packed.Make(F + 42)) || !output.Make(outputBytes))
        return nullptr;

    const std::int64_t colourTable = kInfoHeaderSize;  // at 24 bits: the pixels
    BuildScaleProductTable(product.data());
    BuildGreyIndexTable(greyIndex.data(), colors, bytes, colourTable);
    BuildTapTable(static_cast<std::uint16_t>(w), nw, taps.data(), static_cast<unsigned>(mode));
    unsigned char greyOf[256];
    for (int b = 0; b < 256; ++b) greyOf[b] = bytes.At(colourTable + 4 * b);

    const std::int64_t firstRow = kInfoHeaderSize + tableBytes + static_cast<std::int64_t>(y0) * sourceStride + x0;
    const unsigned char* productTable = product.data();
    const unsigned char* tapTable = taps.data();
    unsigned char* planePixels = plane.data() + kPlaneLead;
    const std::uint16_t lineBytes = static_cast<std::uint16_t>(L);
    auto line = [&](unsigned k) { return lines.data() + k * L; };
    auto load = [&](std::uint16_t row, unsigned k) {
        const std::int64_t offset = firstRow + static_cast<std::int64_t>(row) * sourceStride;
        if (bitCount == 4) {
            // w bytes give 2w pixels; the taps use the first w.  The guards
            // stay in the packed row and the plane's own stay 0.
            FetchGreyRow(bytes, offset, w, packed.data() + kPlaneLead);
            UnpackNibbleRow(packed.data() + kPlaneLead, planePixels, w);
        } else {
            FetchGreyRow(bytes, offset, w, planePixels);
        }
        PaletteToGreyRow(planePixels, static_cast<std::int32_t>(F), greyOf);
        const unsigned char* const planes[1] = {planePixels};
        unsigned char* const lines[1] = {line(k)};
        if (mode)
            ResampleRowCubic(productTable, tapTable, planes, lines, 1, nw);
        else
            ResampleRowLinear(productTable, tapTable, planes, lines, 1, nw,
                              static_cast<std::uint32_t>(F + 42 - kPlaneLead));
    };
    auto copy = [&](unsigned from, unsigned to) { PlaneRowCopy(line(to), line(from), lineBytes); };
    unsigned char* outRow = output.data();
    unsigned char* outBits = out + kInfoHeaderSize + tableBytes;
    auto finish = [&](std::uint32_t y) {
        GreyToIndexRow(outRow, static_cast<std::int32_t>(L), greyIndex.data());
        if (bitCount == 4) {
            PackNibbleRow(outRow, outRow, static_cast<std::int32_t>(newStride));
            // Bytes past the L of the output row are not part of it: what the
            // packing put there is dropped, and they read as 0.
            if (outputBytes > L) std::memset(outRow + L, 0, static_cast<size_t>(outputBytes - L));
        }
        GreyRowCopy(outRow, outBits + static_cast<size_t>(y) * static_cast<size_t>(newStride),
                    static_cast<std::int32_t>(newStride));
    };
    if (mode) {
        auto fill = [&](unsigned k) { PlaneRowFill(line(k), lineBytes, 0); };
        WalkRowsCubic(static_cast<std::uint16_t>(h), nh, load, copy, fill, [&](std::uint32_t y, CubicWeights cw) {
            BlendRowsCubic(productTable, line(0), outRow, lineBytes, cw.w0, cw.w1, cw.w2, cw.w3);
            finish(y);
        });
    } else {
        WalkRowsLinear(static_cast<std::uint16_t>(h), nh, load, copy, [&](std::uint32_t y, std::uint16_t weight) {
            BlendRowsLinear(productTable, line(0), line(1), outRow, lineBytes, weight);
            finish(y);
        });
    }
    source.Unlock();
    return result.Hand(true);  // returned still locked, as hosts of this export expect
}

}  // namespace prism
