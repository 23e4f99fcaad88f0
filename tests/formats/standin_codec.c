/* A stand-in codec module for the tests.  Built once per module file name
 * (STANDIN_MODULE, e.g. "ALDER32.DLL") with the entry points of that module
 * only.  Every load, unload and call appends one line to "codec-calls.log"
 * in the working directory, fields split by '|', so a test can see which
 * module and entry were reached, with which arguments, and that the module
 * was freed again.
 *
 * Load entries: a file whose name contains "fail" gives 0 and 55 through
 * the status (when one is given); any other gives a new 8 x 1 1-bit image
 * whose one pixel byte is the page number's low byte (0 when the entry has
 * no page), and 77 through the status.  Save entries return a number of
 * their own (11..18); MakeBeechFile also creates the file. */
#include "prism32.h"

#include <stdio.h>
#include <string.h>

#ifdef _WIN32
#define STANDIN_EXPORT __declspec(dllexport)
#else
#define STANDIN_EXPORT __attribute__((visibility("default")))
#endif

#if defined(__GNUC__)
#define STANDIN_MAYBE_UNUSED __attribute__((unused))
#else
#define STANDIN_MAYBE_UNUSED
#endif

static void AppendText(char* line, size_t size, const char* text) {
    size_t used = strlen(line);
    if (!text) text = "(null)";
    while (*text && used + 1 < size) line[used++] = *text++;
    line[used] = 0;
}

STANDIN_MAYBE_UNUSED static void AppendHex(char* line, size_t size, const void* pointer) {
    char digits[2 + 2 * sizeof(void*) + 1];
    size_t value = (size_t)pointer;
    int i, n = 0;
    if (!pointer) {
        AppendText(line, size, "null");
        return;
    }
    digits[n++] = '0';
    digits[n++] = 'x';
    for (i = (int)(2 * sizeof(void*)) - 1; i >= 0; --i) digits[n++] = "0123456789abcdef"[(value >> (4 * i)) & 15];
    digits[n] = 0;
    AppendText(line, size, digits);
}

STANDIN_MAYBE_UNUSED static void AppendInt(char* line, size_t size, long long value) {
    char digits[32];
    snprintf(digits, sizeof(digits), "%lld", value);
    AppendText(line, size, digits);
}

static void Record(const char* line) {
    FILE* log = fopen("codec-calls.log", "ab");
    if (!log) return;
    fputs(line, log);
    fputs("\n", log);
    fclose(log);
}

static void Begin(char* line, size_t size, const char* entry) {
    line[0] = 0;
    AppendText(line, size, STANDIN_MODULE);
    AppendText(line, size, "|");
    AppendText(line, size, entry);
}

#define FIELD_TEXT(s) (AppendText(line, sizeof(line), "|"), AppendText(line, sizeof(line), (s)))
#define FIELD_INT(v) (AppendText(line, sizeof(line), "|"), AppendInt(line, sizeof(line), (long long)(v)))
#define FIELD_PTR(p) (AppendText(line, sizeof(line), "|"), AppendHex(line, sizeof(line), (const void*)(p)))

#if defined(STANDIN_LOAD_ALDER) || defined(STANDIN_LOAD_BIRCH) || defined(STANDIN_LOAD_CEDAR) || \
    defined(STANDIN_LOAD_ELDER)
/* A new image from the host's own block allocator, as a real reader's. */
static HDIB MakeImage(const char* fileName, unsigned page, int* status, char* line, size_t size) {
    HDIB dib = 0;
    if (fileName && strstr(fileName, "fail")) {
        if (status) *status = 55;
    } else {
        dib = GlobalAlloc(66, 40 + 8 + 4);
        if (dib) {
            unsigned char* p = (unsigned char*)GlobalLock(dib);
            BITMAPINFOHEADER h;
            memset(&h, 0, sizeof(h));
            h.biSize = 40;
            h.biWidth = 8;
            h.biHeight = 1;
            h.biPlanes = 1;
            h.biBitCount = 1;
            h.biSizeImage = 4;
            h.biClrUsed = 2;
            memcpy(p, &h, sizeof(h));
            p[44] = p[45] = p[46] = 255; /* entry 1 white */
            p[48] = (unsigned char)page;
            GlobalUnlock(dib);
        }
        if (status) *status = 77;
    }
    AppendText(line, size, "|->");
    AppendHex(line, size, dib);
    return dib;
}
#endif

#ifdef STANDIN_LOAD_ALDER
STANDIN_EXPORT HDIB WINAPI LoadAlderIntoDIB(LPCSTR fileName, UINT page, int* status) {
    char line[600];
    HDIB dib;
    Begin(line, sizeof(line), "LoadAlderIntoDIB");
    FIELD_TEXT(fileName), FIELD_INT(page), FIELD_PTR(status);
    dib = MakeImage(fileName, page, status, line, sizeof(line));
    Record(line);
    return dib;
}
STANDIN_EXPORT HDIB WINAPI LoadMapleIntoDIB(LPCSTR fileName, int reserved) {
    char line[600];
    HDIB dib;
    Begin(line, sizeof(line), "LoadMapleIntoDIB");
    FIELD_TEXT(fileName), FIELD_INT(reserved);
    dib = MakeImage(fileName, 0, 0, line, sizeof(line));
    Record(line);
    return dib;
}
#endif

#ifdef STANDIN_LOAD_BIRCH
STANDIN_EXPORT HDIB WINAPI LoadBirchIntoDIB(LPCSTR fileName, int* status) {
    char line[600];
    HDIB dib;
    Begin(line, sizeof(line), "LoadBirchIntoDIB");
    FIELD_TEXT(fileName), FIELD_PTR(status);
    dib = MakeImage(fileName, 0, status, line, sizeof(line));
    Record(line);
    return dib;
}
STANDIN_EXPORT HDIB WINAPI LoadBeechIntoDIB(LPCSTR fileName, UINT page, int* status) {
    char line[600];
    HDIB dib;
    Begin(line, sizeof(line), "LoadBeechIntoDIB");
    FIELD_TEXT(fileName), FIELD_INT(page), FIELD_PTR(status);
    dib = MakeImage(fileName, page, status, line, sizeof(line));
    Record(line);
    return dib;
}
#endif

#ifdef STANDIN_LOAD_CEDAR
STANDIN_EXPORT HDIB WINAPI LoadCedarIntoDIB(LPCSTR fileName, UINT page, int* status) {
    char line[600];
    HDIB dib;
    Begin(line, sizeof(line), "LoadCedarIntoDIB");
    FIELD_TEXT(fileName), FIELD_INT(page), FIELD_PTR(status);
    dib = MakeImage(fileName, page, status, line, sizeof(line));
    Record(line);
    return dib;
}
#endif

#ifdef STANDIN_LOAD_ELDER
STANDIN_EXPORT HDIB WINAPI LoadElderIntoDIB(LPCSTR fileName, int reserved) {
    char line[600];
    HDIB dib;
    Begin(line, sizeof(line), "LoadElderIntoDIB");
    FIELD_TEXT(fileName), FIELD_INT(reserved);
    dib = MakeImage(fileName, 0, 0, line, sizeof(line));
    Record(line);
    return dib;
}
#endif

#ifdef STANDIN_SAVE_ALDER
STANDIN_EXPORT int WINAPI SaveDIBInAlderFormat(LPCSTR fileName, HDIB dib, int option2, int one) {
    char line[600];
    Begin(line, sizeof(line), "SaveDIBInAlderFormat");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_INT(option2), FIELD_INT(one);
    Record(line);
    return 11;
}
STANDIN_EXPORT int WINAPI SAVEDIBINMAPLEFORMAT(LPCSTR fileName, HDIB dib, int zero1, int zero2, int zero3) {
    char line[600];
    Begin(line, sizeof(line), "SAVEDIBINMAPLEFORMAT");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_INT(zero1), FIELD_INT(zero2), FIELD_INT(zero3);
    Record(line);
    return 17;
}
#endif

#ifdef STANDIN_SAVE_BIRCH
STANDIN_EXPORT int WINAPI SaveDIBInBirchFormat(LPCSTR fileName, HDIB dib, int* status) {
    char line[600];
    Begin(line, sizeof(line), "SaveDIBInBirchFormat");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_PTR(status);
    Record(line);
    if (status) *status = 5;
    return 12;
}
STANDIN_EXPORT int WINAPI MakeBeechFile(LPCSTR fileName, int* status) {
    char line[600];
    FILE* made;
    Begin(line, sizeof(line), "MakeBeechFile");
    FIELD_TEXT(fileName), FIELD_PTR(status);
    Record(line);
    made = fileName ? fopen(fileName, "wb") : 0;
    if (made) fclose(made);
    if (status) *status = 6;
    return 13;
}
STANDIN_EXPORT int WINAPI SaveDIBInBeechFormat(LPCSTR fileName, HDIB dib, int* status) {
    char line[600];
    Begin(line, sizeof(line), "SaveDIBInBeechFormat");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_PTR(status);
    Record(line);
    if (status) *status = 7;
    return 14;
}
#endif

#ifdef STANDIN_SAVE_CEDAR
STANDIN_EXPORT int WINAPI SaveDIBInCedarFormat(LPCSTR fileName, HDIB dib, int option1, int* status) {
    char line[600];
    Begin(line, sizeof(line), "SaveDIBInCedarFormat");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_INT(option1), FIELD_PTR(status);
    Record(line);
    return 15;
}
#endif

#ifdef STANDIN_SAVE_ELDER
STANDIN_EXPORT int WINAPI SaveDIBInElderFormat(LPCSTR fileName, HDIB dib, int flag, int one) {
    char line[600];
    Begin(line, sizeof(line), "SaveDIBInElderFormat");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_INT(flag), FIELD_INT(one);
    Record(line);
    return 16;
}
#endif

#ifdef STANDIN_SAVE_HAZEL
STANDIN_EXPORT int WINAPI SaveDIBInHazelFile(LPCSTR fileName, HDIB dib, int quality) {
    char line[600];
    Begin(line, sizeof(line), "SaveDIBInHazelFile");
    FIELD_TEXT(fileName), FIELD_PTR(dib), FIELD_INT(quality);
    Record(line);
    return 18;
}
#endif

/* Loading and freeing, seen from inside the module. */
static void RecordEvent(const char* what) {
    char line[64];
    Begin(line, sizeof(line), what);
    Record(line);
}

#ifdef _WIN32
BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    (void)instance;
    (void)reserved;
    if (reason == 1) RecordEvent("load");   /* DLL_PROCESS_ATTACH */
    if (reason == 0) RecordEvent("unload"); /* DLL_PROCESS_DETACH */
    return TRUE;
}
#else
__attribute__((constructor)) static void StandinLoaded(void) { RecordEvent("load"); }
__attribute__((destructor)) static void StandinUnloaded(void) { RecordEvent("unload"); }
#endif
