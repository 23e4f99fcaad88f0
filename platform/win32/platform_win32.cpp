// The Win32 side of the platform layer: the real system calls.  Movable
// blocks need nothing here; library code calls kernel32's Global* directly.
#include "platform/observe_internal.h"

namespace plat {

HFILE FileOpen(const char* name, unsigned style) {
    if (!name || !*name) return kBadFile;
    OFSTRUCT info = {};
    info.cBytes = sizeof(info);
    HFILE file = ::OpenFile(name, &info, style);
    if (file == HFILE_ERROR) return kBadFile;
    if (style & kOpenExist) return 0;
    return file;
}

long FileRead(HFILE file, void* buffer, long count) {
    if (file == kBadFile || count < 0) return -1;
    return ::_hread(file, buffer, count);
}

long FileWrite(HFILE file, const void* buffer, long count) {
    if (file == kBadFile || count < 0) return -1;
    return ::_hwrite(file, static_cast<LPCCH>(buffer), count);
}

long FileSeek(HFILE file, long offset, int origin) {
    if (file == kBadFile) return -1;
    return ::_llseek(file, offset, origin);
}

int FileClose(HFILE file) {
    if (file == kBadFile) return -1;
    return ::_lclose(file) == HFILE_ERROR ? -1 : 0;
}

bool FileExists(const char* name) {
    if (!name || !*name) return false;
    DWORD attributes = ::GetFileAttributesA(name);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

int ShowMessage(const char* text, const char* caption, unsigned style) {
    int result = kIdOk;
    if (DeliverToObserver(text, caption, style, &result)) return result;
    return ::MessageBoxA(nullptr, text, caption, style);
}

std::uintptr_t BeginWaitCursor() {
    CountWaitShown();
    HCURSOR wait = ::LoadCursorA(nullptr, MAKEINTRESOURCEA(32514));  // IDC_WAIT
    return reinterpret_cast<std::uintptr_t>(::SetCursor(wait));
}

void EndWaitCursor(std::uintptr_t previous) {
    CountRestored();
    ::SetCursor(reinterpret_cast<HCURSOR>(previous));
}

std::uint32_t VersionWord() {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    return static_cast<std::uint32_t>(::GetVersion());
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
}

ModuleHandle OpenModule(const char* fileName, int* errorNumber) {
    if (errorNumber) *errorNumber = 0;
    HMODULE module = ::LoadLibraryA(fileName);
    if (!module && errorNumber) *errorNumber = static_cast<int>(::GetLastError());
    return reinterpret_cast<ModuleHandle>(module);
}

ModuleProc ModuleEntry(ModuleHandle module, const char* entryName) {
    if (!module || !entryName) return nullptr;
    return reinterpret_cast<ModuleProc>(
        reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), entryName)));
}

void CloseModule(ModuleHandle module) {
    if (module) ::FreeLibrary(static_cast<HMODULE>(module));
}

int ProfileInt(const char* section, const char* key, int fallback, const char* fileName) {
    return static_cast<int>(::GetPrivateProfileIntA(section, key, fallback, fileName));
}

unsigned ProfileString(const char* section, const char* key, const char* fallback, char* buffer,
                       unsigned size, const char* fileName) {
    return ::GetPrivateProfileStringA(section, key, fallback, buffer, size, fileName);
}

// The system's blocks commit their pages as they are touched already.
void SparseBlock(HGLOBAL) {}

}  // namespace plat
