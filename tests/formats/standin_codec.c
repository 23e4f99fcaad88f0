// A stand-in codec module, built once per module file name (STANDIN_MODULE,
// e.g. "ALDER32.DLL"), each with every entry point: the module's name
// heads each line it logs.  Every load,
// unload and call appends "MODULE|what|arg|..." to "codec-calls.log" in the
// working directory (pointers as 0x and all their hex digits, or "null").
// Load entries: a name containing "fail" gives 0 and status 55; any other a
// new 8 x 1 1-bit image whose pixel byte is the page's low byte, status 77;
// the handle returned is the last field.  Save entries return 11..18.
#include "prism32.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#ifdef _WIN32
#define STANDIN_EXPORT __declspec(dllexport)
#else
#define STANDIN_EXPORT __attribute__((visibility("default")))
#endif

// kinds: one letter per argument, s text, i int, u unsigned, p pointer.
static void Log(const char* what, const char* kinds, ...) {
    va_list args;
    FILE* log = fopen("codec-calls.log", "ab");
    if (!log) return;
    fprintf(log, "%s|%s", STANDIN_MODULE, what);
    va_start(args, kinds);
    for (; *kinds; ++kinds) {
        if (*kinds == 's') fprintf(log, "|%s", va_arg(args, const char*));
        else if (*kinds != 'p') fprintf(log, *kinds == 'i' ? "|%d" : "|%u", va_arg(args, int));
        else {
            size_t v = (size_t)va_arg(args, const void*), i = 2 * sizeof v;
            fputs(v ? "|0x" : "|null", log);
            while (v && i--) fputc("0123456789abcdef"[(v >> (4 * i)) & 15], log);
        }
    }
    va_end(args);
    fputs("\n", log);
    fclose(log);
}

// A new image from the host's own block allocator, as a real reader's.
static HDIB MakeImage(const char* fileName, unsigned page, int* status) {
    const int fail = fileName && strstr(fileName, "fail");
    HDIB dib = fail ? 0 : GlobalAlloc(66, 52);
    unsigned char* p = dib ? (unsigned char*)GlobalLock(dib) : 0;
    if (status) *status = fail ? 55 : 77;
    // The header (the block is zero-filled), entry 1 white, the pixel byte.
    if (p) p[0] = 40, p[4] = 8, p[8] = p[12] = p[14] = 1, p[20] = 4, p[32] = 2, p[44] = p[45] = p[46] = 255,
           p[48] = (unsigned char)page, GlobalUnlock(dib);
    return dib;
}
// Logs the arguments and the handle made.
#define LOAD(name, params, page, status, kinds, ...)        \
    STANDIN_EXPORT HDIB WINAPI name params {                \
        HDIB dib = MakeImage(fileName, page, status);       \
        Log(#name, kinds "p", __VA_ARGS__, (void*)dib);     \
        return dib;                                         \
    }
#define SAVE(name, params, result, kinds, ...) \
    STANDIN_EXPORT int WINAPI name params {    \
        Log(#name, kinds, __VA_ARGS__);        \
        return result;                         \
    }

LOAD(LoadAlderIntoDIB, (LPCSTR fileName, UINT page, int* status), page, status, "sup", fileName, page, status)
LOAD(LoadMapleIntoDIB, (LPCSTR fileName, int reserved), 0, 0, "si", fileName, reserved)
LOAD(LoadBirchIntoDIB, (LPCSTR fileName, int* status), 0, status, "sp", fileName, status)
LOAD(LoadBeechIntoDIB, (LPCSTR fileName, UINT page, int* status), page, status, "sup", fileName, page, status)
LOAD(LoadCedarIntoDIB, (LPCSTR fileName, UINT page, int* status), page, status, "sup", fileName, page, status)
LOAD(LoadElderIntoDIB, (LPCSTR fileName, int reserved), 0, 0, "si", fileName, reserved)
SAVE(SaveDIBInAlderFormat, (LPCSTR fileName, HDIB dib, int option2, int one), 11, "spii", fileName, dib, option2, one)
SAVE(SAVEDIBINMAPLEFORMAT, (LPCSTR fileName, HDIB dib, int a, int b, int c), 17, "spiii", fileName, dib, a, b, c)
SAVE(SaveDIBInBirchFormat, (LPCSTR fileName, HDIB dib, int* status), 12, "spp", fileName, dib, status)
SAVE(MakeBeechFile, (LPCSTR fileName, int* status), 13, "sp", fileName, status)
SAVE(SaveDIBInBeechFormat, (LPCSTR fileName, HDIB dib, int* status), 14, "spp", fileName, dib, status)
SAVE(SaveDIBInCedarFormat, (LPCSTR fileName, HDIB dib, int option1, int* status), 15, "spip", fileName, dib, option1, status)
SAVE(SaveDIBInElderFormat, (LPCSTR fileName, HDIB dib, int flag, int one), 16, "spii", fileName, dib, flag, one)
SAVE(SaveDIBInHazelFile, (LPCSTR fileName, HDIB dib, int quality), 18, "spi", fileName, dib, quality)

// Loading and freeing, seen from inside the module.
#ifdef _WIN32
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    (void)instance, (void)reserved;
    if (reason == 1) Log("load", "");   // DLL_PROCESS_ATTACH
    if (reason == 0) Log("unload", ""); // DLL_PROCESS_DETACH
    return TRUE;
}
#else
__attribute__((constructor)) static void StandinLoaded(void) { Log("load", ""); }
__attribute__((destructor)) static void StandinUnloaded(void) { Log("unload", ""); }
#endif
