/* TIFF pages into DIBs: 1, 2, 4 and 8-bit grey and palette pages keep their
 * samples (1-bit stays 1-bit, 2-bit becomes 4-bit); every other kind (RGB,
 * CMYK, YCbCr, 16-bit samples, alpha) goes through libtiff's RGBA reader to
 * 24 bits, alpha laid over white. */
#include "tiff_access.h"

#include <stdlib.h>
#include <string.h>

typedef struct {
    uint32_t width, height;
    uint16_t bits, samples, photometric, planar;
} PageShape;

static int DirectDepth(const PageShape* s) {
    if (s->samples != 1 || s->planar != PLANARCONFIG_CONTIG) return 0;
    if (s->photometric != PHOTOMETRIC_MINISWHITE && s->photometric != PHOTOMETRIC_MINISBLACK &&
        s->photometric != PHOTOMETRIC_PALETTE)
        return 0;
    return s->bits == 1 ? 1 : s->bits == 2 || s->bits == 4 ? 4 : s->bits == 8 ? 8 : 0;
}

static int SetTable(TIFF* tif, DibImage* img, const PageShape* s) {
    const int n = 1 << s->bits;
    if (s->photometric != PHOTOMETRIC_PALETTE) {
        for (int i = 0; i < n; ++i) {
            int v = i * 255 / (n - 1);
            if (s->photometric == PHOTOMETRIC_MINISWHITE) v = 255 - v;
            img->colors[i].rgbRed = img->colors[i].rgbGreen = img->colors[i].rgbBlue = (BYTE)v;
        }
        return 1;
    }
    uint16_t *r, *g, *b;
    if (!TIFFGetField(tif, TIFFTAG_COLORMAP, &r, &g, &b)) return 0;
    /* some writers store 8-bit values in the 16-bit table */
    int wide = 0;
    for (int i = 0; i < n; ++i) wide |= r[i] > 255 || g[i] > 255 || b[i] > 255;
    const int shift = wide ? 8 : 0;
    for (int i = 0; i < n; ++i) {
        img->colors[i].rgbRed = (BYTE)(r[i] >> shift);
        img->colors[i].rgbGreen = (BYTE)(g[i] >> shift);
        img->colors[i].rgbBlue = (BYTE)(b[i] >> shift);
    }
    return 1;
}

/* One packed page row into a DIB row; 2-bit samples widen to 4 bits. */
static void StoreRow(const BYTE* src, BYTE* row, const PageShape* s, int depth) {
    if (s->bits != 2) {
        memcpy(row, src, ((size_t)s->width * depth + 7) / 8);
        return;
    }
    for (uint32_t x = 0; x < s->width; ++x) {
        const int v = (src[x >> 2] >> (6 - 2 * (x & 3))) & 3;
        row[x >> 1] |= (BYTE)((x & 1) ? v : v << 4);
    }
}

/* Rows of a striped or tiled page with one sample of 1 to 8 bits. */
static int ReadDirect(TIFF* tif, TiffMemory* m, DibImage* img, const PageShape* s) {
    const size_t rowBytes = ((size_t)s->width * s->bits + 7) / 8;
    if (!TIFFIsTiled(tif)) {
        BYTE* line = (BYTE*)_TIFFmalloc(TIFFScanlineSize(tif) > (tmsize_t)rowBytes ? TIFFScanlineSize(tif) : (tmsize_t)rowBytes);
        int ok = line != NULL;
        for (uint32_t y = 0; ok && y < s->height; ++y) {
            ok = TIFFReadScanline(tif, line, y, 0) >= 0 && !m->damaged;
            if (ok) StoreRow(line, DibRow(img, (int)y), s, img->depth);
        }
        _TIFFfree(line);
        return ok;
    }
    uint32_t tw = 0, th = 0;
    TIFFGetField(tif, TIFFTAG_TILEWIDTH, &tw);
    TIFFGetField(tif, TIFFTAG_TILELENGTH, &th);
    const tmsize_t tileBytes = TIFFTileSize(tif);
    /* tile widths are multiples of 16, so every tile starts on a byte */
    if (tw == 0 || th == 0 || tw % 16 || tileBytes <= 0) return 0;
    const size_t tileRow = ((size_t)tw * s->bits + 7) / 8;
    BYTE* tile = (BYTE*)_TIFFmalloc(tileBytes);
    BYTE* band = (BYTE*)calloc(th, rowBytes);
    int ok = tile && band;
    for (uint32_t y0 = 0; ok && y0 < s->height; y0 += th) {
        for (uint32_t x0 = 0; ok && x0 < s->width; x0 += tw) {
            ok = TIFFReadTile(tif, tile, x0, y0, 0, 0) >= 0 && !m->damaged;
            const size_t at = (size_t)x0 * s->bits / 8, take = rowBytes - at < tileRow ? rowBytes - at : tileRow;
            for (uint32_t r = 0; ok && r < th; ++r) memcpy(band + r * rowBytes + at, tile + r * tileRow, take);
        }
        for (uint32_t r = 0; ok && r < th && y0 + r < s->height; ++r)
            StoreRow(band + r * rowBytes, DibRow(img, (int)(y0 + r)), s, img->depth);
    }
    _TIFFfree(tile);
    free(band);
    return ok;
}

/* Any other page through libtiff's RGBA reader; alpha comes premultiplied,
 * so laying it over white adds the uncovered part of white. */
static int ReadRgba(TIFF* tif, TiffMemory* m, DibImage* img, const PageShape* s) {
    char message[1024];
    if (!TIFFRGBAImageOK(tif, message)) return 0;
    uint32_t* raster = (uint32_t*)_TIFFmalloc((tmsize_t)s->width * s->height * sizeof(uint32_t));
    if (!raster) return 0;
    int ok = TIFFReadRGBAImageOriented(tif, s->width, s->height, raster, ORIENTATION_TOPLEFT, 1) && !m->damaged;
    for (uint32_t y = 0; ok && y < s->height; ++y) {
        BYTE* row = DibRow(img, (int)y);
        const uint32_t* px = raster + (size_t)y * s->width;
        for (uint32_t x = 0; x < s->width; ++x) {
            const uint32_t p = px[x], white = 255 - TIFFGetA(p);
            row[3 * x] = (BYTE)(TIFFGetB(p) + white > 255 ? 255 : TIFFGetB(p) + white);
            row[3 * x + 1] = (BYTE)(TIFFGetG(p) + white > 255 ? 255 : TIFFGetG(p) + white);
            row[3 * x + 2] = (BYTE)(TIFFGetR(p) + white > 255 ? 255 : TIFFGetR(p) + white);
        }
    }
    _TIFFfree(raster);
    return ok;
}

static void SetResolution(TIFF* tif, DibImage* img) {
    float xres = 0, yres = 0;
    uint16_t unit = RESUNIT_INCH;
    TIFFGetField(tif, TIFFTAG_RESOLUTIONUNIT, &unit);
    const double perMeter = unit == RESUNIT_CENTIMETER ? 100.0 : unit == RESUNIT_INCH ? 39.3701 : 0;
    if (TIFFGetField(tif, TIFFTAG_XRESOLUTION, &xres) && xres > 0 && xres < 100000)
        img->header->biXPelsPerMeter = (LONG)(xres * perMeter + 0.5);
    if (TIFFGetField(tif, TIFFTAG_YRESOLUTION, &yres) && yres > 0 && yres < 100000)
        img->header->biYPelsPerMeter = (LONG)(yres * perMeter + 0.5);
}

HDIB TiffDecodePage(TIFF* tif, TiffMemory* memory, unsigned index, int* noPage) {
    *noPage = 0;
    /* what was said while opening is said again for the page's directory */
    memory->damaged = 0;
    if (!TIFFSetDirectory(tif, (tdir_t)index)) {
        *noPage = 1;
        return 0;
    }
    PageShape s;
    uint16_t extra = 0, *extraKinds = NULL;
    if (!TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &s.width) || !TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &s.height))
        return 0;
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &s.bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &s.samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &s.planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_EXTRASAMPLES, &extra, &extraKinds);
    if (!TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &s.photometric)) s.photometric = PHOTOMETRIC_MINISWHITE;
    const int direct = DirectDepth(&s);
    const int depth = direct ? direct : 24;
    DibImage img;
    if (!DibCreate(&img, (int)s.width, (int)s.height, depth, direct ? 1 << depth : 0)) return 0;
    int ok = direct ? SetTable(tif, &img, &s) && ReadDirect(tif, memory, &img, &s) : ReadRgba(tif, memory, &img, &s);
    if (!ok) {
        DibDiscard(&img);
        return 0;
    }
    SetResolution(tif, &img);
    return DibFinish(&img);
}
