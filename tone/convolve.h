// Row routines and helpers of the 8-bit and colour convolutions.
#pragma once

#include "tone/filter.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace prism {
namespace tone {

// 8-bit rows into a ring of 32-bit accumulators.  Each returns at once for
// a size it does not handle.
void ConvolveRowMatrix(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                       const int (*cells)[7], std::int64_t divisor, const EdgePlan& edges);
void ConvolveRowBox(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                    const EdgePlan& edges);
void ConvolveRowBlur(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                     const EdgePlan& edges);
void ConvolveRowCross(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                      const EdgePlan& edges);
void ConvolveRowSharp(const unsigned char* src, std::int64_t width, std::int32_t* const* ring, int size,
                      const EdgePlan& edges);

// 24-bit rows: each pixel's brightness goes to the second half of the ring
// row of role size/2, and is scattered into 16-bit accumulators.
void ColorRowMatrix(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                    const int (*cells)[7], const EdgePlan& edges);
void ColorRowBox(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                 const EdgePlan& edges);
void ColorRowBlur(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                  const EdgePlan& edges);
void ColorRowCross(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                   const EdgePlan& edges);
void ColorRowSharp(const unsigned char* src, int mode, std::int64_t width, std::int16_t* const* ring, int size,
                   const EdgePlan& edges);

// Kind, name, matrix and size tests shared by both filters: 0 or code 8.
int CheckFilterArguments(int kind, int size, const char* kernelFile, const void* matrix);

// A negative divisor is made positive and the cells negated with it.
void NegateIfNeeded(Filter* f);

// Division of a finished accumulator: 1 leaves it, 2 to 64 shift
// arithmetically, anything else truncates toward zero (by table for the
// common non-negative range).
class QuotientTable {
public:
    static constexpr std::int32_t kSpan = 32768;
    explicit QuotientTable(std::int64_t divisor);
    std::int64_t operator()(std::int64_t v) const {
        if (shift_) return v >> shift_;
        if (divisor_ == 1) return v;
        if (v >= 0 && v < kSpan) return q_[static_cast<size_t>(v)];
        return v / divisor_;
    }

private:
    std::int64_t divisor_;
    int shift_;
    std::vector<std::int32_t> q_ = std::vector<std::int32_t>(kSpan);
};

}  // namespace tone
}  // namespace prism
