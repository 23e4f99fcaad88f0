/* GIF reader: each frame is a page, read with its local table (or the
 * global one) into a DIB of 1, 4 or 8 bits, interlaced rows put in place. */
#include "gif_access.h"

#include <gif_lib.h>
#include <stdlib.h>
#include <string.h>

typedef struct {
    const BYTE* data;
    size_t size, at;
} GifInput;

static int ReadInput(GifFileType* gif, GifByteType* buf, int n) {
    GifInput* in = (GifInput*)gif->UserData;
    size_t take = in->size - in->at < (size_t)n ? in->size - in->at : (size_t)n;
    memcpy(buf, in->data + in->at, take);
    in->at += take;
    return (int)take;
}

static int SkipFrame(GifFileType* gif) {
    int codeSize;
    GifByteType* block = NULL;
    if (DGifGetCode(gif, &codeSize, &block) == GIF_ERROR) return 0;
    while (block)
        if (DGifGetCodeNext(gif, &block) == GIF_ERROR) return 0;
    return 1;
}

static int SkipExtension(GifFileType* gif) {
    int code;
    GifByteType* block = NULL;
    if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return 0;
    while (block)
        if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return 0;
    return 1;
}

/* The frame's indices, one byte each, rows from the top. */
static BYTE* ReadIndices(GifFileType* gif, int w, int h) {
    BYTE* px = (BYTE*)malloc((size_t)w * h);
    if (!px) return NULL;
    static const int start[4] = {0, 4, 2, 1}, step[4] = {8, 8, 4, 2};
    const int passes = gif->Image.Interlace ? 4 : 1;
    for (int p = 0; p < passes; ++p) {
        for (int y = passes == 1 ? 0 : start[p]; y < h; y += passes == 1 ? 1 : step[p]) {
            if (DGifGetLine(gif, px + (size_t)y * w, w) == GIF_ERROR) {
                free(px);
                return NULL;
            }
        }
    }
    return px;
}

static HDIB MakeDib(const BYTE* px, int w, int h, const ColorMapObject* map) {
    int used = map ? map->ColorCount : 256;
    for (size_t i = 0; i < (size_t)w * h; ++i)
        if (px[i] >= used) used = px[i] + 1;
    const int depth = used <= 2 ? 1 : used <= 16 ? 4 : 8;
    DibImage img;
    if (!DibCreate(&img, w, h, depth, 1 << depth)) return 0;
    if (!map) DibSetGreyTable(&img);
    for (int i = 0; map && i < map->ColorCount && i < (1 << depth); ++i) {
        img.colors[i].rgbRed = map->Colors[i].Red;
        img.colors[i].rgbGreen = map->Colors[i].Green;
        img.colors[i].rgbBlue = map->Colors[i].Blue;
    }
    for (int y = 0; y < h; ++y) {
        BYTE* row = DibRow(&img, y);
        const BYTE* src = px + (size_t)y * w;
        if (depth == 8) memcpy(row, src, (size_t)w);
        for (int x = 0; depth == 4 && x < w; ++x) row[x >> 1] |= (BYTE)((x & 1) ? src[x] : src[x] << 4);
        for (int x = 0; depth == 1 && x < w; ++x) row[x >> 3] |= (BYTE)(src[x] << (7 - (x & 7)));
    }
    return DibFinish(&img);
}

static HDIB DecodeCurrent(GifFileType* gif, size_t inputSize, int* status) {
    const int w = gif->Image.Width, h = gif->Image.Height;
    /* one code of at least 2 bits stands for at most 4096 pixels, so a
     * frame larger than its data could code is refused before reading */
    if (w <= 0 || h <= 0 || (double)w * h > (double)inputSize * 16384) {
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    BYTE* px = ReadIndices(gif, w, h);
    if (!px) {
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    HDIB dib = MakeDib(px, w, h, gif->Image.ColorMap ? gif->Image.ColorMap : gif->SColorMap);
    free(px);
    SetStatus(status, dib ? kModuleOk : kModuleNoMemory);
    return dib;
}

HDIB GifDecodeFrame(const BYTE* data, size_t size, unsigned index, int* status) {
    GifInput in = {data, size, 0};
    int error = 0;
    GifFileType* gif = DGifOpen(&in, ReadInput, &error);
    if (!gif) {
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    HDIB dib = 0;
    unsigned frame = 0;
    for (int done = 0; !done;) {
        GifRecordType type;
        done = 1;
        SetStatus(status, kModuleBadFile);
        if (DGifGetRecordType(gif, &type) == GIF_ERROR) break;
        if (type == IMAGE_DESC_RECORD_TYPE) {
            if (DGifGetImageDesc(gif) == GIF_ERROR) break;
            if (frame++ == index) dib = DecodeCurrent(gif, size, status);
            else done = !SkipFrame(gif);
        } else if (type == EXTENSION_RECORD_TYPE) {
            done = !SkipExtension(gif);
        } else if (type == TERMINATE_RECORD_TYPE) {
            SetStatus(status, kModuleNoPage);
        }
    }
    DGifCloseFile(gif, &error);
    return dib;
}
