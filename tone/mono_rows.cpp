// Row routines that turn 1-bit rows into grey: plain expansion, and the
// 3 by 3 and 5 by 5 smoothing sweeps that add a kernel for every set pixel,
// four pixels (one nibble) at a time.
#include "tone/tone_internal.h"

#include <algorithm>

namespace prism {
namespace tone {
namespace {

// Both kernels sum to 255, so an area of set pixels comes out as 255.
constexpr int kKernel3[3][3] = {{8, 31, 8}, {31, 99, 31}, {8, 31, 8}};
constexpr int kKernel5[5][5] = {{0, 3, 7, 3, 0},
                                {3, 16, 25, 16, 3},
                                {7, 25, 39, 25, 7},
                                {3, 16, 25, 16, 3},
                                {0, 3, 7, 3, 0}};

// For each kernel size K, kernel row and nibble value: what the nibble's set
// pixels add to the K + 3 positions from base - K/2 on.
template <int K>
struct NibbleTable {
    unsigned char add[K][16][K + 3];
    NibbleTable() {
        for (int r = 0; r < K; ++r)
            for (int v = 0; v < 16; ++v) {
                int sum[K + 3] = {};
                for (int p = 0; p < 4; ++p) {
                    if (!(v & (8 >> p))) continue;
                    for (int d = 0; d < K; ++d) sum[p + d] += K == 3 ? kKernel3[r][d] : kKernel5[r][d];
                }
                for (int q = 0; q < K + 3; ++q) add[r][v][q] = static_cast<unsigned char>(sum[q]);
            }
    }
};

const NibbleTable<3>& Table3() {
    static const NibbleTable<3> table;
    return table;
}
const NibbleTable<5>& Table5() {
    static const NibbleTable<5> table;
    return table;
}

// Bits 0..7 of a byte as eight bytes of 0 or 255, most significant bit first.
struct ExpandTable {
    unsigned char bytes[256][8];
    ExpandTable() {
        for (int v = 0; v < 256; ++v)
            for (int j = 0; j < 8; ++j) bytes[v][j] = (v & (0x80 >> j)) ? 255 : 0;
    }
};

const ExpandTable& Expansions() {
    static const ExpandTable table;
    return table;
}

// Adds the kernel rows `first`..`last` (inclusive) for one source row into
// rows[first..last].  The sweep takes nibble 0 three times and the last
// nibble twice, so the row continues with a period of four pixels at both
// ends; rows[i] points at position 0, and base - K/2 of the first step is
// inside the left margin.
template <int K>
void Sweep(const NibbleTable<K>& table, const unsigned char* src, std::int64_t width,
           unsigned char* const* rows, int first, int last, unsigned char invert) {
    const std::int64_t bytes = (width + 7) / 8;
    const std::int64_t nibbles = 2 * bytes;
    for (std::int64_t s = 0; s < nibbles + 3; ++s) {
        std::int64_t k = s <= 2 ? 0 : std::min(s - 2, nibbles - 1);
        unsigned v = static_cast<unsigned char>(src[k / 2] ^ invert);
        v = (k & 1) ? (v & 15) : (v >> 4);
        if (!v) continue;  // a clear nibble adds nothing
        const std::int64_t start = 4 * s - 4 - K / 2;
        for (int r = first; r <= last; ++r) {
            unsigned char* at = rows[r] + start;
            const unsigned char* add = table.add[r][v];
            for (int q = 0; q < K + 3; ++q) at[q] = static_cast<unsigned char>(at[q] + add[q]);
        }
    }
}

// One sweep of a K by K kernel: the first K-1 rows are added to, the last
// is assigned.  When the last row is also one of the others, assignment
// wins, as it is made after the additions.
template <int K>
void Splat(const NibbleTable<K>& table, const unsigned char* src, std::int64_t width,
           unsigned char* const* rows, int invert) {
    const unsigned char flip = invert ? 0xFF : 0x00;
    const std::int64_t rowBytes = MonoAccRowBytes(width);
    bool aliased = false;
    for (int r = 0; r < K - 1; ++r) aliased = aliased || rows[r] == rows[K - 1];
    if (aliased) {
        Sweep<K>(table, src, width, rows, 0, K - 2, flip);
        std::memset(rows[K - 1] - kMonoLeft, 0, static_cast<size_t>(rowBytes));
        Sweep<K>(table, src, width, rows, K - 1, K - 1, flip);
    } else {
        std::memset(rows[K - 1] - kMonoLeft, 0, static_cast<size_t>(rowBytes));
        Sweep<K>(table, src, width, rows, 0, K - 1, flip);
    }
}

}  // namespace

std::int64_t MonoAccRowBytes(std::int64_t width) {
    // Positions reach from -K/2 - 4 of the first step to 4 * nibbles + 9 of
    // the last; the row is sized for everything the sweep writes.
    const std::int64_t nibbles = 2 * ((width + 7) / 8);
    return kMonoLeft + 4 * nibbles + 16;
}

void ExpandMonoRow(const unsigned char* src, std::int64_t width, unsigned char* dst, int invert,
                   std::uint64_t room) {
    const std::uint64_t clear = std::min<std::uint64_t>(static_cast<std::uint64_t>((width + 31) / 32 * 4), room);
    std::memset(dst, 0, static_cast<size_t>(clear));
    const unsigned char flip = invert ? 0xFF : 0x00;
    const std::int64_t bytes = (width + 7) / 8;
    const ExpandTable& table = Expansions();
    // Clear bits write nothing; the padding bits of the last byte are
    // expanded too, into the row's padding or the start of the next row.
    // Bytes past `room` are dropped.
    for (std::int64_t i = 0; i < bytes; ++i) {
        const unsigned char* e = table.bytes[static_cast<unsigned char>(src[i] ^ flip)];
        std::uint64_t at = static_cast<std::uint64_t>(i) * 8;
        if (at + 8 <= room) {
            for (int j = 0; j < 8; ++j) dst[at + j] |= e[j];
        } else {
            for (int j = 0; j < 8 && at + j < room; ++j) dst[at + j] |= e[j];
        }
    }
}

void SplatMonoRow3(const unsigned char* src, std::int64_t width, unsigned char* r1, unsigned char* r2,
                   unsigned char* r3, int invert) {
    unsigned char* rows[3] = {r1, r2, r3};
    Splat<3>(Table3(), src, width, rows, invert);
}

void SplatMonoRow5(const unsigned char* src, std::int64_t width, unsigned char* r1, unsigned char* r2,
                   unsigned char* r3, unsigned char* r4, unsigned char* r5, int invert) {
    unsigned char* rows[5] = {r1, r2, r3, r4, r5};
    Splat<5>(Table5(), src, width, rows, invert);
}

}  // namespace tone
}  // namespace prism
