/* GIF frames in memory: the reader and writer behind CEDAR32.DLL and CEDAR.DLL. */
#ifndef PRISM_GIF_ACCESS_H
#define PRISM_GIF_ACCESS_H

#include "module_image.h"

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Frame `index` (from 0) of a GIF held in data[0..size); 0 on failure. */
HDIB GifDecodeFrame(const BYTE* data, size_t size, unsigned index, int* status);
/* Writes an image as a one-frame GIF87a file; 1 when written. */
int GifEncode(const DibImage* image, int interlaced, FILE* out, int* status);

#ifdef __cplusplus
}
#endif
#endif
