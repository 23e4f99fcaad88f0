/* PCX reader: run-length planes of 1 to 8 bits into a DIB of 1, 4, 8 or 24 bits. */
#include "pcx.h"

#include <stdlib.h>
#include <string.h>

enum { kHeaderBytes = 128, kTailPalette = 769 };

typedef struct {
    int width, height, bits, planes, lineBytes, encoded;
} PcxShape;

static unsigned Word(const BYTE* p) { return p[0] | (unsigned)p[1] << 8; }

/* The default 16 colours of a page whose header table is empty. */
static const BYTE kEgaColors[16][3] = {
    {0, 0, 0},     {0, 0, 170},   {0, 170, 0},   {0, 170, 170}, {170, 0, 0},    {170, 0, 170},
    {170, 85, 0},  {170, 170, 170}, {85, 85, 85}, {85, 85, 255}, {85, 255, 85}, {85, 255, 255},
    {255, 85, 85}, {255, 85, 255}, {255, 255, 85}, {255, 255, 255}};

/* The DIB depth a page becomes, 0 for a layout the reader does not take. */
static int TargetDepth(const PcxShape* s) {
    if (s->planes < 1) return 0;
    if (s->bits == 1 && s->planes == 1) return 1;
    if (s->bits == 1 && s->planes <= 4) return 4;
    if (s->bits == 4 && s->planes == 1) return 4;
    if (s->bits == 8 && s->planes == 1) return 8;
    if (s->bits == 8 && (s->planes == 3 || s->planes == 4)) return 24;
    return 0;
}

static int ReadShape(const BYTE* d, size_t size, PcxShape* s) {
    if (size < kHeaderBytes || d[0] != 10 || d[2] > 1) return 0;
    const unsigned x0 = Word(d + 4), y0 = Word(d + 6), x1 = Word(d + 8), y1 = Word(d + 10);
    if (x1 < x0 || y1 < y0) return 0;
    s->width = (int)(x1 - x0) + 1;
    s->height = (int)(y1 - y0) + 1;
    s->bits = d[3];
    s->planes = d[65];
    s->lineBytes = (int)Word(d + 66);
    s->encoded = d[2] == 1;
    if (!TargetDepth(s) || s->lineBytes < (s->width * s->bits + 7) / 8) return 0;
    /* A run of two bytes stands for at most 63, so a page whose data could
     * not fill the rows it claims is refused before anything is made. */
    const double need = (double)s->lineBytes * s->planes * s->height;
    const double have = (double)(size - kHeaderBytes) * (s->encoded ? 31.5 : 1.0);
    return need <= have;
}

static void SetTable(DibImage* img, const BYTE* d, size_t size, const PcxShape* s) {
    if (img->depth == 1) {
        /* bit 1 is white on a one-plane page */
        img->colors[1].rgbRed = img->colors[1].rgbGreen = img->colors[1].rgbBlue = 255;
    } else if (img->depth == 4) {
        int empty = 1;
        for (int i = 0; i < 48; ++i) empty &= d[16 + i] == 0;
        for (int i = 0; i < 16; ++i) {
            const BYTE* c = empty ? kEgaColors[i] : d + 16 + 3 * i;
            img->colors[i].rgbRed = c[0], img->colors[i].rgbGreen = c[1], img->colors[i].rgbBlue = c[2];
        }
    } else if (img->depth == 8) {
        const BYTE* tail = size >= kHeaderBytes + kTailPalette ? d + size - kTailPalette : NULL;
        if (!tail || tail[0] != 12 || !s->encoded) {
            DibSetGreyTable(img);
            return;
        }
        for (int i = 0; i < 256; ++i) {
            img->colors[i].rgbRed = tail[1 + 3 * i];
            img->colors[i].rgbGreen = tail[2 + 3 * i];
            img->colors[i].rgbBlue = tail[3 + 3 * i];
        }
    }
}

/* Spreads one decoded line (its planes one after another) into a DIB row. */
static void StoreLine(const PcxShape* s, const BYTE* line, BYTE* row, int depth) {
    const int w = s->width, lb = s->lineBytes;
    if (depth == 24) {
        for (int x = 0; x < w; ++x) {
            row[3 * x + 2] = line[x], row[3 * x + 1] = line[lb + x], row[3 * x] = line[2 * lb + x];
        }
    } else if (depth == 4 && s->bits == 1) {
        for (int x = 0; x < w; ++x) {
            int v = 0;
            for (int p = 0; p < s->planes; ++p) v |= ((line[p * lb + (x >> 3)] >> (7 - (x & 7))) & 1) << p;
            row[x >> 1] |= (BYTE)((x & 1) ? v : v << 4);
        }
    } else {
        memcpy(row, line, ((size_t)w * depth + 7) / 8);
    }
}

typedef struct {
    const BYTE* data;
    size_t size, at;
    int run, encoded;
    BYTE value;
} RunReader;

/* Next decoded byte; 0 when the data ends first. A run may carry on into
 * the next line, as some writers make them; a run of 0 is skipped. */
static int NextByte(RunReader* r, BYTE* out) {
    while (r->run == 0) {
        if (r->at >= r->size) return 0;
        r->value = r->data[r->at++];
        r->run = 1;
        if (r->encoded && r->value >= 0xC0) {
            if (r->at >= r->size) return 0;
            r->run = r->value & 0x3F;
            r->value = r->data[r->at++];
        }
    }
    --r->run;
    *out = r->value;
    return 1;
}

HDIB PcxDecode(const BYTE* data, size_t size, int* status) {
    PcxShape s;
    if (!ReadShape(data, size, &s)) {
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    DibImage img;
    const int depth = TargetDepth(&s);
    const size_t lineTotal = (size_t)s.lineBytes * s.planes;
    BYTE* line = (BYTE*)malloc(lineTotal);
    if (!line || !DibCreate(&img, s.width, s.height, depth, depth <= 8 ? 1 << depth : 0)) {
        free(line);
        SetStatus(status, kModuleNoMemory);
        return 0;
    }
    SetTable(&img, data, size, &s);
    RunReader r = {data, size, kHeaderBytes, 0, s.encoded, 0};
    int ok = 1;
    for (int y = 0; ok && y < s.height; ++y) {
        for (size_t i = 0; ok && i < lineTotal; ++i) ok = NextByte(&r, line + i);
        if (ok) StoreLine(&s, line, DibRow(&img, y), depth);
    }
    free(line);
    if (!ok) {
        /* a short page gives no image rather than rows of nothing */
        DibDiscard(&img);
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    SetStatus(status, kModuleOk);
    return DibFinish(&img);
}
