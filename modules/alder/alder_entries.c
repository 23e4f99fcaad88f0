/* Entry points of ALDER32.DLL (loading TIFF and CALS) and ALDER.DLL (saving). */
#include "tiff_access.h"

#include <stdio.h>
#include <stdlib.h>

#ifdef PRISM_MODULE_LOAD
/* Pages count from 1 (0 also means the first). The third argument is
 * reserved: the library passes 0, and nothing is stored through it. */
MODULE_EXPORT HDIB WINAPI LoadAlderIntoDIB(LPCSTR fileName, UINT page, int* reserved) {
    (void)reserved;
    TiffMemory m = {0};
    m.data = ReadWholeFile(fileName, &m.size, NULL);
    if (!m.data) return 0;
    TIFF* tif = TiffOpenMemory(&m, "r");
    int noPage;
    HDIB dib = tif ? TiffDecodePage(tif, &m, page ? page - 1 : 0, &noPage) : 0;
    if (tif) TIFFClose(tif);
    free(m.data);
    return dib;
}

MODULE_EXPORT HDIB WINAPI LoadMapleIntoDIB(LPCSTR fileName, int reserved) {
    (void)reserved;
    size_t size;
    BYTE* data = ReadWholeFile(fileName, &size, NULL);
    if (!data) return 0;
    HDIB dib = CalsDecode(data, size);
    free(data);
    return dib;
}
#endif

#ifdef PRISM_MODULE_SAVE
/* compression: a TIFF compression number (1 none, 2, 3 or 4 for fax
 * codings of 1-bit images, 5 LZW, 8 Deflate, 32773 PackBits), 0 for the
 * usual choice (G4 for 1-bit, LZW otherwise). newFile: 1 writes a new
 * file, 0 adds the image as a page at the end of an existing one.
 * Result 1 when written, 0 otherwise. */
MODULE_EXPORT int WINAPI SaveDIBInAlderFormat(LPCSTR fileName, HDIB dib, int compression, int newFile) {
    DibImage img;
    if (!DibOpen(&img, dib)) return 0;
    TiffMemory flags = {0};
    TIFF* tif = TiffOpenFile(fileName, newFile ? "w" : "a", &flags);
    int ok = tif && TiffEncodePage(tif, &img, compression) && !flags.damaged;
    if (tif) TIFFClose(tif);
    DibClose(&img);
    return ok;
}

/* Bilevel images only; the three further arguments are reserved. */
MODULE_EXPORT int WINAPI SAVEDIBINMAPLEFORMAT(LPCSTR fileName, HDIB dib, int reserved1, int reserved2, int reserved3) {
    (void)reserved1, (void)reserved2, (void)reserved3;
    DibImage img;
    if (!DibOpen(&img, dib)) return 0;
    size_t size;
    BYTE* data = CalsEncode(&img, &size);
    DibClose(&img);
    if (!data) return 0;
    FILE* f = fileName ? fopen(fileName, "wb") : NULL;
    int ok = f && fwrite(data, 1, size, f) == size;
    if (f && fclose(f) != 0) ok = 0;
    free(data);
    return ok;
}
#endif
