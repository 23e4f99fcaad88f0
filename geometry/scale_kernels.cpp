// The product table, tap tables and row kernels of the scalers.  The pixel
// loops use table look-ups, additions and clamps only.
#include "geometry/scale_kernels.h"

#include "core/dib.h"
#include "geometry/scale_simd.h"

#include <cstring>

namespace prism {

void BuildScaleProductTable(unsigned char* table) {
    // (w * p + 128) / 255 by stepping: the numerator grows by w per p, and
    // quotient and remainder follow it without a multiplication.
    for (unsigned w = 0; w < 256; ++w) {
        unsigned q = 0, r = 128;
        unsigned char* row = table + w * 256;
        for (unsigned p = 0; p < 256; ++p) {
            row[p] = static_cast<unsigned char>(q);
            r += w;
            while (r >= 255) {
                r -= 255;
                ++q;
            }
        }
    }
}

namespace {
inline double OuterLobe(double x) { return x * ((x - 5) * x + 8) - 4; }
inline double InnerLobe(double x) { return x * (x - 2) * x + 1; }
inline unsigned char Weight(double v) { return static_cast<unsigned char>(static_cast<int>(255 * v)); }
}  // namespace

CubicWeights CubicWeightsAt(double f) {
    CubicWeights w;
    w.w0 = Weight(OuterLobe(1 + f));
    w.w1 = Weight(InnerLobe(f));
    w.w2 = Weight(InnerLobe(1 - f));
    w.w3 = Weight(OuterLobe(2 - f));
    return w;
}

void BuildTapTable(std::uint16_t sourceSize, std::uint16_t newSize, unsigned char* table, unsigned mode) {
    const bool linear = (mode & 0xFFFF) == 0;
    for (std::uint32_t i = 0; i < newSize; ++i) {
        const std::uint64_t t = static_cast<std::uint64_t>(i) * sourceSize;
        const std::uint64_t position = t / newSize;
        unsigned char* e = table + i * (linear ? kLinearTapBytes : kCubicTapBytes);
        e[0] = static_cast<unsigned char>(position);
        e[1] = static_cast<unsigned char>(position >> 8);
        if (linear) {
            // Left edges map onto each other: no half-pixel shift.
            const std::uint64_t r = t % newSize;
            const unsigned w = static_cast<unsigned>((r * 255 + newSize / 2) / newSize);
            e[2] = static_cast<unsigned char>(255 - w);
            e[3] = static_cast<unsigned char>(w);
        } else {
            const CubicWeights w = CubicWeightsAt(static_cast<double>(t) / newSize - static_cast<double>(position));
            e[2] = w.w0;
            e[3] = w.w1;
            e[4] = w.w2;
            e[5] = w.w3;
        }
    }
}

namespace {
inline unsigned char Clamp(int v) { return static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v); }
inline unsigned Position(const unsigned char* e) { return e[0] | static_cast<unsigned>(e[1]) << 8; }
}  // namespace

namespace {

// One column's value from the pixels p[-1..2] around its tap entry e.
struct LinearTap {
    static constexpr std::size_t kBytes = kLinearTapBytes;
    static unsigned char Value(const unsigned char* product, const unsigned char* e, const unsigned char* p) {
        const unsigned v = product[e[2] << 8 | p[0]] + product[e[3] << 8 | p[1]];
        return static_cast<unsigned char>(v > 255 ? 255 : v);
    }
};
struct CubicTap {
    static constexpr std::size_t kBytes = kCubicTapBytes;
    static unsigned char Value(const unsigned char* product, const unsigned char* e, const unsigned char* p) {
        return Clamp(product[e[3] << 8 | p[0]] + product[e[4] << 8 | p[1]] - product[e[2] << 8 | p[-1]] -
                     product[e[5] << 8 | p[2]]);
    }
};

// The plain loop: columns from `done` on, in every plane.
template <class Tap>
void ResampleColumns(const unsigned char* product, const unsigned char* taps, const unsigned char* const planes[],
                     unsigned char* const lines[], unsigned planeCount, std::uint16_t count, unsigned done) {
    for (unsigned c = 0; c < planeCount; ++c) {
        const unsigned char* e = taps + done * Tap::kBytes;
        for (unsigned i = done; i < count; ++i, e += Tap::kBytes)
            lines[c][i] = Tap::Value(product, e, planes[c] + Position(e));
    }
}

}  // namespace

void ResampleRowLinear(const unsigned char* product, const unsigned char* taps, const unsigned char* const planes[],
                       unsigned char* const lines[], unsigned planeCount, std::uint16_t count,
                       std::uint32_t readable) {
    unsigned done = 0;
#if PRISM_X86
    if (Simd().ssse3)
        done = ResampleRowLinearSsse3(taps, planes, lines, planeCount, count, readable);
    else if (Simd().sse2)
        done = ResampleRowLinearSse2(taps, planes, lines, planeCount, count);
#else
    (void)readable;
#endif
    ResampleColumns<LinearTap>(product, taps, planes, lines, planeCount, count, done);
}

void ResampleRowCubic(const unsigned char* product, const unsigned char* taps, const unsigned char* const planes[],
                      unsigned char* const lines[], unsigned planeCount, std::uint16_t count) {
    unsigned done = 0;
#if PRISM_X86
    if (Simd().sse2) done = ResampleRowCubicSse2(taps, planes, lines, planeCount, count);
#endif
    ResampleColumns<CubicTap>(product, taps, planes, lines, planeCount, count, done);
}

void BlendRowsLinear(const unsigned char* product, const unsigned char* line0, const unsigned char* line1,
                     unsigned char* out, std::uint16_t count, std::uint16_t weight) {
    // 255 - weight is the one's complement of the weight's low byte.
    if ((weight & 0xFFu) == 0) {
        // T[255][p] is p and T[0][p] is 0: the row is line 0 as it stands.
        std::memcpy(out, line0, count);
        return;
    }
    const unsigned char* t0 = product + ((~weight & 0xFFu) << 8);
    const unsigned char* t1 = product + ((weight & 0xFFu) << 8);
    unsigned i = 0;
#if PRISM_X86
    if (Simd().sse2) i = BlendRowsLinearSse2(line0, line1, out, count, ~weight & 0xFFu, weight & 0xFFu);
#endif
    for (; i < count; ++i) {
        const unsigned v = t0[line0[i]] + t1[line1[i]];
        out[i] = static_cast<unsigned char>(v > 255 ? 255 : v);
    }
}

void BlendRowsCubic(const unsigned char* product, const unsigned char* lines, unsigned char* out,
                    std::uint16_t count, unsigned w0, unsigned w1, unsigned w2, unsigned w3) {
    const unsigned char* l0 = lines;
    const unsigned char* l1 = lines + count;
    const unsigned char* l2 = lines + 2 * static_cast<size_t>(count);
    const unsigned char* l3 = lines + 3 * static_cast<size_t>(count);
    const unsigned char* t0 = product + ((w0 & 0xFFu) << 8);
    const unsigned char* t1 = product + ((w1 & 0xFFu) << 8);
    const unsigned char* t2 = product + ((w2 & 0xFFu) << 8);
    const unsigned char* t3 = product + ((w3 & 0xFFu) << 8);
    unsigned i = 0;
#if PRISM_X86
    if (Simd().sse2) {
        const unsigned char* const lines4[4] = {l0, l1, l2, l3};
        const unsigned weights[4] = {w0 & 0xFFu, w1 & 0xFFu, w2 & 0xFFu, w3 & 0xFFu};
        i = BlendRowsCubicSse2(lines4, out, count, weights);
    }
#endif
    for (; i < count; ++i) out[i] = Clamp(t2[l2[i]] - t3[l3[i]] + t1[l1[i]] - t0[l0[i]]);
}

void PlaneRowCopy(unsigned char* target, const unsigned char* source, std::uint16_t count) {
    if (target != source) std::memmove(target, source, count);
}

void PlaneRowFill(unsigned char* target, std::uint16_t count, unsigned char value) {
    std::memset(target, value, count);
}

WorkBlock::~WorkBlock() {
    if (data_) GlobalUnlock(block_);
    if (block_) GlobalFree(block_);
}

bool WorkBlock::Make(std::uint64_t bytes) {
    if (bytes == 0) return false;  // a block of no size cannot be locked
    block_ = AllocBlock(bytes);
    if (block_) data_ = static_cast<unsigned char*>(GlobalLock(block_));
    return data_ != nullptr;
}

HGLOBAL WorkBlock::Hand(bool keepLock) {
    if (data_ && !keepLock) GlobalUnlock(block_);
    data_ = nullptr;
    HGLOBAL b = block_;
    block_ = nullptr;
    return b;
}

}  // namespace prism
