// Row kernels shared by the colour and the grey scaler: the product table,
// the tap tables, horizontal resampling of one plane, vertical blending of
// resampled lines, and the line-store walks that keep lines between rows.
#pragma once

#include "prism32.h"

#include <cstddef>
#include <cstdint>

namespace prism {

// ScaleProductTable: entry w * 256 + p is (w * p + 128) / 255, a weight
// w/255 applied to a pixel p, rounded to nearest.
constexpr std::size_t kScaleProductTableBytes = 65536;
constexpr std::size_t kLinearTapBytes = 4;  // position (16 bits), weight, right weight
constexpr std::size_t kCubicTapBytes = 6;   // position (16 bits), w0, w1, w2, w3

void BuildScaleProductTable(unsigned char* table);

// One entry per result column: linear entries when the low 16 bits of
// `mode` are 0, cubic entries otherwise.
void BuildTapTable(std::uint16_t sourceSize, std::uint16_t newSize, unsigned char* table, unsigned mode);

// Cubic weights (magnitudes) at a fraction f in [0, 1): w1 and w2 are
// added, w0 and w3 subtracted.
struct CubicWeights {
    unsigned char w0, w1, w2, w3;
};
CubicWeights CubicWeightsAt(double f);

// Resamples `planeCount` planes (up to three) with one tap table, plane c
// into line c.  A plane pointer is at pixel 0 of a plane with one guard
// byte before it and three behind its last pixel; `readable` is how many
// bytes from each plane pointer lie inside its block.
void ResampleRowLinear(const unsigned char* product, const unsigned char* taps, const unsigned char* const planes[],
                       unsigned char* const lines[], unsigned planeCount, std::uint16_t count,
                       std::uint32_t readable);
void ResampleRowCubic(const unsigned char* product, const unsigned char* taps, const unsigned char* const planes[],
                      unsigned char* const lines[], unsigned planeCount, std::uint16_t count);
void BlendRowsLinear(const unsigned char* product, const unsigned char* line0, const unsigned char* line1,
                     unsigned char* out, std::uint16_t count, std::uint16_t weight);
// `lines` holds four lines of `count` bytes, one after another.
void BlendRowsCubic(const unsigned char* product, const unsigned char* lines, unsigned char* out,
                    std::uint16_t count, unsigned w0, unsigned w1, unsigned w2, unsigned w3);
void PlaneRowCopy(unsigned char* target, const unsigned char* source, std::uint16_t count);
void PlaneRowFill(unsigned char* target, std::uint16_t count, unsigned char value);

// A work block allocated (flags 66) and locked at once; unlocked and freed
// at the end of its scope unless handed out.
class WorkBlock {
public:
    WorkBlock() = default;
    ~WorkBlock();
    WorkBlock(const WorkBlock&) = delete;
    WorkBlock& operator=(const WorkBlock&) = delete;
    // False when the block cannot be made or locked (a size of 0 included).
    bool Make(std::uint64_t bytes);
    unsigned char* data() const { return data_; }
    // Hands the block to the caller, unlocked or still locked.
    HGLOBAL Hand(bool keepLock);

private:
    HGLOBAL block_ = nullptr;
    unsigned char* data_ = nullptr;
};

// The vertical walks.  A line store holds, per colour, two lines (linear)
// or four (cubic) of `lineBytes` each, grouped by colour.  `load(row, k)`
// makes line k of every colour from source row `row`; `copy(from, to)` and
// `fill(k)` move or clear line k of every colour; `emit(y, ...)` blends the
// lines into result row y.
//
// The linear walk goes from the last result row up: row y is line 0, made
// from source row sy, blended with line 1, made from sy + 1, so no row
// depends on the order, and the source rows an image was just made or
// loaded with, its last ones, are read while still in cache.  Going up,
// line 0 moves to line 1 when the next row up needs the source row it
// holds.  Line 1 is made only when an emit reads it, with a non-zero
// weight (a zero weight gives line 0 as it stands, and the last source
// row always has one); at a factor of one half every row weight is 0 and
// it is never made.
template <class Load, class Copy, class Emit>
void WalkRowsLinear(std::uint16_t sourceHeight, std::uint16_t newHeight, Load load, Copy copy, Emit emit) {
    std::int32_t line0 = -1, line1 = -1;  // the source rows the lines hold
    for (std::uint32_t y = newHeight; y-- > 0;) {
        const std::uint64_t t = static_cast<std::uint64_t>(y) * sourceHeight;
        const std::int32_t sy = static_cast<std::uint16_t>(t / newHeight);
        std::uint16_t weight =
            static_cast<std::uint16_t>(((t % newHeight) * 255 + newHeight / 2) / newHeight);
        if (sy + 1 == sourceHeight) weight = 0;
        if (sy != line0) {
            if (line0 == sy + 1) {
                copy(0, 1);
                line1 = line0;
            }
            load(static_cast<std::uint16_t>(sy), 0);
            line0 = sy;
        }
        if (weight != 0 && line1 != sy + 1) {
            load(static_cast<std::uint16_t>(sy + 1), 1);
            line1 = sy + 1;
        }
        emit(y, weight);
    }
}

template <class Load, class Copy, class Fill, class Emit>
void WalkRowsCubic(std::uint16_t sourceHeight, std::uint16_t newHeight, Load load, Copy copy, Fill fill,
                   Emit emit) {
    std::uint16_t lastSourceRow = 0xFFFF;
    for (std::uint32_t y = 0; y < newHeight; ++y) {
        const std::uint64_t t = static_cast<std::uint64_t>(y) * sourceHeight;
        const std::uint16_t sy = static_cast<std::uint16_t>(t / newHeight);
        // Row 0 is never reused; a step of 4 or more keeps nothing.
        const std::uint16_t delta = sy == 0 ? 4 : static_cast<std::uint16_t>(sy - lastSourceRow);
        lastSourceRow = sy;
        // Copies run upward from line 0, so a line is moved before it is
        // overwritten; a step of 0 copies each line onto itself.
        if (sy == 0)
            fill(0);  // the row above the top counts as black
        else if (delta < 4)
            copy(delta, 0);
        else
            load(static_cast<std::uint16_t>(sy - 1), 0);
        if (delta < 3)
            copy(1 + delta, 1);
        else
            load(sy, 1);
        if (static_cast<std::uint32_t>(sy) + 1 >= sourceHeight)
            copy(1, 2);
        else if (delta < 2)
            copy(2 + delta, 2);
        else
            load(static_cast<std::uint16_t>(sy + 1), 2);
        if (static_cast<std::uint32_t>(sy) + 2 >= sourceHeight)
            copy(1, 3);  // line 1, not line 2: kept as the walk has always done
        else if (delta != 0)
            load(static_cast<std::uint16_t>(sy + 2), 3);
        const double f = static_cast<double>(t) / newHeight - sy;
        emit(y, CubicWeightsAt(f));
    }
}

}  // namespace prism
