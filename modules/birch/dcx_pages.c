/* DCX files: a table of page offsets in front of PCX pages. */
#include "pcx.h"

static unsigned long Dword(const BYTE* p) {
    return p[0] | (unsigned long)p[1] << 8 | (unsigned long)p[2] << 16 | (unsigned long)p[3] << 24;
}

HDIB DcxDecodePage(const BYTE* data, size_t size, unsigned page, int* status) {
    if (size < 8 || Dword(data) != DCX_TAG) {
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    /* pages count from 1; 0 asks for the first as well */
    const unsigned index = page ? page - 1 : 0;
    const size_t slots = (size - 4) / 4 < DCX_SLOTS ? (size - 4) / 4 : DCX_SLOTS;
    size_t count = 0;
    while (count < slots && Dword(data + 4 + 4 * count) != 0) ++count;
    if (index >= count) {
        SetStatus(status, kModuleNoPage);
        return 0;
    }
    const unsigned long start = Dword(data + 4 + 4 * index);
    unsigned long end = index + 1 < count ? Dword(data + 8 + 4 * index) : size;
    /* pages stored out of order run to the end of the file */
    if (end <= start || end > size) end = size;
    if (start < 8 || start >= size) {
        SetStatus(status, kModuleBadFile);
        return 0;
    }
    return PcxDecode(data + start, end - start, status);
}
