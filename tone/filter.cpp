// Filter kinds, matrix checks, kernel files and the edge weights of the
// square filters.
#include "tone/filter.h"

#include "platform/platform.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace tone {
namespace {

template <class K>
void CopyKernel(Filter* f) {
    for (int j = 0; j < K::N; ++j)
        for (int i = 0; i < K::N; ++i) f->cells[j][i] = K::w[j][i];
}

struct Raw {
    std::int64_t owner;  // the pixel whose edge code writes the weight
    std::int64_t src;
    std::int64_t column;
    int role;
    std::int32_t weight;
};

// Where the fixed edge code departs from repeating the edge pixels.  Each
// entry is a change of weight, owned by the pixel whose code makes it.
void AddDepartures(const Filter& f, std::int64_t W, bool colour, std::vector<Raw>* out) {
    auto add = [&](std::int64_t owner, std::int64_t src, std::int64_t col, std::initializer_list<int> roles,
                   std::int32_t delta) {
        for (int j : roles) out->push_back({owner, src, col, j, delta});
    };
    const int n = f.size;
    if (n == 5) {
        switch (f.kind) {
            case kKindBox:
                // Pixel 1 takes column 0's weight for column -1, mirrored at the right.
                add(1, 1, 0, {0, 1, 2, 3, 4}, 1);
                add(W - 2, W - 2, W - 1, {0, 1, 2, 3, 4}, 1);
                break;
            case kKindBlur:
                add(1, 1, 0, {1, 2, 3}, 1);
                add(1, 1, 2, {1, 2, 3}, 1);
                add(W - 2, W - 2, W - 1, {1, 2, 3}, 1);
                add(W - 2, W - 2, W - 3, {1, 2, 3}, 1);
                add(W - 1, W - 1, W - 1, {0, 4}, -1);
                break;
            case kKindCross:
                add(1, 1, 0, {0, 4}, -1);
                add(1, 1, 0, {1, 3}, -2);
                add(1, 1, 0, {2}, -1);
                add(W - 2, W - 2, W - 1, {0, 4}, -1);
                add(W - 2, W - 2, W - 1, {1, 3}, -2);
                add(W - 2, W - 2, W - 1, {2}, -1);
                // The last pixel's outer weight multiplies the row's first pixel.
                add(W - 1, 0, W - 1, {0, 4}, -4);
                add(W - 1, W - 1, W - 1, {0, 4}, 4);
                // A weight of 8 in the centre role goes to pixel W-3.
                add(W - 2, W - 3, W - 2, {2}, 8);
                add(W - 2, W - 2, W - 2, {2}, -8);
                add(W - 1, W - 3, W - 1, {2}, 8);
                add(W - 1, W - 1, W - 1, {2}, -8);
                break;
            case kKindSharp:
                add(1, 1, 0, {0, 4}, -1);
                add(1, 1, 0, {1, 3}, -2);
                add(1, 1, 0, {2}, -4);
                add(W - 2, W - 2, W - 1, {0, 4}, -1);
                add(W - 2, W - 2, W - 1, {1, 3}, -2);
                add(W - 2, W - 2, W - 1, {2}, -4);
                break;
            default:  // the matrix routine leaves out one cell of the last pixel
                add(W - 1, W - 1, W - 2, {4}, -f.cells[4][1]);
                break;
        }
    } else if (n == 7 && f.kind == kKindBox && !colour) {
        // The last pixel's largest weight multiplies the row's first pixel.
        add(W - 1, 0, W - 1, {0, 1, 2, 3, 4, 5, 6}, 4);
        add(W - 1, W - 1, W - 1, {0, 1, 2, 3, 4, 5, 6}, -4);
    }
}

}  // namespace

bool FilterSizeAllowed(int kind, int size) {
    if (kind < 1 || kind > 6) return false;
    if (size != 3 && size != 5 && size != 7) return false;
    return size <= 5 || kind == kKindMatrix || kind == kKindBox;
}

void BuiltInFilter(int kind, int size, Filter* f) {
    f->kind = kind;
    f->size = size;
    std::memset(f->cells, 0, sizeof(f->cells));
    f->clamp = kind == kKindCross || kind == kKindSharp;
    f->divisor = 1;
    switch (kind) {
        case kKindBox:
            f->divisor = size * size;
            if (size == 3) CopyKernel<Box3>(f);
            if (size == 5) CopyKernel<Box5>(f);
            if (size == 7) CopyKernel<Box7>(f);
            break;
        case kKindBlur:
            f->divisor = size == 3 ? 16 : 44;
            if (size == 3) CopyKernel<Blur3>(f); else CopyKernel<Blur5>(f);
            break;
        case kKindCross:
            if (size == 3) CopyKernel<Cross3>(f); else CopyKernel<Cross5>(f);
            break;
        case kKindSharp:
            if (size == 3) CopyKernel<Sharp3>(f); else CopyKernel<Sharp5>(f);
            break;
        default:
            break;
    }
}

bool TakeMatrix(const int* values, int size, Filter* f) {
    f->size = size;
    std::memset(f->cells, 0, sizeof(f->cells));
    for (int i = 0; i < size; ++i)
        for (int j = 0; j < size; ++j) f->cells[j][i] = values[i * size + j];
    std::int64_t divisor = values[size * size];
    std::int64_t positive = 0, negative = 0;
    for (int j = 0; j < 7; ++j)
        for (int i = 0; i < 7; ++i) {
            std::int64_t v = f->cells[j][i];
            if (v > 127 || v < -127 || negative > 127 || positive > 127) return false;
            if (v > 0) positive += v;
            else negative -= v;
        }
    if (negative > 127 || positive > 127) return false;
    if (divisor == 0) divisor = positive - negative;
    if (divisor == 0) divisor = 1;
    f->clamp = negative != 0 && positive != 0;
    f->divisor = divisor;
    return true;
}

bool ReadKernelFile(const char* name, void* buffer, long count) {
    HFILE file = plat::FileOpen(name, plat::kOpenRead);
    if (file == 0 || file == plat::kBadFile) return false;
    long got = plat::FileRead(file, buffer, count);
    plat::FileClose(file);
    // A short file is refused rather than filled from whatever the buffer held.
    return got == count;
}

EdgePlan PlanEdges(const Filter& f, std::int64_t W, bool colour) {
    const int n = f.size, h = n / 2;
    EdgePlan plan;
    const bool narrow = W < 2 * n + 2;
    std::vector<std::int64_t> columns;
    if (narrow) {
        for (std::int64_t c = 0; c < W; ++c) columns.push_back(c);
    } else {
        for (std::int64_t c = 0; c <= h; ++c) columns.push_back(c);
        for (std::int64_t c = W - n - 1; c < W; ++c) columns.push_back(c);
        plan.interiorBegin = h + 1;
        plan.interiorEnd = W - n - 1;
    }
    std::vector<Raw> raw;
    for (std::int64_t c : columns)
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) {
                if (!f.cells[j][i]) continue;
                // Columns past the row's ends repeat its first and last pixel.
                std::int64_t x = std::min<std::int64_t>(std::max<std::int64_t>(c - i + h, 0), W - 1);
                raw.push_back({x, x, c, j, f.cells[j][i]});
            }
    // The fixed edge code of the row routines assumes the row holds two
    // kernels' width; narrower rows follow the plain rule.
    if (W >= 2 * n) {
        AddDepartures(f, W, colour, &raw);
        if (colour) {
            // The colour routines scatter their last pixels too far left.
            for (Raw& r : raw) {
                if (n == 5 && r.owner == W - 1) r.column -= 1;
                if (n == 7 && r.owner == W - 2) r.column -= 1;
                if (n == 7 && r.owner == W - 1) r.column -= 2;
            }
        }
    }
    std::sort(raw.begin(), raw.end(), [](const Raw& a, const Raw& b) {
        if (a.column != b.column) return a.column < b.column;
        if (a.role != b.role) return a.role < b.role;
        return a.src < b.src;
    });
    // Every (column, role) of the edge columns gets a cell, so that the
    // newest role is assigned even where its weights sum to nothing.
    size_t k = 0;
    for (std::int64_t c : columns)
        for (int j = 0; j < n; ++j) {
            EdgePlan::Cell cell{static_cast<std::int32_t>(c), j, static_cast<std::uint32_t>(plan.terms.size()), 0};
            while (k < raw.size() && (raw[k].column < c || (raw[k].column == c && raw[k].role < j))) ++k;
            while (k < raw.size() && raw[k].column == c && raw[k].role == j) {
                std::int64_t src = raw[k].src;
                std::int32_t w = 0;
                while (k < raw.size() && raw[k].column == c && raw[k].role == j && raw[k].src == src) w += raw[k++].weight;
                if (w) {
                    plan.terms.push_back({static_cast<std::int32_t>(src), w});
                    ++cell.count;
                }
            }
            plan.cells.push_back(cell);
        }
    return plan;
}

}  // namespace tone
}  // namespace prism
