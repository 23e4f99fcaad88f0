/* Entry points of BIRCH32.DLL (loading PCX and DCX) and BIRCH.DLL (saving). */
#include "pcx.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef PRISM_MODULE_LOAD
MODULE_EXPORT HDIB WINAPI LoadBirchIntoDIB(LPCSTR fileName, int* status) {
    size_t size;
    BYTE* data = ReadWholeFile(fileName, &size, status);
    if (!data) return 0;
    HDIB dib = PcxDecode(data, size, status);
    free(data);
    return dib;
}

MODULE_EXPORT HDIB WINAPI LoadBeechIntoDIB(LPCSTR fileName, UINT page, int* status) {
    size_t size;
    BYTE* data = ReadWholeFile(fileName, &size, status);
    if (!data) return 0;
    HDIB dib = DcxDecodePage(data, size, page, status);
    free(data);
    return dib;
}
#endif

#ifdef PRISM_MODULE_SAVE
static BYTE* EncodeHostImage(HDIB dib, size_t* size, int* status) {
    DibImage img;
    if (!DibOpen(&img, dib)) {
        SetStatus(status, kModuleBadImage);
        return NULL;
    }
    BYTE* page = PcxEncode(&img, size);
    DibClose(&img);
    if (!page) SetStatus(status, kModuleNoMemory);
    return page;
}

MODULE_EXPORT int WINAPI SaveDIBInBirchFormat(LPCSTR fileName, HDIB dib, int* status) {
    size_t size;
    BYTE* page = EncodeHostImage(dib, &size, status);
    if (!page) return 0;
    FILE* f = fileName ? fopen(fileName, "wb") : NULL;
    int ok = f && fwrite(page, 1, size, f) == size;
    if (f && fclose(f) != 0) ok = 0;
    free(page);
    SetStatus(status, ok ? kModuleOk : kModuleCannotWrite);
    return ok;
}

/* A new DCX file with an empty page table. */
MODULE_EXPORT int WINAPI MakeBeechFile(LPCSTR fileName, int* status) {
    BYTE head[4 + 4 * DCX_SLOTS] = {0};
    head[0] = 0xB1, head[1] = 0x68, head[2] = 0xDE, head[3] = 0x3A;
    FILE* f = fileName ? fopen(fileName, "wb") : NULL;
    int ok = f && fwrite(head, 1, sizeof head, f) == sizeof head;
    if (f && fclose(f) != 0) ok = 0;
    SetStatus(status, ok ? kModuleOk : kModuleCannotWrite);
    return ok;
}

/* Appends a page to an existing DCX file and enters it in the table; a
 * file that is no DCX, or whose table is full, is left as it was. */
MODULE_EXPORT int WINAPI SaveDIBInBeechFormat(LPCSTR fileName, HDIB dib, int* status) {
    FILE* f = fileName ? fopen(fileName, "r+b") : NULL;
    BYTE head[4 + 4 * DCX_SLOTS];
    size_t got = f ? fread(head, 1, sizeof head, f) : 0;
    if (!f || got < 8 || head[0] != 0xB1 || head[1] != 0x68 || head[2] != 0xDE || head[3] != 0x3A) {
        if (f) fclose(f);
        SetStatus(status, f ? kModuleBadFile : kModuleCannotOpen);
        return 0;
    }
    size_t slot = 0;
    while (4 + 4 * slot + 4 <= got && slot < DCX_SLOTS - 1 &&
           (head[4 + 4 * slot] | head[5 + 4 * slot] | head[6 + 4 * slot] | head[7 + 4 * slot]))
        ++slot;
    size_t size;
    BYTE* page = slot < DCX_SLOTS - 1 && 4 + 4 * slot + 4 <= got ? EncodeHostImage(dib, &size, status) : NULL;
    long end = -1;
    if (page && fseek(f, 0, SEEK_END) == 0) end = ftell(f);
    int ok = page && end > 0 && end <= 0x7FFFFFFFL && fwrite(page, 1, size, f) == size;
    if (ok) {
        const BYTE at[4] = {(BYTE)end, (BYTE)(end >> 8), (BYTE)(end >> 16), (BYTE)(end >> 24)};
        ok = fseek(f, (long)(4 + 4 * slot), SEEK_SET) == 0 && fwrite(at, 1, 4, f) == 4;
    }
    if (fclose(f) != 0) ok = 0;
    if (page) SetStatus(status, ok ? kModuleOk : kModuleCannotWrite);
    else if (slot >= DCX_SLOTS - 1 || 4 + 4 * slot + 4 > got) SetStatus(status, kModuleBadFile);
    free(page);
    return ok;
}
#endif
