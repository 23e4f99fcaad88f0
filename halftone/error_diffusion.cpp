// Error diffusion to 1, 4 or 8 bits: the four-neighbour and the
// twelve-neighbour kernels and their two exports.
#include "halftone/dither.h"

#include "platform/export.h"

namespace prism {

namespace {

inline std::int16_t Cell(int v) { return static_cast<std::int16_t>(v); }  // wraps in 16 bits

// Packs one bit per pixel from the most significant bit; a short last byte
// keeps its low bits 0.
class BitPacker {
public:
    explicit BitPacker(unsigned char* out) : out_(out) {}
    void Put(unsigned bit) {
        acc_ = (acc_ << 1) | bit;
        if (++n_ == 8) {
            *out_++ = static_cast<unsigned char>(acc_);
            acc_ = 0;
            n_ = 0;
        }
    }
    void Finish() {
        if (n_) *out_ = static_cast<unsigned char>(acc_ << (8 - n_));
    }

private:
    unsigned char* out_;
    unsigned acc_ = 0;
    int n_ = 0;
};

// One 3-3-2 component with the four-neighbour spread: returns the level.
inline int QuantiseFS(std::int16_t* cur, std::int16_t* next, int x, int shift, int top) {
    const int v = cur[x];
    int q = v / (1 << shift);
    q = q < 0 ? 0 : q > top ? top : q;
    const int e = v - (q << shift);
    if (e != 0) {
        cur[x + 1] = Cell(cur[x + 1] + 7 * e / 16);
        // One place further left than the 1-bit kernel.
        next[x - 2] = Cell(3 * e / 16);
        next[x - 1] = Cell(5 * e / 16);
        next[x] = Cell(e / 16);
    }
    return q;
}

// The twelve-neighbour spread of an error onto a component's three rows.
inline void SpreadJJN(std::int16_t* row0, std::int16_t* row1, std::int16_t* row2, int x, int e) {
    const int a = 7 * e / 48, c5 = 5 * e / 48, c3 = 3 * e / 48, d = e / 48;
    row0[x + 1] = Cell(row0[x + 1] + a);
    row0[x + 2] = Cell(row0[x + 2] + c5);
    row1[x - 2] = Cell(row1[x - 2] + c3);
    row1[x - 1] = Cell(row1[x - 1] + c5);
    row1[x] = Cell(row1[x] + a);
    row1[x + 1] = Cell(row1[x + 1] + c5);
    row1[x + 2] = Cell(row1[x + 2] + c3);
    // The third row is stored, not added, and reads 1, 3, 5, 1, 3.
    row2[x - 2] = Cell(d);
    row2[x - 1] = Cell(c3);
    row2[x] = Cell(c5);
    row2[x + 1] = Cell(d);
    row2[x + 2] = Cell(c3);
}

inline int QuantiseJJN(std::int16_t* const rows[3], int x, int shift, int top) {
    const int v = rows[0][x];
    int q = v / (1 << shift);
    q = q < 0 ? 0 : q > top ? top : q;
    const int e = v - (q << shift);
    if (e != 0) SpreadJJN(rows[0], rows[1], rows[2], x, e);
    return q;
}

}  // namespace

// The cells each pixel reads and writes stay in registers: its own value,
// and the three cells of the next row it may store, which become final one
// pixel later.  No branch depends on the pixel: an error of 0 adds 0 to the
// right and leaves the stored cells as they were, by selection.  Every cell
// stored lies where the spread itself may store.
void DiffuseRowFS1(std::int16_t* cur, std::int16_t* next, unsigned char* out, int width) {
    if (width <= 0) return;
    BitPacker bits(out);
    int value = cur[0];
    std::int16_t below0 = next[-1], below1 = next[0], below2 = next[1];
    for (int x = 0; x < width; ++x) {
        const unsigned bit = value > 128 ? 1u : 0u;  // the threshold is 129
        const int v = value - (bit ? 255 : 0);
        bits.Put(bit);
        const bool spread = v != 0;
        const std::int16_t right = Cell(cur[x + 1] + 7 * v / 16);
        if (spread) cur[x + 1] = right;
        // Stores, not additions: pixel x+1 overwrites what pixel x left
        // at next[x] and next[x+1].
        below0 = spread ? Cell(3 * v / 16) : below0;
        below1 = spread ? Cell(5 * v / 16) : below1;
        below2 = spread ? Cell(v / 16) : below2;
        next[x - 1] = below0;
        below0 = below1;
        below1 = below2;
        below2 = x + 2 <= width ? next[x + 2] : 0;
        value = right;
    }
    next[width - 1] = below0;
    next[width] = below1;
    bits.Finish();
}

void DiffuseRowFS8(std::int16_t* const cur[3], std::int16_t* const next[3], unsigned char* out, int width) {
    for (int x = 0; x < width; ++x) {
        int byte = QuantiseFS(cur[0], next[0], x, 5, 7) << 5;
        byte |= QuantiseFS(cur[1], next[1], x, 5, 7) << 2;
        byte |= QuantiseFS(cur[2], next[2], x, 6, 3);
        out[x] = static_cast<unsigned char>(byte);
    }
}

void DiffuseRowJJN1(std::int16_t* row0, std::int16_t* row1, std::int16_t* row2, unsigned char* out,
                    int width) {
    BitPacker bits(out);
    for (int x = 0; x < width; ++x) {
        int v = row0[x];
        unsigned bit = 0;
        if (v > 128) {
            bit = 1;
            v -= 255;
        }
        bits.Put(bit);
        if (v != 0) SpreadJJN(row0, row1, row2, x, v);
    }
    bits.Finish();
}

void DiffuseRowJJN8(std::int16_t* const rows[3][3], unsigned char* out, int width) {
    for (int x = 0; x < width; ++x) {
        int byte = QuantiseJJN(rows[0], x, 5, 7) << 5;
        byte |= QuantiseJJN(rows[1], x, 5, 7) << 2;
        // Blue is limited to 0..4: a level of 4 lands on the lowest green
        // bit, and the error is taken against 256.
        byte |= QuantiseJJN(rows[2], x, 6, 4);
        out[x] = static_cast<unsigned char>(byte);
    }
}

}  // namespace prism

using prism::DitherImage;
using prism::DitherKind;

// DitherFS4: a 4-, 8- or 24-bit DIB to a new DIB of `bits` (1, 4 or 8,
// below the source depth) by four-neighbour error diffusion.  0 on failure
// with LastImgError 8, 17, 20 or 1; LastImgError is 0 after a success.
PRISM_API HDIB WINAPI DitherFS4(HDIB dib, int bits) { return DitherImage(dib, bits, DitherKind::kFS); }

// DitherJJN: as DitherFS4 with a twelve-neighbour kernel.  A null handle is
// code 17 here and a failed lock code 1.
PRISM_API HDIB WINAPI DitherJJN(HDIB dib, int bits) { return DitherImage(dib, bits, DitherKind::kJJN); }
