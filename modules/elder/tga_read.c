/* TGA reader: colour-mapped, true-colour and grey images, plain or run-length
 * coded, any origin. Mapped and grey images become 8-bit DIBs, the rest
 * 24-bit, with alpha laid over white. */
#include "tga.h"

#include <stdlib.h>
#include <string.h>

typedef struct {
    int type, mapFirst, mapLength, mapBits, width, height, bits, flags;
    size_t mapAt, pixelsAt;
} TgaShape;

static unsigned Word(const BYTE* p) { return p[0] | (unsigned)p[1] << 8; }

static int ReadShape(const BYTE* d, size_t size, TgaShape* s) {
    if (size < 18) return 0;
    s->type = d[2] & ~8; /* 9, 10, 11 are 1, 2, 3 run-length coded */
    s->mapFirst = (int)Word(d + 3), s->mapLength = (int)Word(d + 5), s->mapBits = d[7];
    s->width = (int)Word(d + 12), s->height = (int)Word(d + 14);
    s->bits = d[16], s->flags = d[17];
    s->mapAt = 18 + (size_t)d[0];
    const int mapBytes = d[1] ? s->mapLength * ((s->mapBits + 7) / 8) : 0;
    s->pixelsAt = s->mapAt + (size_t)mapBytes;
    if (d[1] > 1 || s->width == 0 || s->height == 0 || s->pixelsAt > size) return 0;
    if (s->type == 1) {
        if (!d[1] || s->bits != 8 || !(s->mapBits == 15 || s->mapBits == 16 || s->mapBits == 24 || s->mapBits == 32))
            return 0;
    } else if (s->type == 2) {
        if (!(s->bits == 15 || s->bits == 16 || s->bits == 24 || s->bits == 32)) return 0;
    } else if (s->type != 3 || s->bits != 8) {
        return 0;
    }
    /* a run packet of 1 + pixel bytes stands for at most 128 pixels, so
     * data too short for the size claimed is refused before any block */
    const double pixels = (double)s->width * s->height, have = (double)(size - s->pixelsAt);
    const int pixelBytes = (s->bits + 7) / 8;
    return (d[2] & 8) ? have * 128 >= pixels : have >= pixels * pixelBytes;
}

/* One pixel of 2, 3 or 4 bytes as blue, green, red; alpha over white. */
static void ToBgr(const BYTE* p, int bits, int alpha, BYTE* out) {
    if (bits <= 16) {
        const unsigned v = Word(p);
        out[0] = (BYTE)((v & 31) * 255 / 31);
        out[1] = (BYTE)((v >> 5 & 31) * 255 / 31);
        out[2] = (BYTE)((v >> 10 & 31) * 255 / 31);
        return;
    }
    const int a = bits == 32 && alpha ? p[3] : 255;
    for (int c = 0; c < 3; ++c) out[c] = (BYTE)((p[c] * a + 255 * (255 - a) + 127) / 255);
}

static void SetTable(DibImage* img, const BYTE* d, const TgaShape* s) {
    if (s->type == 3) {
        DibSetGreyTable(img);
        return;
    }
    const int step = (s->mapBits + 7) / 8;
    for (int i = 0; i < s->mapLength; ++i) {
        const int index = s->mapFirst + i;
        if (index > 255) break;
        BYTE bgr[3];
        ToBgr(d + s->mapAt + (size_t)i * step, s->mapBits, 0, bgr);
        img->colors[index].rgbBlue = bgr[0], img->colors[index].rgbGreen = bgr[1], img->colors[index].rgbRed = bgr[2];
    }
}

typedef struct {
    const BYTE* data;
    size_t size, at;
    int count, repeat, pixelBytes, coded;
} PixelReader;

/* Next pixel's bytes; NULL when the data ends first. */
static const BYTE* NextPixel(PixelReader* r) {
    if (!r->coded) {
        if (r->size - r->at < (size_t)r->pixelBytes) return NULL;
        r->at += r->pixelBytes;
        return r->data + r->at - r->pixelBytes;
    }
    if (r->count == 0) {
        if (r->at >= r->size) return NULL;
        const BYTE head = r->data[r->at++];
        r->count = (head & 127) + 1, r->repeat = head >> 7;
        if (r->size - r->at < (size_t)r->pixelBytes) return NULL;
        if (r->repeat) r->at += r->pixelBytes;
    } else if (!r->repeat) {
        if (r->size - r->at < (size_t)r->pixelBytes) return NULL;
    }
    --r->count;
    if (r->repeat) return r->data + r->at - r->pixelBytes;
    r->at += r->pixelBytes;
    return r->data + r->at - r->pixelBytes;
}

HDIB TgaDecode(const BYTE* data, size_t size) {
    TgaShape s;
    if (!ReadShape(data, size, &s)) return 0;
    DibImage img;
    const int depth = s.type == 2 ? 24 : 8;
    if (!DibCreate(&img, s.width, s.height, depth, depth == 8 ? 256 : 0)) return 0;
    if (depth == 8) SetTable(&img, data, &s);
    PixelReader r = {data, size, s.pixelsAt, 0, 0, (s.bits + 7) / 8, (data[2] & 8) != 0};
    const int topFirst = (s.flags & 0x20) != 0, rightFirst = (s.flags & 0x10) != 0;
    const int alpha = (s.flags & 15) != 0;
    for (int line = 0; line < s.height; ++line) {
        BYTE* row = DibRow(&img, topFirst ? line : s.height - 1 - line);
        for (int i = 0; i < s.width; ++i) {
            const BYTE* p = NextPixel(&r);
            if (!p) {
                /* a short file gives no image rather than rows of nothing */
                DibDiscard(&img);
                return 0;
            }
            const int x = rightFirst ? s.width - 1 - i : i;
            if (depth == 8) row[x] = p[0]; /* the table holds entry v at index v */
            else ToBgr(p, s.bits, alpha, row + 3 * (size_t)x);
        }
    }
    return DibFinish(&img);
}
