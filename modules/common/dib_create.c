/* New image blocks for the host: header, colour table, rows bottom first. */
#include "module_image.h"

#include <stdint.h>
#include <string.h>

size_t DibStride(int width, int depth) {
    return (((size_t)width * (size_t)depth + 31) / 32) * 4;
}

int DibCreate(DibImage* image, int width, int height, int depth, int colors) {
    memset(image, 0, sizeof *image);
    if (width <= 0 || height <= 0 || width > MODULE_MAX_SIDE || height > MODULE_MAX_SIDE) return 0;
    if (colors < 0 || colors > 256) return 0;
    const size_t stride = DibStride(width, depth);
    const size_t table = (size_t)colors * sizeof(RGBQUAD);
    /* sides are at most 16 bits, so the product cannot overflow size_t */
    const size_t pixels = stride * (size_t)height;
    if (pixels > MODULE_MAX_BLOCK) return 0;
    const size_t total = sizeof(BITMAPINFOHEADER) + table + pixels;
    HDIB dib = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, total);
    if (!dib) return 0;
    BYTE* base = (BYTE*)GlobalLock(dib);
    if (!base) {
        GlobalFree(dib);
        return 0;
    }
    /* the block comes zero-filled: every field not set below is 0 */
    BITMAPINFOHEADER* h = (BITMAPINFOHEADER*)base;
    h->biSize = sizeof(BITMAPINFOHEADER);
    h->biWidth = width;
    h->biHeight = height;
    h->biPlanes = 1;
    h->biBitCount = (WORD)depth;
    h->biSizeImage = (DWORD)pixels;
    h->biXPelsPerMeter = h->biYPelsPerMeter = 3780; /* 96 per inch */
    h->biClrUsed = (DWORD)colors;
    image->handle = dib;
    image->header = h;
    image->colors = (RGBQUAD*)(base + sizeof *h);
    image->colorCount = colors;
    image->bits = base + sizeof *h + table;
    image->stride = stride;
    image->width = width;
    image->height = height;
    image->depth = depth;
    return 1;
}

HDIB DibFinish(DibImage* image) {
    HDIB dib = image->handle;
    if (dib) GlobalUnlock(dib);
    memset(image, 0, sizeof *image);
    return dib;
}

void DibDiscard(DibImage* image) {
    if (image->handle) {
        GlobalUnlock(image->handle);
        GlobalFree(image->handle);
    }
    memset(image, 0, sizeof *image);
}

BYTE* DibRow(const DibImage* image, int y) {
    const int stored = image->topDown ? y : image->height - 1 - y;
    return image->bits + (size_t)stored * image->stride;
}

void DibSetGreyTable(DibImage* image) {
    const int n = image->colorCount;
    for (int i = 0; i < n; ++i) {
        const BYTE v = (BYTE)(n > 1 ? i * 255 / (n - 1) : 0);
        image->colors[i].rgbRed = image->colors[i].rgbGreen = image->colors[i].rgbBlue = v;
    }
}

void SetStatus(int* status, int value) {
    if (status) *status = value;
}
