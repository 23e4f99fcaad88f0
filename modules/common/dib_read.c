/* The host's image blocks, read for saving, and whole-file reads. */
#include "module_image.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int DibOpen(DibImage* image, HDIB dib) {
    memset(image, 0, sizeof *image);
    if (!dib) return 0;
    const size_t blockSize = GlobalSize(dib);
    BYTE* base = (BYTE*)GlobalLock(dib);
    if (!base) return 0;
    const BITMAPINFOHEADER* h = (const BITMAPINFOHEADER*)base;
    int ok = blockSize >= sizeof *h && h->biSize == sizeof *h && h->biCompression == 0;
    const int depth = ok ? h->biBitCount : 0;
    ok = ok && (depth == 1 || depth == 4 || depth == 8 || depth == 24);
    const long long height = ok ? (h->biHeight < 0 ? -(long long)h->biHeight : h->biHeight) : 0;
    ok = ok && h->biWidth > 0 && h->biWidth <= MODULE_MAX_SIDE && height > 0 && height <= MODULE_MAX_SIDE;
    size_t colors = 0;
    if (ok) colors = h->biClrUsed ? h->biClrUsed : (depth <= 8 ? (size_t)1 << depth : 0);
    ok = ok && colors <= 256;
    const size_t stride = ok ? DibStride(h->biWidth, depth) : 0;
    const size_t need = sizeof *h + colors * sizeof(RGBQUAD) + stride * (size_t)height;
    if (!ok || need > blockSize) {
        GlobalUnlock(dib);
        return 0;
    }
    image->handle = dib;
    image->header = (BITMAPINFOHEADER*)base;
    image->colors = (RGBQUAD*)(base + sizeof *h);
    image->colorCount = (int)colors;
    image->bits = base + sizeof *h + colors * sizeof(RGBQUAD);
    image->stride = stride;
    image->width = h->biWidth;
    image->height = (int)height;
    image->depth = depth;
    image->topDown = h->biHeight < 0;
    return 1;
}

void DibClose(DibImage* image) {
    if (image->handle) GlobalUnlock(image->handle);
    memset(image, 0, sizeof *image);
}

int DibIndexAt(const BYTE* row, int depth, int x) {
    if (depth == 1) return (row[x >> 3] >> (7 - (x & 7))) & 1;
    if (depth == 4) return (x & 1) ? row[x >> 1] & 15 : row[x >> 1] >> 4;
    return row[x];
}

void DibColorAt(const DibImage* image, const BYTE* row, int x, BYTE bgr[3]) {
    if (image->depth == 24) {
        memcpy(bgr, row + 3 * (size_t)x, 3);
        return;
    }
    const int i = DibIndexAt(row, image->depth, x);
    if (i >= image->colorCount) {
        bgr[0] = bgr[1] = bgr[2] = 0;
        return;
    }
    bgr[0] = image->colors[i].rgbBlue;
    bgr[1] = image->colors[i].rgbGreen;
    bgr[2] = image->colors[i].rgbRed;
}

int DibIsGreyRamp(const DibImage* image) {
    const int n = image->depth <= 8 ? 1 << image->depth : 0;
    if (n == 0 || image->colorCount != n) return 0;
    for (int i = 0; i < n; ++i) {
        const RGBQUAD c = image->colors[i];
        const int v = i * 255 / (n - 1);
        if (c.rgbRed != v || c.rgbGreen != v || c.rgbBlue != v) return 0;
    }
    return 1;
}

static int Luma(RGBQUAD c) {
    return 30 * c.rgbRed + 59 * c.rgbGreen + 11 * c.rgbBlue;
}

int DibZeroIsLight(const DibImage* image) {
    if (image->colorCount < 2) return 0;
    return Luma(image->colors[0]) > Luma(image->colors[1]);
}

BYTE* ReadWholeFile(const char* fileName, size_t* size, int* status) {
    *size = 0;
    FILE* f = fileName ? fopen(fileName, "rb") : NULL;
    if (!f) {
        SetStatus(status, kModuleCannotOpen);
        return NULL;
    }
    long end = -1;
    if (fseek(f, 0, SEEK_END) == 0) end = ftell(f);
    if (end < 0 || (unsigned long)end > MODULE_MAX_BLOCK || fseek(f, 0, SEEK_SET) != 0) {
        fclose(f);
        SetStatus(status, end < 0 ? kModuleCannotOpen : kModuleNoMemory);
        return NULL;
    }
    BYTE* data = (BYTE*)malloc(end ? (size_t)end : 1);
    if (data && fread(data, 1, (size_t)end, f) != (size_t)end) {
        free(data);
        data = NULL;
        SetStatus(status, kModuleCannotOpen);
    } else if (!data) {
        SetStatus(status, kModuleNoMemory);
    }
    fclose(f);
    if (data) *size = (size_t)end;
    return data;
}
