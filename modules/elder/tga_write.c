/* TGA writer: 1, 4 and 8-bit images as 8-bit colour-mapped (grey when the
 * table is the grey ramp), 24-bit as true colour; rows bottom first. */
#include "tga.h"

#include <stdlib.h>
#include <string.h>

/* Run-length codes one line of n pixels of `bytes` each; packets never
 * cross a line. */
static size_t EncodeLine(const BYTE* px, int n, int bytes, BYTE* out) {
    size_t o = 0;
    int i = 0;
    while (i < n) {
        int run = 1;
        while (i + run < n && run < 128 && !memcmp(px + (size_t)(i + run) * bytes, px + (size_t)i * bytes, bytes)) ++run;
        if (run > 1) {
            out[o++] = (BYTE)(0x80 | (run - 1));
            memcpy(out + o, px + (size_t)i * bytes, bytes);
            o += bytes, i += run;
            continue;
        }
        int raw = 1;
        while (i + raw < n && raw < 128 &&
               (i + raw + 1 >= n || memcmp(px + (size_t)(i + raw) * bytes, px + (size_t)(i + raw + 1) * bytes, bytes)))
            ++raw;
        out[o++] = (BYTE)(raw - 1);
        memcpy(out + o, px + (size_t)i * bytes, (size_t)raw * bytes);
        o += (size_t)raw * bytes, i += raw;
    }
    return o;
}

BYTE* TgaEncode(const DibImage* img, int runLength, size_t* size) {
    const int mapped = img->depth <= 8, grey = img->depth == 8 && DibIsGreyRamp(img);
    const int bytes = mapped ? 1 : 3, mapLength = mapped && !grey ? img->colorCount : 0;
    const size_t lineBytes = (size_t)img->width * bytes;
    /* a coded line is at most one head byte more per pixel */
    const size_t bound = 18 + 3 * (size_t)mapLength + (lineBytes + img->width) * (size_t)img->height;
    BYTE* out = (BYTE*)calloc(1, bound);
    BYTE* line = (BYTE*)malloc(lineBytes);
    if (!out || !line) {
        free(out), free(line);
        return NULL;
    }
    out[1] = mapLength ? 1 : 0;
    out[2] = (BYTE)((grey ? 3 : mapped ? 1 : 2) | (runLength ? 8 : 0));
    out[5] = (BYTE)mapLength, out[6] = (BYTE)(mapLength >> 8), out[7] = mapLength ? 24 : 0;
    out[12] = (BYTE)img->width, out[13] = (BYTE)(img->width >> 8);
    out[14] = (BYTE)img->height, out[15] = (BYTE)(img->height >> 8);
    out[16] = (BYTE)(bytes * 8);
    size_t o = 18;
    for (int i = 0; i < mapLength; ++i, o += 3) {
        out[o] = img->colors[i].rgbBlue, out[o + 1] = img->colors[i].rgbGreen, out[o + 2] = img->colors[i].rgbRed;
    }
    for (int y = img->height - 1; y >= 0; --y) {
        const BYTE* row = DibRow(img, y);
        if (mapped)
            for (int x = 0; x < img->width; ++x) line[x] = (BYTE)DibIndexAt(row, img->depth, x);
        else
            memcpy(line, row, lineBytes);
        if (runLength) {
            o += EncodeLine(line, img->width, bytes, out + o);
        } else {
            memcpy(out + o, line, lineBytes);
            o += lineBytes;
        }
    }
    free(line);
    *size = o;
    return out;
}
