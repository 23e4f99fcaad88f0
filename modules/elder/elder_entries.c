/* Entry points of ELDER32.DLL (loading TGA) and ELDER.DLL (saving it). */
#include "tga.h"

#include <stdio.h>
#include <stdlib.h>

#ifdef PRISM_MODULE_LOAD
/* The second argument is reserved; callers pass 0. */
MODULE_EXPORT HDIB WINAPI LoadElderIntoDIB(LPCSTR fileName, int reserved) {
    (void)reserved;
    size_t size;
    BYTE* data = ReadWholeFile(fileName, &size, NULL);
    if (!data) return 0;
    HDIB dib = TgaDecode(data, size);
    free(data);
    return dib;
}
#endif

#ifdef PRISM_MODULE_SAVE
/* runLength: 1 codes the rows in runs; reserved: callers pass 1.
 * Result 1 when written, 0 otherwise. */
MODULE_EXPORT int WINAPI SaveDIBInElderFormat(LPCSTR fileName, HDIB dib, int runLength, int reserved) {
    (void)reserved;
    DibImage img;
    if (!DibOpen(&img, dib)) return 0;
    size_t size;
    BYTE* data = TgaEncode(&img, runLength != 0, &size);
    DibClose(&img);
    if (!data) return 0;
    FILE* f = fileName ? fopen(fileName, "wb") : NULL;
    int ok = f && fwrite(data, 1, size, f) == size;
    if (f && fclose(f) != 0) ok = 0;
    free(data);
    return ok;
}
#endif
