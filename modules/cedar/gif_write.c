/* GIF writer: one frame, GIF87a, the DIB's own table for 1, 4 and 8 bits;
 * a 24-bit image keeps its colours when it has 256 or fewer, and is
 * quantised to 256 by giflib otherwise. */
#include "gif_access.h"

#include <gif_lib.h>
#include <stdlib.h>
#include <string.h>

static int WriteOutput(GifFileType* gif, const GifByteType* buf, int n) {
    return (int)fwrite(buf, 1, (size_t)n, (FILE*)gif->UserData);
}

/* Exact table of a 24-bit image with at most 256 colours; 0 if more. */
static int ExactColors(const DibImage* img, BYTE* px, GifColorType* table) {
    enum { kSlots = 1024 };
    uint32_t key[kSlots];
    int slot[kSlots], count = 0;
    memset(slot, -1, sizeof slot);
    for (int y = 0; y < img->height; ++y) {
        const BYTE* row = DibRow(img, y);
        for (int x = 0; x < img->width; ++x) {
            const uint32_t c = row[3 * x] | (uint32_t)row[3 * x + 1] << 8 | (uint32_t)row[3 * x + 2] << 16;
            unsigned h = (c * 2654435761u) >> 22;
            while (slot[h] >= 0 && key[h] != c) h = (h + 1) % kSlots;
            if (slot[h] < 0) {
                if (count == 256) return 0;
                key[h] = c, slot[h] = count;
                table[count].Blue = row[3 * x], table[count].Green = row[3 * x + 1], table[count].Red = row[3 * x + 2];
                ++count;
            }
            px[(size_t)y * img->width + x] = (BYTE)slot[h];
        }
    }
    return 1;
}

static int Quantise(const DibImage* img, BYTE* px, GifColorType* table) {
    const size_t n = (size_t)img->width * img->height;
    BYTE* planes = (BYTE*)malloc(3 * n);
    if (!planes) return 0;
    for (int y = 0; y < img->height; ++y) {
        const BYTE* row = DibRow(img, y);
        for (int x = 0; x < img->width; ++x) {
            const size_t i = (size_t)y * img->width + x;
            planes[i] = row[3 * x + 2], planes[n + i] = row[3 * x + 1], planes[2 * n + i] = row[3 * x];
        }
    }
    int size = 256;
    const int ok = GifQuantizeBuffer((unsigned)img->width, (unsigned)img->height, &size, planes, planes + n,
                                     planes + 2 * n, px, table) == GIF_OK;
    free(planes);
    return ok;
}

/* Indices, one byte a pixel, rows from the top, and the table. */
static int Indices(const DibImage* img, BYTE* px, GifColorType* table) {
    if (img->depth == 24) return ExactColors(img, px, table) || Quantise(img, px, table);
    for (int i = 0; i < img->colorCount && i < 256; ++i) {
        table[i].Red = img->colors[i].rgbRed;
        table[i].Green = img->colors[i].rgbGreen;
        table[i].Blue = img->colors[i].rgbBlue;
    }
    for (int y = 0; y < img->height; ++y) {
        const BYTE* row = DibRow(img, y);
        for (int x = 0; x < img->width; ++x) px[(size_t)y * img->width + x] = (BYTE)DibIndexAt(row, img->depth, x);
    }
    return 1;
}

static int PutFrame(GifFileType* gif, const DibImage* img, BYTE* px, ColorMapObject* map, int interlaced) {
    const int w = img->width, h = img->height;
    if (EGifPutScreenDesc(gif, w, h, map->BitsPerPixel, 0, map) == GIF_ERROR) return 0;
    if (EGifPutImageDesc(gif, 0, 0, w, h, interlaced != 0, NULL) == GIF_ERROR) return 0;
    /* interlaced rows go out pass by pass */
    static const int start[4] = {0, 4, 2, 1}, step[4] = {8, 8, 4, 2};
    const int passes = interlaced ? 4 : 1;
    for (int p = 0; p < passes; ++p)
        for (int y = interlaced ? start[p] : 0; y < h; y += interlaced ? step[p] : 1)
            if (EGifPutLine(gif, px + (size_t)y * w, w) == GIF_ERROR) return 0;
    return 1;
}

int GifEncode(const DibImage* img, int interlaced, FILE* out, int* status) {
    const int depth = img->depth == 24 ? 8 : img->depth;
    GifColorType table[256];
    memset(table, 0, sizeof table);
    BYTE* px = (BYTE*)malloc((size_t)img->width * img->height);
    if (!px || !Indices(img, px, table)) {
        free(px);
        SetStatus(status, kModuleNoMemory);
        return 0;
    }
    ColorMapObject* map = GifMakeMapObject(1 << depth, table);
    int error = 0;
    GifFileType* gif = map ? EGifOpen(out, WriteOutput, &error) : NULL;
    int ok = 0;
    if (gif) {
        EGifSetGifVersion(gif, false); /* 87a: no extensions are written */
        ok = PutFrame(gif, img, px, map, interlaced);
        if (EGifCloseFile(gif, &error) == GIF_ERROR) ok = 0;
    }
    GifFreeMapObject(map);
    free(px);
    SetStatus(status, ok ? kModuleOk : kModuleCannotWrite);
    return ok;
}
