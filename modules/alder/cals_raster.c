/* CALS type 1 rasters: 16 text records of 128 bytes, then one G4 coded
 * bilevel image. The G4 coding itself is libtiff's: the raster is framed
 * as a one-strip TIFF in memory and read or written through it. */
#include "tiff_access.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kCalsHeader = 2048, kRecord = 128 };

/* The value behind "name:" in one of the header records, or NULL. */
static const char* Field(const char* header, const char* name) {
    const size_t n = strlen(name);
    for (int r = 0; r < kCalsHeader / kRecord; ++r) {
        const char* rec = header + r * kRecord;
        if (!strncmp(rec, name, n)) return rec + n;
    }
    return NULL;
}

static void Put16(BYTE* p, unsigned v) { p[0] = (BYTE)v, p[1] = (BYTE)(v >> 8); }
static void Put32(BYTE* p, unsigned long v) { Put16(p, (unsigned)(v & 0xFFFF)), Put16(p + 2, (unsigned)(v >> 16)); }

/* A little-endian TIFF of one strip that points at the coded data. */
static BYTE* FrameAsTiff(unsigned long w, unsigned long h, const BYTE* coded, size_t codedSize, size_t* size) {
    static const unsigned short tags[9] = {256, 257, 258, 259, 262, 273, 277, 278, 279};
    const size_t at = 8 + 2 + 9 * 12 + 4;
    BYTE* t = (BYTE*)calloc(1, at + codedSize);
    if (!t) return NULL;
    memcpy(t, "II*\0\10\0\0\0", 8);
    Put16(t + 8, 9);
    const unsigned long values[9] = {w, h, 1, COMPRESSION_CCITTFAX4, PHOTOMETRIC_MINISWHITE, at, 1, h, codedSize};
    for (int i = 0; i < 9; ++i) {
        BYTE* e = t + 10 + 12 * i;
        const int isLong = tags[i] == 256 || tags[i] == 257 || (tags[i] >= 273 && tags[i] != 277);
        Put16(e, tags[i]), Put16(e + 2, isLong ? 4 : 3), Put32(e + 4, 1);
        if (isLong) Put32(e + 8, values[i]);
        else Put16(e + 8, (unsigned)values[i]);
    }
    memcpy(t + at, coded, codedSize);
    *size = at + codedSize;
    return t;
}

HDIB CalsDecode(const BYTE* data, size_t size) {
    if (size <= kCalsHeader) return 0;
    char header[kCalsHeader + 1];
    memcpy(header, data, kCalsHeader);
    header[kCalsHeader] = 0;
    const char* type = Field(header, "rtype:");
    const char* count = Field(header, "rpelcnt:");
    unsigned long w = 0, h = 0;
    if (!count || sscanf(count, " %lu , %lu", &w, &h) != 2 || (type && atoi(type) != 1)) return 0;
    if (w == 0 || h == 0 || w > MODULE_MAX_SIDE || h > MODULE_MAX_SIDE) return 0;
    TiffMemory m = {0};
    m.data = FrameAsTiff(w, h, data + kCalsHeader, size - kCalsHeader, &m.size);
    TIFF* tif = m.data ? TiffOpenMemory(&m, "r") : NULL;
    int noPage;
    HDIB dib = tif ? TiffDecodePage(tif, &m, 0, &noPage) : 0;
    if (tif) TIFFClose(tif);
    free(m.data);
    return dib;
}

/* G4 codes of a bilevel image, through a TIFF written to memory. */
static BYTE* CodeG4(const DibImage* img, size_t* size) {
    TiffMemory m = {0};
    TIFF* tif = TiffOpenMemory(&m, "w");
    int ok = tif && TiffEncodePage(tif, img, COMPRESSION_CCITTFAX4);
    if (tif) TIFFClose(tif);
    BYTE* coded = NULL;
    tif = ok ? TiffOpenMemory(&m, "r") : NULL;
    if (tif && TIFFNumberOfStrips(tif) == 1) {
        uint64_t* counts = NULL;
        TIFFGetField(tif, TIFFTAG_STRIPBYTECOUNTS, &counts);
        const tmsize_t n = counts ? (tmsize_t)counts[0] : 0;
        coded = n > 0 ? (BYTE*)malloc((size_t)n) : NULL;
        if (coded && TIFFReadRawStrip(tif, 0, coded, n) != n) {
            free(coded);
            coded = NULL;
        }
        *size = (size_t)n;
    }
    if (tif) TIFFClose(tif);
    free(m.data);
    return coded;
}

/* A deeper image as black where its grey is below the middle, white
 * elsewhere: a CALS raster holds one bit a pixel. */
static int Threshold(const DibImage* img, DibImage* bilevel) {
    if (!DibCreate(bilevel, img->width, img->height, 1, 2)) return 0;
    bilevel->colors[0].rgbRed = bilevel->colors[0].rgbGreen = bilevel->colors[0].rgbBlue = 255;
    bilevel->header->biXPelsPerMeter = img->header->biXPelsPerMeter;
    for (int y = 0; y < img->height; ++y) {
        const BYTE* row = DibRow(img, y);
        BYTE* out = DibRow(bilevel, y);
        for (int x = 0; x < img->width; ++x) {
            BYTE bgr[3];
            DibColorAt(img, row, x, bgr);
            if (30 * bgr[2] + 59 * bgr[1] + 11 * bgr[0] < 128 * 100) out[x >> 3] |= (BYTE)(0x80 >> (x & 7));
        }
    }
    return 1;
}

BYTE* CalsEncode(const DibImage* img, size_t* size) {
    DibImage bilevel;
    if (img->depth != 1 && !Threshold(img, &bilevel)) return NULL;
    size_t codedSize = 0;
    BYTE* coded = CodeG4(img->depth == 1 ? img : &bilevel, &codedSize);
    if (img->depth != 1) DibDiscard(&bilevel);
    BYTE* out = coded ? (BYTE*)malloc(kCalsHeader + codedSize) : NULL;
    if (!out) {
        free(coded);
        return NULL;
    }
    const LONG ppm = img->header->biXPelsPerMeter;
    const int dpi = ppm > 0 ? (int)(ppm / 39.3701 + 0.5) : 200;
    char records[16][kRecord + 1];
    const char* text[] = {"srcdocid: NONE", "dstdocid: NONE", "txtfilid: NONE", "figid: NONE", "srcgph: NONE",
                          "doccls: NONE", "rtype: 1", "rorient: 000,270", NULL, NULL, "notes: NONE"};
    memset(out, ' ', kCalsHeader);
    for (int r = 0; r < 11; ++r) {
        if (r == 8) snprintf(records[r], sizeof records[r], "rpelcnt: %06d,%06d", img->width, img->height);
        else if (r == 9) snprintf(records[r], sizeof records[r], "rdensty: %04d", dpi > 0 && dpi < 10000 ? dpi : 200);
        else snprintf(records[r], sizeof records[r], "%s", text[r]);
        memcpy(out + r * kRecord, records[r], strlen(records[r]));
    }
    memcpy(out + kCalsHeader, coded, codedSize);
    free(coded);
    *size = kCalsHeader + codedSize;
    return out;
}
