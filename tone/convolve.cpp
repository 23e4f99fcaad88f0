// Square filters over 8-bit images in one pass: each source row is read
// once and scattered into a ring of accumulator rows, one per kernel row,
// and a finished row falls out of the ring's oldest end.
#include "platform/export.h"
#include "tone/convolve.h"
#include "tone/tone_internal.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace tone {

void ConvolveRowMatrix(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                       const int (*cells)[7], std::int64_t divisor, const EdgePlan& edges) {
    (void)width;
    (void)divisor;  // the divisor is applied when a row leaves the ring
    switch (size) {
        case 3: GatherMatrix<3>(cells, src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 5: GatherMatrix<5>(cells, src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 7: GatherMatrix<7>(cells, src, edges.interiorBegin, edges.interiorEnd, ring); break;
        default: return;
    }
    GatherEdges(edges, src, ring, size);
}

void ConvolveRowBox(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                    const EdgePlan& edges) {
    (void)width;
    switch (size) {
        case 3: GatherFixed<Box3>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 5: GatherFixed<Box5>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 7: GatherFixed<Box7>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        default: return;
    }
    GatherEdges(edges, src, ring, size);
}

void ConvolveRowBlur(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                     const EdgePlan& edges) {
    (void)width;
    switch (size) {
        case 3: GatherFixed<Blur3>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 5: GatherFixed<Blur5>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        default: return;
    }
    GatherEdges(edges, src, ring, size);
}

void ConvolveRowCross(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                      const EdgePlan& edges) {
    (void)width;
    switch (size) {
        case 3: GatherFixed<Cross3>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 5: GatherFixed<Cross5>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        default: return;
    }
    GatherEdges(edges, src, ring, size);
}

void ConvolveRowSharp(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                      const EdgePlan& edges) {
    (void)width;
    switch (size) {
        case 3: GatherFixed<Sharp3>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        case 5: GatherFixed<Sharp5>(src, edges.interiorBegin, edges.interiorEnd, ring); break;
        default: return;
    }
    GatherEdges(edges, src, ring, size);
}

int CheckFilterArguments(int kind, int size, const char* kernelFile, const void* matrix) {
    if (kind < 1 || kind > 6) return kErrParameter;
    if (kind == kKindFile && !kernelFile) return kErrParameter;
    if (kind == kKindMatrix && !matrix) return kErrParameter;
    if (!FilterSizeAllowed(kind, size)) return kErrParameter;
    return 0;
}

void NegateIfNeeded(Filter* f) {
    if (f->divisor >= 0) return;
    f->divisor = -f->divisor;
    for (auto& row : f->cells)
        for (int& c : row) c = -c;
}

QuotientTable::QuotientTable(std::int64_t divisor) : divisor_(divisor), shift_(DivisorShift(divisor)) {
    if (divisor_ > 1 && !shift_)
        for (std::int32_t v = 0; v < kSpan; ++v) q_[v] = static_cast<std::int32_t>(v / divisor_);
}

}  // namespace tone
}  // namespace prism

using namespace prism;
using namespace prism::tone;

namespace {

// A matrix of 32-bit values from a kernel file: n * n values and a divisor,
// little-endian, no header.
bool LoadKernel32(const char* name, int size, int* values) {
    unsigned char bytes[(7 * 7 + 1) * 4];
    const long count = (size * size + 1) * 4;
    if (!ReadKernelFile(name, bytes, count)) return false;
    for (int k = 0; k < size * size + 1; ++k)
        values[k] = static_cast<std::int32_t>(std::uint32_t(bytes[4 * k]) | std::uint32_t(bytes[4 * k + 1]) << 8 |
                                              std::uint32_t(bytes[4 * k + 2]) << 16 |
                                              std::uint32_t(bytes[4 * k + 3]) << 24);
    return true;
}

}  // namespace

// Filters an 8-bit image with a square kernel (kinds: 1 caller's matrix,
// 2 kernel file, 3 box mean, 4 weighted blur, 5 cross sharpen, 6 full
// sharpen; sizes 3, 5, 7) and leaves a grey image.  In place the result is
// the image handle, with `copy` a new DIB; 0 on failure with the code in
// *error, which is cleared first.
PRISM_API HDIB WINAPI Convolve(HDIB dib, BOOL copy, int kind, int size, LPCSTR kernelFile, const int* matrix,
                               int* error) {
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
    int code = CheckGreyHeader(h);
    if (!code) code = CheckFilterArguments(kind, size, kernelFile, matrix);
    const std::int64_t W = h.biWidth, H = h.biHeight;
    const std::uint64_t colors = h.biClrUsed ? h.biClrUsed : 256;
    const std::uint64_t offset = kInfoHeaderSize + colors * 4;
    const std::uint64_t stride = DibRowBytes(W, 8);
    if (!code && (W < 0 || H < 0 || !RowsInside(offset, H, stride, static_cast<std::uint64_t>(W), image.size())))
        code = kErrDibSize;  // a block too small for its rows
    Filter f;
    if (!code) {
        if (kind == kKindMatrix || kind == kKindFile) {
            int values[7 * 7 + 1];
            f.kind = kind;
            if (kind == kKindMatrix) std::memcpy(values, matrix, sizeof(int) * (size * size + 1));
            if ((kind == kKindFile && !LoadKernel32(kernelFile, size, values)) || !TakeMatrix(values, size, &f))
                code = kErrParameter;
        } else {
            BuiltInFilter(kind, size, &f);
        }
    }
    if (code) {
        SetWord(error, code);
        return nullptr;
    }
    NegateIfNeeded(&f);

    // n accumulator rows of W 32-bit values: memory grows with the width and
    // the kernel, never with the height.
    const std::uint64_t ringBytes = 4 * static_cast<std::uint64_t>(size) * static_cast<std::uint64_t>(W);
    OwnedBlock ringBlock(AllocBlock(ringBytes));
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
        if (imageBytes < stride * static_cast<std::uint64_t>(H)) {
            SetWord(error, kErrDibSize);
            return nullptr;
        }
        newBlock = AllocBlock(imageBytes + offset);
        if (!newBlock) {
            SetWord(error, kErrMemory);
            return nullptr;
        }
        result = newBlock;
    }
    OwnedBlock made(newBlock);
    BlockLock out(copy ? result : nullptr);
    if (copy) {
        if (!out) {
            SetWord(error, kErrLock);
            return nullptr;
        }
        std::memcpy(out.get(), image.get(), kInfoHeaderSize);
    }
    // A side table made from the colour table in earlier versions: it has no
    // effect on the result, but its allocation can still fail.
    OwnedBlock side(AllocBlock(512));
    BlockLock sideLock(side.get());
    if (!sideLock) {
        SetWord(error, side ? kErrLock : kErrMemory);
        return nullptr;
    }

    unsigned char* dst = copy ? out.bytes() : image.bytes();
    const std::uint64_t dstBytes = copy ? out.size() : image.size();
    // Always 256 grey entries, whatever biClrUsed says: with a shorter table
    // they cover the first pixel bytes, in place before those are read.
    WriteGreyRamp(dst + kInfoHeaderSize, dst + dstBytes);
    const unsigned char* srcBits = image.bytes() + offset;
    unsigned char* dstBits = dst + offset;

    const int half = size / 2;
    const EdgePlan plan = PlanEdges(f, W, false);
    const QuotientTable divide(f.divisor);
    std::int32_t* block = static_cast<std::int32_t*>(ringLock.get());
    std::int32_t* roles[7] = {};
    for (std::int64_t y = -half; y < H + half; ++y) {
        RingStep(roles, block, W, size, y + half);
        // Rows repeat at both ends, as columns do.
        const std::int64_t row = std::min<std::int64_t>(std::max<std::int64_t>(y, 0), H - 1);
        const unsigned char* s = srcBits + static_cast<size_t>(row) * stride;
        switch (f.kind) {
            case kKindMatrix:
            case kKindFile: ConvolveRowMatrix(s, W, roles, size, f.cells, f.divisor, plan); break;
            case kKindBox: ConvolveRowBox(s, W, roles, size, plan); break;
            case kKindBlur: ConvolveRowBlur(s, W, roles, size, plan); break;
            case kKindCross: ConvolveRowCross(s, W, roles, size, plan); break;
            default: ConvolveRowSharp(s, W, roles, size, plan); break;
        }
        if (y < half) continue;
        // Clamp first, then divide; the low byte is stored.
        unsigned char* d = dstBits + static_cast<size_t>(y - half) * stride;
        const std::int32_t* acc = roles[0];
        if (f.clamp) {
            for (std::int64_t x = 0; x < W; ++x)
                d[x] = static_cast<unsigned char>(divide(std::min<std::int32_t>(std::max<std::int32_t>(acc[x], 0), 255)));
        } else {
            for (std::int64_t x = 0; x < W; ++x) d[x] = static_cast<unsigned char>(divide(acc[x]));
        }
    }
    made.Release();
    return result;
}
