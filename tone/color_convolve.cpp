// The square filters for 24-bit images: one brightness plane is filtered,
// and the change in brightness is added to blue, green and red alike, so a
// pixel's hue stays and the cost is that of a single plane.
#include "platform/export.h"
#include "tone/convolve.h"
#include "tone/tone_internal.h"
#include "tone/tone_simd.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace tone {
namespace {

// Mode 1: (8 blue + 15 green + 3 red) / 26, the reverse weighting of the
// grey conversion; any other mode: the plain mean.
void Brightness(const unsigned char* src, int mode, std::int64_t width, std::int16_t* out) {
    std::int64_t x = 0;
#if PRISM_X86
    if (Simd().ssse3) x = BrightnessRow24Ssse3(src, out, static_cast<std::uint32_t>(width), mode == 1);
    src += 3 * x;
#endif
    if (mode == 1) {
        const unsigned char* q = DivideBy26Table();
        for (; x < width; ++x, src += 3) out[x] = q[8 * src[0] + 15 * src[1] + 3 * src[2]];
    } else {
        const unsigned char* q = DivideBy3Table();
        for (; x < width; ++x, src += 3) out[x] = q[src[0] + src[1] + src[2]];
    }
}

// The brightness of the row goes into the second half of the ring row of
// role size/2: that row will be output centred on this source row.
std::int16_t* BrightnessRow(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring,
                            int size) {
    std::int16_t* b = ring[size / 2] + width;
    Brightness(src, mode, width, b);
    return b;
}

}  // namespace

void ColorRowMatrix(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                    const int (*cells)[7], const EdgePlan& edges) {
    if (size != 3 && size != 5 && size != 7) return;
    const std::int16_t* b = BrightnessRow(src, mode, width, ring, size);
    if (size == 3) GatherMatrix<3>(cells, b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 5) GatherMatrix<5>(cells, b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 7) GatherMatrix<7>(cells, b, edges.interiorBegin, edges.interiorEnd, ring);
    GatherEdges(edges, b, ring, size);
}

void ColorRowBox(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                 const EdgePlan& edges) {
    if (size != 3 && size != 5 && size != 7) return;
    const std::int16_t* b = BrightnessRow(src, mode, width, ring, size);
    if (size == 3) GatherFixed<Box3>(b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 5) GatherFixed<Box5>(b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 7) GatherFixed<Box7>(b, edges.interiorBegin, edges.interiorEnd, ring);
    GatherEdges(edges, b, ring, size);
}

void ColorRowBlur(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                  const EdgePlan& edges) {
    if (size != 3 && size != 5) return;
    const std::int16_t* b = BrightnessRow(src, mode, width, ring, size);
    if (size == 3) GatherFixed<Blur3>(b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 5) GatherFixed<Blur5>(b, edges.interiorBegin, edges.interiorEnd, ring);
    GatherEdges(edges, b, ring, size);
}

void ColorRowCross(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                   const EdgePlan& edges) {
    if (size != 3 && size != 5) return;
    const std::int16_t* b = BrightnessRow(src, mode, width, ring, size);
    if (size == 3) GatherFixed<Cross3>(b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 5) GatherFixed<Cross5>(b, edges.interiorBegin, edges.interiorEnd, ring);
    GatherEdges(edges, b, ring, size);
}

void ColorRowSharp(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                   const EdgePlan& edges) {
    if (size != 3 && size != 5) return;
    const std::int16_t* b = BrightnessRow(src, mode, width, ring, size);
    if (size == 3) GatherFixed<Sharp3>(b, edges.interiorBegin, edges.interiorEnd, ring);
    if (size == 5) GatherFixed<Sharp5>(b, edges.interiorBegin, edges.interiorEnd, ring);
    GatherEdges(edges, b, ring, size);
}

}  // namespace tone
}  // namespace prism

using namespace prism;
using namespace prism::tone;

namespace {

// A matrix of 16-bit values from a kernel file: n * n values and a divisor,
// little-endian, no header.
bool LoadKernel16(const char* name, int size, int* values) {
    unsigned char bytes[(7 * 7 + 1) * 2];
    const long count = (size * size + 1) * 2;
    if (!ReadKernelFile(name, bytes, count)) return false;
    for (int k = 0; k < size * size + 1; ++k)
        values[k] = static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[2 * k] | bytes[2 * k + 1] << 8));
    return true;
}

}  // namespace

// Filters a 24-bit image through its brightness: the kinds and sizes of
// Convolve, matrices and kernel files of 16-bit values, brightness mode 1
// weighted (8 blue + 15 green + 3 red) / 26, any other the plain mean.  In
// place the result is the image handle, with `copy` a new DIB; 0 on failure
// with the code in *error, which is cleared first.
PRISM_API HDIB WINAPI ColorConvolution(HDIB dib, BOOL copy, int brightnessMode, WORD kind, short size,
                                       LPCSTR kernelFile, const short* matrix, int* error) {
    SetWord(error, 0);
    if (!dib) {
        SetWord(error, kErrParameter);
        return nullptr;
    }
    BlockLock image(dib);
    if (!image) {
        SetWord(error, kErrLock);
        return nullptr;
    }
    BITMAPINFOHEADER h = HeaderOf(image);
    const int n = size;
    int code = 0;
    if (h.biSize != kInfoHeaderSize) code = kErrParameter;
    else if (h.biCompression != 0) code = kErrCompressed;
    else if (h.biBitCount != 24) code = kErrBitsPerPixel;
    else if ((h.biWidth & 0xFFFF) == 0 || (h.biHeight & 0xFFFF) == 0) code = kErrDibSize;
    else code = CheckFilterArguments(kind, n, kernelFile, matrix);
    // Sizes are 16-bit here; a negative one is refused rather than run as
    // an empty pass.
    const std::int64_t W = static_cast<std::int16_t>(h.biWidth & 0xFFFF);
    const std::int64_t H = static_cast<std::int16_t>(h.biHeight & 0xFFFF);
    const std::uint64_t stride = static_cast<std::uint16_t>(DibRowBytes(h.biWidth, 24));
    // The rows begin straight behind the header, whatever biClrUsed says.
    if (!code && (W < 0 || H < 0 ||
                  !RowsInside(kInfoHeaderSize, H, stride, static_cast<std::uint64_t>(W) * 3, image.size())))
        code = kErrDibSize;
    Filter f;
    if (!code) {
        if (kind == kKindMatrix || kind == kKindFile) {
            int values[7 * 7 + 1];
            f.kind = kind;
            if (kind == kKindMatrix)
                for (int k = 0; k < n * n + 1; ++k) values[k] = matrix[k];
            if ((kind == kKindFile && !LoadKernel16(kernelFile, n, values)) || !TakeMatrix(values, n, &f))
                code = kErrParameter;
        } else {
            BuiltInFilter(kind, n, &f);
        }
    }
    if (code) {
        SetWord(error, code);
        return nullptr;
    }
    NegateIfNeeded(&f);

    // n rows of 2W 16-bit values: accumulators, then brightness.
    const std::uint64_t ringBytes = 4 * static_cast<std::uint64_t>(n) * static_cast<std::uint64_t>(W);
    OwnedBlock ringBlock(AllocTwice(ringBytes));
    if (!ringBlock) {
        SetWord(error, kErrMemory);
        return nullptr;
    }
    BlockLock ringLock(ringBlock.get());
    if (!ringLock) {
        SetWord(error, kErrLock);
        return nullptr;
    }
    HDIB result = dib;
    HGLOBAL newBlock = nullptr;
    if (copy) {
        std::uint64_t imageBytes = h.biSizeImage ? h.biSizeImage : stride * static_cast<std::uint64_t>(H);
        if (!RowsInside(0, H, stride, static_cast<std::uint64_t>(W) * 3, imageBytes)) {
            SetWord(error, kErrDibSize);
            return nullptr;
        }
        newBlock = AllocTwice(imageBytes + kInfoHeaderSize);
        if (!newBlock) {
            SetWord(error, kErrMemory);
            return nullptr;
        }
        result = newBlock;
    }
    OwnedBlock made(newBlock);
    BlockLock out(newBlock);
    if (copy) {
        if (!out) {
            SetWord(error, kErrLock);
            return nullptr;
        }
        std::memcpy(out.get(), image.get(), kInfoHeaderSize);
    }
    const unsigned char* srcBits = image.bytes() + kInfoHeaderSize;
    unsigned char* dstBits = (copy ? out.bytes() : image.bytes()) + kInfoHeaderSize;

    const int half = n / 2;
    const EdgePlan plan = PlanEdges(f, W, true);
    const QuotientTable divide(f.divisor);
#if PRISM_X86
    LaneDivisor lanes;
    const bool vector = Simd().ssse3 && MakeLaneDivisor(f.divisor, &lanes);
#endif
    std::int16_t* block = static_cast<std::int16_t*>(ringLock.get());
    std::int16_t* roles[7] = {};
    for (std::int64_t y = -half; y < H + half; ++y) {
        RingStep(roles, block, 2 * W, n, y + half);
        const std::int64_t row = std::min<std::int64_t>(std::max<std::int64_t>(y, 0), H - 1);
        const unsigned char* s = srcBits + static_cast<size_t>(row) * stride;
        switch (f.kind) {
            case kKindMatrix:
            case kKindFile: ColorRowMatrix(s, brightnessMode, W, roles, n, f.cells, plan); break;
            case kKindBox: ColorRowBox(s, brightnessMode, W, roles, n, plan); break;
            case kKindBlur: ColorRowBlur(s, brightnessMode, W, roles, n, plan); break;
            case kKindCross: ColorRowCross(s, brightnessMode, W, roles, n, plan); break;
            default: ColorRowSharp(s, brightnessMode, W, roles, n, plan); break;
        }
        if (y < half) continue;
        // No clamp: divide the 16-bit accumulator, then add the change of
        // brightness to each of the three bytes, each limited alone.
        const std::int16_t* acc = roles[0];
        const std::int16_t* bright = roles[0] + W;
        const unsigned char* from = srcBits + static_cast<size_t>(y - half) * stride;
        unsigned char* to = dstBits + static_cast<size_t>(y - half) * stride;
        std::int64_t x = 0;
#if PRISM_X86
        if (vector) x = ColorOutputRowSsse3(acc, bright, from, to, static_cast<std::uint32_t>(W), lanes);
#endif
        for (; x < W; ++x) {
            const std::int16_t v = static_cast<std::int16_t>(divide(acc[x]));
            const std::int16_t d = static_cast<std::int16_t>(v - bright[x]);
            for (int b = 0; b < 3; ++b) {
                int c = from[3 * x + b] + d;
                to[3 * x + b] = static_cast<unsigned char>(c < 0 ? 0 : (c > 255 ? 255 : c));
            }
        }
    }
    made.Release();
    return result;
}
