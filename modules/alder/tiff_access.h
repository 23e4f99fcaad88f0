/* libtiff over memory, and the TIFF and CALS readers and writers of ALDER. */
#ifndef PRISM_TIFF_ACCESS_H
#define PRISM_TIFF_ACCESS_H

#include "module_image.h"

#include <tiffio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A file's bytes, read from or written to memory. */
typedef struct {
    BYTE* data;
    size_t size, capacity, at;
    int growable;
    int damaged; /* set when libtiff reports an error or a short strip */
} TiffMemory;

/* Opens a TIFF held in memory for reading ("r") or a growable one for
 * writing ("w"); libtiff's messages go nowhere but the damage flag. */
TIFF* TiffOpenMemory(TiffMemory* memory, const char* mode);
/* Opens a file for writing a new TIFF ("w") or adding a page ("a"). */
TIFF* TiffOpenFile(const char* fileName, const char* mode, TiffMemory* flags);

/* Page `index` (from 0) as a DIB; 0 when it is missing or damaged. */
HDIB TiffDecodePage(TIFF* tif, TiffMemory* memory, unsigned index, int* noPage);
/* Writes one page; compression 0 picks G4 for 1-bit images and LZW for
 * the rest. 1 when written. */
int TiffEncodePage(TIFF* tif, const DibImage* image, int compression);

HDIB CalsDecode(const BYTE* data, size_t size);
BYTE* CalsEncode(const DibImage* image, size_t* size);

#ifdef __cplusplus
}
#endif
#endif
