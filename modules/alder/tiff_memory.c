/* libtiff's client procedures over a block of memory, and quiet opening. */
#include "tiff_access.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static tmsize_t MemRead(thandle_t h, void* buf, tmsize_t n) {
    TiffMemory* m = (TiffMemory*)h;
    if (n < 0 || m->at >= m->size) return 0;
    size_t take = m->size - m->at < (size_t)n ? m->size - m->at : (size_t)n;
    memcpy(buf, m->data + m->at, take);
    m->at += take;
    return (tmsize_t)take;
}

static tmsize_t MemWrite(thandle_t h, void* buf, tmsize_t n) {
    TiffMemory* m = (TiffMemory*)h;
    if (!m->growable || n < 0 || (size_t)n > MODULE_MAX_BLOCK - m->at) return -1;
    const size_t end = m->at + (size_t)n;
    if (end > m->capacity) {
        size_t cap = m->capacity ? m->capacity : 4096;
        while (cap < end) cap *= 2;
        BYTE* grown = (BYTE*)realloc(m->data, cap);
        if (!grown) return -1;
        memset(grown + m->capacity, 0, cap - m->capacity);
        m->data = grown, m->capacity = cap;
    }
    memcpy(m->data + m->at, buf, (size_t)n);
    m->at = end;
    if (end > m->size) m->size = end;
    return n;
}

static toff_t MemSeek(thandle_t h, toff_t off, int whence) {
    TiffMemory* m = (TiffMemory*)h;
    const size_t base = whence == SEEK_CUR ? m->at : whence == SEEK_END ? m->size : 0;
    if (off > MODULE_MAX_BLOCK || base + off > MODULE_MAX_BLOCK) return (toff_t)-1;
    m->at = base + (size_t)off;
    return m->at;
}

static int MemClose(thandle_t h) { (void)h; return 0; }
static toff_t MemSize(thandle_t h) { return ((TiffMemory*)h)->size; }
static int NoMap(thandle_t h, void** base, toff_t* size) { (void)h, (void)base, (void)size; return 0; }
static void NoUnmap(thandle_t h, void* base, toff_t size) { (void)h, (void)base, (void)size; }

/* Errors, and the warnings of a short strip or of a tag that could not be
 * read, mark the file as damaged: libtiff would otherwise go on with rows
 * filled with white or a table left out. */
static int OnError(TIFF* tif, void* user, const char* module, const char* fmt, va_list ap) {
    (void)tif, (void)module, (void)fmt, (void)ap;
    if (user) ((TiffMemory*)user)->damaged = 1;
    return 1;
}

static int OnWarning(TIFF* tif, void* user, const char* module, const char* fmt, va_list ap) {
    (void)tif, (void)module;
    char text[256];
    vsnprintf(text, sizeof text, fmt ? fmt : "", ap);
    if (user && (strstr(text, "Premature EOF") || strstr(text, "error"))) ((TiffMemory*)user)->damaged = 1;
    return 1;
}

static TIFFOpenOptions* QuietOptions(TiffMemory* flags) {
    TIFFOpenOptions* opts = TIFFOpenOptionsAlloc();
    if (!opts) return NULL;
    TIFFOpenOptionsSetErrorHandlerExtR(opts, OnError, flags);
    TIFFOpenOptionsSetWarningHandlerExtR(opts, OnWarning, flags);
    TIFFOpenOptionsSetMaxSingleMemAlloc(opts, (tmsize_t)MODULE_MAX_BLOCK);
    return opts;
}

TIFF* TiffOpenMemory(TiffMemory* memory, const char* mode) {
    TIFFOpenOptions* opts = QuietOptions(memory);
    if (!opts) return NULL;
    memory->at = 0;
    memory->growable = mode[0] == 'w';
    TIFF* tif = TIFFClientOpenExt("memory", mode, (thandle_t)memory, MemRead, MemWrite, MemSeek, MemClose,
                                  MemSize, NoMap, NoUnmap, opts);
    TIFFOpenOptionsFree(opts);
    return tif;
}

TIFF* TiffOpenFile(const char* fileName, const char* mode, TiffMemory* flags) {
    TIFFOpenOptions* opts = QuietOptions(flags);
    if (!opts || !fileName) {
        TIFFOpenOptionsFree(opts);
        return NULL;
    }
    TIFF* tif = TIFFOpenExt(fileName, mode, opts);
    TIFFOpenOptionsFree(opts);
    return tif;
}
