// Smooth and sharp dithering: a 2-by-2 block slides along two rows and its
// tone is gathered into its brightest cells.
#include "halftone/dither.h"

#include "platform/export.h"

namespace prism {

void RedistributeRow(std::int16_t* cur, std::int16_t* next, unsigned char* out, int width, bool halve) {
    std::int16_t carry = 0;
    std::int16_t deficit = 0;
    unsigned acc = 0;
    int n8 = 0;
    for (int x = 0; x < width; ++x) {
        int q[4] = {cur[x], cur[x + 1], next[x], next[x + 1]};
        int s = static_cast<std::int16_t>(deficit + carry + q[2] + q[3] + q[1] + q[0]);
        if (s < 0) {
            deficit = static_cast<std::int16_t>(s);
            s = 0;
        } else {
            deficit = 0;
        }
        const int n = s / 255;
        const int r = s % 255;
        if (n >= 4 || s == 0) {
            // All four cells full, or all empty: the order does not matter.
            q[0] = q[1] = q[2] = q[3] = s ? 255 : 0;
        } else {
            // Order the cells: the lowest index wins a tie for the maximum,
            // the highest index a tie for the minimum, and of the middle two
            // the higher index goes first on a tie.
            int o[4];
            o[0] = 0;
            for (int i = 1; i < 4; ++i)
                if (q[i] > q[o[0]]) o[0] = i;
            o[3] = 3;
            for (int i = 0; i < 4; ++i)
                if (q[i] <= q[o[3]]) o[3] = i;
            int a = -1, b = -1;
            for (int i = 0; i < 4; ++i) {
                if (i == o[0] || i == o[3]) continue;
                if (a < 0) a = i; else b = i;
            }
            if (q[a] > q[b]) {
                o[1] = a;
                o[2] = b;
            } else {
                o[1] = b;
                o[2] = a;
            }
            for (int k = 0; k < 4; ++k) q[o[k]] = k < n ? 255 : k == n ? r : 0;
        }
        unsigned bit = 0;
        if (q[0] == 255) {
            bit = 1;
            carry = 0;
        } else {
            carry = static_cast<std::int16_t>(q[0]);
        }
        if (halve) carry = static_cast<std::int16_t>(carry / 2);
        cur[x] = static_cast<std::int16_t>(q[0]);
        cur[x + 1] = static_cast<std::int16_t>(q[1]);
        next[x] = static_cast<std::int16_t>(q[2]);
        next[x + 1] = static_cast<std::int16_t>(q[3]);

        acc = (acc << 1) | bit;
        if (++n8 == 8) {
            *out++ = static_cast<unsigned char>(acc);
            acc = 0;
            n8 = 0;
        }
    }
    if (n8) *out = static_cast<unsigned char>(acc << (8 - n8));
}

}  // namespace prism

using prism::DitherImage;
using prism::DitherKind;

// DitherSmooth: a 4-, 8- or 24-bit DIB to a new DIB of 1 or 4 bits by the
// 2-by-2 redistribution, the remainder carried whole along the row.  0 on
// failure with LastImgError 8, 17, 1 or 20; 0 after a success.
PRISM_API HDIB WINAPI DitherSmooth(HDIB dib, int bits) { return DitherImage(dib, bits, DitherKind::kSmooth); }

// DitherSharp: as DitherSmooth, carrying half of the remainder.
PRISM_API HDIB WINAPI DitherSharp(HDIB dib, int bits) { return DitherImage(dib, bits, DitherKind::kSharp); }
