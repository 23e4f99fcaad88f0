// Feeds a fuzzed image (any header, depth, size field and compression,
// over a block exactly as long as the input) through every export that
// takes an image, with fuzzed arguments.
#include "support.h"

#include <cstring>
#include <vector>

namespace {

struct Args {
    const std::uint8_t* p;
    size_t n;
    int Next(int range) {  // 0..range-1 from the input's tail
        if (!n) return 0;
        --n;
        return p[n] % range;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < 8) return 0;
    // The last bytes are the arguments; the first byte picks the export.
    Args args{data + size - 8, 8};
    const int which = data[0];
    HGLOBAL dib = fuzz::BlockFrom(data + 1, size - 9);
    if (!dib) return 0;
    int error = 0, corners[8];
    HGLOBAL result = nullptr;
    switch (which % 26) {
        case 0: result = RotateDIB90(dib); break;
        case 1: result = RotateDIB180(dib); break;
        case 2: result = RotateDIB270(dib); break;
        case 3: result = FlipDIBVertical(dib); break;
        case 4: result = FlipDIBHorizontal(dib); break;
        case 5: result = CompressDIB(dib); break;
        case 6: result = ExpandCompressedDIB(dib); break;
        case 7: result = ScaleDIB(dib, args.Next(3), args.Next(300) - 20, args.Next(300) - 20); break;
        case 8:
            result = ScaleGrayDIB(dib, args.Next(64) - 8, args.Next(64) - 8, args.Next(64), args.Next(64),
                                  args.Next(5), args.Next(5), args.Next(3));
            break;
        case 9: result = RotateDIB(dib, args.Next(720) - 360, args.Next(2), &error, corners); break;
        case 10: result = SkewDIB(dib, args.Next(2), args.Next(200) - 100, &error, corners); break;
        case 11: {
            int position[2] = {args.Next(600) - 300, args.Next(600) - 300};
            HGLOBAL table = ComputeHistogram(dib, 30, nullptr, position, &error);
            if (table) {
                ComputeHistogram(dib, 31, table, position, &error);
                HGLOBAL lut = ComputeLUT(table, 30, nullptr, 0, 0, &error);
                if (lut) {
                    ComputeLUT(table, 31, lut, args.Next(201) - 100, args.Next(201) - 100, &error);
                    result = ApplyLUT(dib, lut, args.Next(2), &error);
                    fuzz::Free(lut);
                }
                fuzz::Free(table);
            }
            break;
        }
        case 12: {
            const int n = 3 + 2 * args.Next(3);
            std::vector<int> matrix(n * n + 1);
            for (int& m : matrix) m = args.Next(9) - 4;
            result = Convolve(dib, args.Next(2), 1 + args.Next(6), n, nullptr, matrix.data(), &error);
            break;
        }
        case 13: {
            const int n = 3 + 2 * args.Next(3);
            std::vector<short> matrix(n * n + 1);
            for (short& m : matrix) m = static_cast<short>(args.Next(9) - 4);
            result = ColorConvolution(dib, args.Next(2), args.Next(2), static_cast<WORD>(1 + args.Next(6)),
                                      static_cast<short>(n), nullptr, matrix.data(), &error);
            break;
        }
        case 14: result = ColorBrightnessContrast(dib, static_cast<short>(args.Next(201) - 100),
                                                  static_cast<short>(args.Next(201) - 100)); break;
        case 15: InvertDIBPalette(dib); break;
        case 16: result = Convert8to24(dib); break;
        case 17: result = ConvColorDIBtoGrayscale(dib, args.Next(7), args.Next(2)); break;
        case 18: result = ConvMonoDIBtoGrayscale(dib, args.Next(7)); break;
        case 19: result = DitherFS4(dib, args.Next(10)); break;
        case 20: result = DitherJJN(dib, args.Next(10)); break;
        case 21: result = DitherSmooth(dib, args.Next(10)); break;
        case 22: result = DitherSharp(dib, args.Next(10)); break;
        case 23: {
            WORD word = 0;
            result = Halftone(dib, static_cast<WORD>(args.Next(4)), args.Next(512) - 256, &word);
            break;
        }
        case 24: SaveDIB("/dev/null", dib); break;
        default: SaveDIBInImageFormat("/dev/null", dib, 6, 0, 0); break;
    }
    if (result != dib) fuzz::Free(result);
    fuzz::Free(dib);
    return 0;
}
