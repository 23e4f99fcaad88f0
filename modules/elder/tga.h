/* TGA images in memory: the reader and writer behind ELDER32.DLL and ELDER.DLL. */
#ifndef PRISM_TGA_H
#define PRISM_TGA_H

#include "module_image.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Decodes a TGA image held in data[0..size); 0 on failure. */
HDIB TgaDecode(const BYTE* data, size_t size);
/* Encodes an image into a new malloc block, run-length coded when asked. */
BYTE* TgaEncode(const DibImage* image, int runLength, size_t* size);

#ifdef __cplusplus
}
#endif
#endif
