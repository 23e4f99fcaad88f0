// The square filters shared by the 8-bit and the colour convolution: the
// built-in kernels, the checks on a caller's matrix, the weights of the
// columns near the edges, and the gather that fills the accumulator ring.
#pragma once

#include <cstdint>
#include <vector>

namespace prism {
namespace tone {

enum FilterKind { kKindMatrix = 1, kKindFile = 2, kKindBox = 3, kKindBlur = 4, kKindCross = 5, kKindSharp = 6 };

// The working matrix: cells[j][i] is what a pixel adds to ring role j at
// the column i - n/2 away, that is element (i, j) of the caller's matrix.
struct Filter {
    int kind = 0;
    int size = 0;
    int cells[7][7] = {};
    std::int64_t divisor = 1;
    bool clamp = false;
};

// Kinds and sizes a filter accepts: kinds 1 to 6, sizes 3, 5 and 7, size 7
// only for kinds 1 and 3.  Sizes 4 and 6 have no ring and are refused.
bool FilterSizeAllowed(int kind, int size);

// The built-in kernel, divisor and clamp of kinds 3 to 6.
void BuiltInFilter(int kind, int size, Filter* f);

// Takes an n by n matrix (row i, column j at values[i * n + j]) and its
// divisor into the working matrix and checks it: each cell and the sums of
// the positive and of the negative cells at most 127.  False when refused.
bool TakeMatrix(const int* values, int size, Filter* f);

// Reads `count` bytes of a kernel file; false when the file cannot be
// opened or holds fewer bytes.
bool ReadKernelFile(const char* name, void* buffer, long count);

// Weights of the columns whose sums differ from the plain gather: the first
// size/2 + 1 and the last size + 1 columns, or all of them in a narrow row.
// Each (column, role) has a list of (source pixel, weight).
struct EdgePlan {
    struct Term {
        std::int32_t src;
        std::int32_t weight;
    };
    struct Cell {
        std::int32_t column;
        int role;
        std::uint32_t first, count;  // into terms
    };
    std::vector<Term> terms;
    std::vector<Cell> cells;
    std::int64_t interiorBegin = 0, interiorEnd = 0;  // columns of the plain gather
};

// `colour` selects the right-edge placement of the colour convolution,
// whose last pixels land one (size 5) or one and two (size 7) columns to the
// left.
EdgePlan PlanEdges(const Filter& f, std::int64_t width, bool colour);

// Adds (or, for the newest role, assigns) one row's contributions.  The
// newest role's cells are assigned so that the ring needs no clearing.
template <typename Acc>
inline void Put(Acc& cell, std::int32_t value, bool assign) {
    cell = assign ? static_cast<Acc>(value) : static_cast<Acc>(static_cast<std::int32_t>(cell) + value);
}

template <typename Acc, typename Pix>
void GatherEdges(const EdgePlan& plan, const Pix* p, Acc* const* ring, int size) {
    for (const EdgePlan::Cell& c : plan.cells) {
        std::int32_t s = 0;
        for (std::uint32_t t = c.first; t < c.first + c.count; ++t)
            s += plan.terms[t].weight * static_cast<std::int32_t>(p[plan.terms[t].src]);
        Put(ring[c.role][c.column], s, c.role == size - 1);
    }
}

// The plain gather over the interior columns for a kernel known when
// compiling: the loops unroll and the constant weights become shifts and
// additions, with zero weights left out.
// One role at a time, so that each loop has one destination and the
// compiler may vectorise it (source and ring rows never overlap).
template <class K, int J, typename Acc, typename Pix>
void GatherRole(const Pix* __restrict p, std::int64_t begin, std::int64_t end, Acc* __restrict row) {
    constexpr int N = K::N;
    for (std::int64_t x = begin; x < end; ++x) {
        const Pix* q = p + x + N / 2;  // q[-i] is the pixel for position i
        std::int32_t s = 0;
#pragma GCC unroll 8
        for (int i = 0; i < N; ++i)
            if (K::w[J][i] != 0) s += K::w[J][i] * static_cast<std::int32_t>(q[-i]);
        Put(row[x], s, J == N - 1);
    }
}

template <class K, int J, typename Acc, typename Pix>
void GatherRoles(const Pix* p, std::int64_t begin, std::int64_t end, Acc* const* ring) {
    if constexpr (J < K::N) {
        GatherRole<K, J>(p, begin, end, ring[J]);
        GatherRoles<K, J + 1>(p, begin, end, ring);
    }
}

template <class K, typename Acc, typename Pix>
void GatherFixed(const Pix* p, std::int64_t begin, std::int64_t end, Acc* const* ring) {
    GatherRoles<K, 0>(p, begin, end, ring);
}

// The same for a caller's matrix, with multiplications by its cells.
template <int N, typename Acc, typename Pix>
void GatherMatrix(const int (*cells)[7], const Pix* p, std::int64_t begin, std::int64_t end, Acc* const* ring) {
    int w[N][N];
    for (int j = 0; j < N; ++j)
        for (int i = 0; i < N; ++i) w[j][i] = cells[j][i];
    Acc* rows[N];
    for (int j = 0; j < N; ++j) rows[j] = ring[j];
    for (std::int64_t x = begin; x < end; ++x) {
        const Pix* q = p + x + N / 2;
        for (int j = 0; j < N; ++j) {
            std::int32_t s = 0;
            for (int i = 0; i < N; ++i) s += w[j][i] * static_cast<std::int32_t>(q[-i]);
            Put(rows[j][x], s, j == N - 1);
        }
    }
}

// Built-in kernels.  Each is symmetrical, so rows and columns read alike.
struct Box3 {
    static constexpr int N = 3;
    static constexpr int w[3][3] = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
};
struct Box5 {
    static constexpr int N = 5;
    static constexpr int w[5][5] = {{1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}};
};
struct Box7 {
    static constexpr int N = 7;
    static constexpr int w[7][7] = {{1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1},
                                    {1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1},
                                    {1, 1, 1, 1, 1, 1, 1}};
};
struct Blur3 {
    static constexpr int N = 3;
    static constexpr int w[3][3] = {{1, 2, 1}, {2, 4, 2}, {1, 2, 1}};
};
struct Blur5 {
    static constexpr int N = 5;
    static constexpr int w[5][5] = {{0, 1, 1, 1, 0}, {1, 2, 4, 2, 1}, {1, 4, 8, 4, 1}, {1, 2, 4, 2, 1}, {0, 1, 1, 1, 0}};
};
struct Cross3 {
    static constexpr int N = 3;
    static constexpr int w[3][3] = {{0, -1, 0}, {-1, 5, -1}, {0, -1, 0}};
};
struct Cross5 {
    static constexpr int N = 5;
    static constexpr int w[5][5] = {{-1, -2, -1, -2, -1}, {-2, 1, 3, 1, -2}, {-1, 3, 9, 3, -1}, {-2, 1, 3, 1, -2},
                                    {-1, -2, -1, -2, -1}};
};
struct Sharp3 {
    static constexpr int N = 3;
    static constexpr int w[3][3] = {{-1, -1, -1}, {-1, 9, -1}, {-1, -1, -1}};
};
struct Sharp5 {
    static constexpr int N = 5;
    static constexpr int w[5][5] = {{-1, -2, -4, -2, -1}, {-2, 1, 4, 1, -2}, {-4, 4, 17, 4, -4}, {-2, 1, 4, 1, -2},
                                    {-1, -2, -4, -2, -1}};
};

// Rotates the ring one step.  While it fills (the first size - 1 steps),
// roles not yet real point at the spare row, the last of the block.
template <typename Acc>
void RingStep(Acc** roles, Acc* block, std::int64_t rowElems, int size, std::int64_t step) {
    if (step == 0) {
        for (int j = 0; j < size; ++j) roles[j] = block + (size - 1) * rowElems;
        roles[size - 1] = block;
        return;
    }
    Acc* oldest = roles[0];
    for (int j = 0; j < size - 1; ++j) roles[j] = roles[j + 1];
    roles[size - 1] = step < size ? block + step * rowElems : oldest;
}

// The power of two that `divisor` is, 1 to 6, or 0.
inline int DivisorShift(std::int64_t divisor) {
    for (int s = 1; s <= 6; ++s)
        if (divisor == (std::int64_t(1) << s)) return s;
    return 0;
}

}  // namespace tone
}  // namespace prism
