/* PCX pages in memory: the reader and writer behind the PCX and DCX entries. */
#ifndef PRISM_PCX_H
#define PRISM_PCX_H

#include "module_image.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Decodes one PCX page held in data[0..size); 0 on failure, with status. */
HDIB PcxDecode(const BYTE* data, size_t size, int* status);
/* Encodes an image as a PCX page into a new malloc block; 0 on failure. */
BYTE* PcxEncode(const DibImage* image, size_t* size);

/* DCX: a 32-bit tag, then up to 1023 page offsets ended by a 0. */
#define DCX_TAG 0x3ADE68B1u
#define DCX_SLOTS 1024
HDIB DcxDecodePage(const BYTE* data, size_t size, unsigned page, int* status);

#ifdef __cplusplus
}
#endif
#endif
