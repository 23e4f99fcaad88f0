/* Shared by the codec modules: image blocks made for the host, the host's
 * blocks read for saving, whole-file reads, and the status codes. */
#ifndef PRISM_MODULE_IMAGE_H
#define PRISM_MODULE_IMAGE_H

#include "prism32.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifdef _WIN32
#define MODULE_EXPORT __declspec(dllexport)
#else
#define MODULE_EXPORT __attribute__((visibility("default")))
#endif

/* Status values the modules store through a host's status pointer. */
enum {
    kModuleOk = 0,
    kModuleCannotOpen = 1,  /* the file cannot be opened or read */
    kModuleBadFile = 2,     /* not this format, or damaged */
    kModuleNoMemory = 3,    /* no block for the image, or a size past the limits */
    kModuleNoPage = 4,      /* the page asked for is not in the file */
    kModuleCannotWrite = 5, /* the file cannot be created or written */
    kModuleBadImage = 6     /* the host's block is no image the writer takes */
};

/* Largest image block a module makes or takes, and largest side. */
#define MODULE_MAX_BLOCK ((size_t)512 << 20)
#define MODULE_MAX_SIDE 65535

/* One locked DIB: rows are kept bottom first, DibRow counts from the top. */
typedef struct {
    HDIB handle;
    BITMAPINFOHEADER* header;
    RGBQUAD* colors;
    int colorCount;
    BYTE* bits;
    size_t stride;
    int width, height, depth;
    int topDown; /* a host's block with negative height */
} DibImage;

size_t DibStride(int width, int depth);

/* A new zero-filled image with a table of `colors` entries (all of them
 * counted in biClrUsed), locked. 0 when the size is refused or no block. */
int DibCreate(DibImage* image, int width, int height, int depth, int colors);
/* Unlocks and hands the block over; the image no longer owns it. */
HDIB DibFinish(DibImage* image);
/* Unlocks and frees a block that is not handed over. */
void DibDiscard(DibImage* image);
BYTE* DibRow(const DibImage* image, int y);
void DibSetGreyTable(DibImage* image);

/* Locks a host's block for reading: a 40-byte header, depth 1, 4, 8 or
 * 24, uncompressed, and as many bytes in the block as the header claims.
 * 0 (and nothing locked) otherwise. */
int DibOpen(DibImage* image, HDIB dib);
void DibClose(DibImage* image);
/* Colour index of pixel x of a row of a 1, 4 or 8-bit image. */
int DibIndexAt(const BYTE* row, int depth, int x);
/* Blue, green, red of pixel x, through the table for palette depths; an
 * index past the table reads black. */
void DibColorAt(const DibImage* image, const BYTE* row, int x, BYTE bgr[3]);
/* 1 when the table is the grey ramp of the depth (0, 255/(n-1), ...). */
int DibIsGreyRamp(const DibImage* image);
/* 1 when table entry 0 is lighter than entry 1 (a 1-bit image with white
 * at 0, as fax images are). */
int DibZeroIsLight(const DibImage* image);

/* Reads a whole file into a new malloc block; 0 on failure, with status. */
BYTE* ReadWholeFile(const char* fileName, size_t* size, int* status);
void SetStatus(int* status, int value);

#ifdef __cplusplus
}
#endif
#endif
