/* PCX writer: 1-bit as one plane, 4-bit as four planes of 1 bit, 8-bit with
 * the 256-colour table at the end, 24-bit as three planes of 8 bits. */
#include "pcx.h"

#include <stdlib.h>
#include <string.h>

static void PutWord(BYTE* p, unsigned v) { p[0] = (BYTE)v, p[1] = (BYTE)(v >> 8); }

/* Run-length codes one plane line; runs never cross a line. */
static size_t EncodeLine(const BYTE* line, int n, BYTE* out) {
    size_t o = 0;
    for (int i = 0; i < n;) {
        int run = 1;
        while (i + run < n && run < 63 && line[i + run] == line[i]) ++run;
        if (run > 1 || line[i] >= 0xC0) out[o++] = (BYTE)(0xC0 | run);
        out[o++] = line[i];
        i += run;
    }
    return o;
}

/* Fills the plane lines of row y. */
static void SplitRow(const DibImage* img, int y, int planes, int lineBytes, int invert, BYTE* line) {
    const BYTE* row = DibRow(img, y);
    memset(line, 0, (size_t)lineBytes * planes);
    const int w = img->width;
    if (img->depth == 1) {
        memcpy(line, row, ((size_t)w + 7) / 8);
        if (invert)
            for (int i = 0; i < lineBytes; ++i) line[i] = (BYTE)~line[i];
    } else if (img->depth == 4) {
        for (int x = 0; x < w; ++x) {
            const int v = DibIndexAt(row, 4, x);
            for (int p = 0; p < 4; ++p)
                if (v >> p & 1) line[p * lineBytes + (x >> 3)] |= (BYTE)(0x80 >> (x & 7));
        }
    } else if (img->depth == 8) {
        memcpy(line, row, (size_t)w);
    } else {
        for (int x = 0; x < w; ++x) {
            line[x] = row[3 * x + 2], line[lineBytes + x] = row[3 * x + 1], line[2 * lineBytes + x] = row[3 * x];
        }
    }
}

BYTE* PcxEncode(const DibImage* img, size_t* size) {
    const int bits = img->depth == 1 || img->depth == 4 ? 1 : 8;
    const int planes = img->depth == 4 ? 4 : img->depth == 24 ? 3 : 1;
    int lineBytes = (img->width * bits + 7) / 8;
    lineBytes += lineBytes & 1; /* lines are kept an even number of bytes */
    const size_t lineTotal = (size_t)lineBytes * planes;
    /* worst case, every byte takes two */
    const size_t bound = 128 + 2 * lineTotal * (size_t)img->height + 769;
    BYTE* out = (BYTE*)calloc(1, bound);
    BYTE* line = (BYTE*)malloc(lineTotal);
    if (!out || !line) {
        free(out), free(line);
        return NULL;
    }
    out[0] = 10, out[1] = 5, out[2] = 1, out[3] = (BYTE)bits;
    PutWord(out + 8, (unsigned)img->width - 1);
    PutWord(out + 10, (unsigned)img->height - 1);
    PutWord(out + 12, 96), PutWord(out + 14, 96);
    for (int i = 0; img->depth == 4 && i < 16 && i < img->colorCount; ++i) {
        out[16 + 3 * i] = img->colors[i].rgbRed;
        out[17 + 3 * i] = img->colors[i].rgbGreen;
        out[18 + 3 * i] = img->colors[i].rgbBlue;
    }
    out[65] = (BYTE)planes;
    PutWord(out + 66, (unsigned)lineBytes);
    PutWord(out + 68, img->depth == 8 && DibIsGreyRamp(img) ? 2 : 1);
    /* a one-plane page shows bit 1 as white */
    const int invert = img->depth == 1 && DibZeroIsLight(img);
    size_t o = 128;
    for (int y = 0; y < img->height; ++y) {
        SplitRow(img, y, planes, lineBytes, invert, line);
        for (int p = 0; p < planes; ++p) o += EncodeLine(line + (size_t)p * lineBytes, lineBytes, out + o);
    }
    if (img->depth == 8) {
        out[o++] = 12;
        for (int i = 0; i < 256; ++i, o += 3) {
            if (i >= img->colorCount) continue;
            out[o] = img->colors[i].rgbRed, out[o + 1] = img->colors[i].rgbGreen, out[o + 2] = img->colors[i].rgbBlue;
        }
    }
    free(line);
    *size = o;
    return out;
}
