/* Entry points of CEDAR32.DLL (loading GIF) and CEDAR.DLL (saving it). */
#include "gif_access.h"

#include <stdlib.h>

#ifdef PRISM_MODULE_LOAD
/* Frames are pages, counted from 1 (0 also means the first). */
MODULE_EXPORT HDIB WINAPI LoadCedarIntoDIB(LPCSTR fileName, UINT page, int* status) {
    size_t size;
    BYTE* data = ReadWholeFile(fileName, &size, status);
    if (!data) return 0;
    HDIB dib = GifDecodeFrame(data, size, page ? page - 1 : 0, status);
    free(data);
    return dib;
}
#endif

#ifdef PRISM_MODULE_SAVE
/* interlaced: non-zero writes the rows interlaced. Result 1 when written. */
MODULE_EXPORT int WINAPI SaveDIBInCedarFormat(LPCSTR fileName, HDIB dib, int interlaced, int* status) {
    DibImage img;
    if (!DibOpen(&img, dib)) {
        SetStatus(status, kModuleBadImage);
        return 0;
    }
    FILE* f = fileName ? fopen(fileName, "wb") : NULL;
    int ok = f && GifEncode(&img, interlaced, f, status);
    if (!f) SetStatus(status, kModuleCannotWrite);
    if (f && fclose(f) != 0) ok = 0;
    DibClose(&img);
    return ok;
}
#endif
