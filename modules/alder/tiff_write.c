/* DIBs into TIFF pages: 1-bit as white-is-zero bilevel (G4 unless told
 * otherwise), 4 and 8-bit as grey or palette, 24-bit as RGB. */
#include "tiff_access.h"

#include <stdlib.h>
#include <string.h>

static int IsFaxCoding(int c) {
    return c == COMPRESSION_CCITTRLE || c == COMPRESSION_CCITTFAX3 || c == COMPRESSION_CCITTFAX4;
}

static int SetFields(TIFF* tif, const DibImage* img, int compression) {
    const int grey = img->depth == 1 || DibIsGreyRamp(img);
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, (uint32_t)img->width);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, (uint32_t)img->height);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, (uint16_t)(img->depth == 24 ? 8 : img->depth));
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, (uint16_t)(img->depth == 24 ? 3 : 1));
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    const int photometric = img->depth == 24 ? PHOTOMETRIC_RGB
                            : img->depth == 1 ? PHOTOMETRIC_MINISWHITE
                            : grey            ? PHOTOMETRIC_MINISBLACK
                                              : PHOTOMETRIC_PALETTE;
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, photometric);
    if (!TIFFSetField(tif, TIFFTAG_COMPRESSION, compression)) return 0;
    if (compression == COMPRESSION_CCITTFAX3) TIFFSetField(tif, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_FILLBITS);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, IsFaxCoding(compression) ? (uint32_t)img->height
                                                                      : TIFFDefaultStripSize(tif, 0));
    const LONG xppm = img->header->biXPelsPerMeter, yppm = img->header->biYPelsPerMeter;
    TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tif, TIFFTAG_XRESOLUTION, xppm > 0 ? (float)(xppm / 39.3701) : 96.0f);
    TIFFSetField(tif, TIFFTAG_YRESOLUTION, yppm > 0 ? (float)(yppm / 39.3701) : 96.0f);
    if (photometric == PHOTOMETRIC_PALETTE) {
        uint16_t map[3][256] = {{0}};
        for (int i = 0; i < img->colorCount && i < (1 << img->depth); ++i) {
            map[0][i] = (uint16_t)(img->colors[i].rgbRed * 257);
            map[1][i] = (uint16_t)(img->colors[i].rgbGreen * 257);
            map[2][i] = (uint16_t)(img->colors[i].rgbBlue * 257);
        }
        TIFFSetField(tif, TIFFTAG_COLORMAP, map[0], map[1], map[2]);
    }
    return 1;
}

int TiffEncodePage(TIFF* tif, const DibImage* img, int compression) {
    if (compression == 0) compression = img->depth == 1 ? COMPRESSION_CCITTFAX4 : COMPRESSION_LZW;
    /* fax codings take bilevel pages only */
    if (IsFaxCoding(compression) && img->depth != 1) return 0;
    if (!TIFFIsCODECConfigured((uint16_t)compression) || !SetFields(tif, img, compression)) return 0;
    const size_t rowBytes = ((size_t)img->width * img->depth + 7) / 8;
    BYTE* line = (BYTE*)malloc(rowBytes);
    /* white is 0 on a bilevel page */
    const int flip = img->depth == 1 && !DibZeroIsLight(img);
    int ok = line != NULL;
    for (int y = 0; ok && y < img->height; ++y) {
        const BYTE* row = DibRow(img, y);
        if (img->depth == 24) {
            for (int x = 0; x < img->width; ++x) {
                line[3 * x] = row[3 * x + 2], line[3 * x + 1] = row[3 * x + 1], line[3 * x + 2] = row[3 * x];
            }
        } else {
            memcpy(line, row, rowBytes);
            if (flip)
                for (size_t i = 0; i < rowBytes; ++i) line[i] = (BYTE)~line[i];
        }
        ok = TIFFWriteScanline(tif, line, (uint32_t)y, 0) >= 0;
    }
    free(line);
    return ok && TIFFWriteDirectory(tif);
}
