// Codec modules: looked up by file name for one call and freed at once.
#include "formats/formats.h"

#include <cstdint>
#include <cstdio>

namespace prism {
namespace {

constexpr const char* kModuleCaption = "PRISM-DLL";
constexpr unsigned kTaskModal = 0x2000;  // MB_TASKMODAL, no icon, one button
// Texts are formatted into a buffer of this size; a longer name is cut.
constexpr size_t kMessageBytes = 120;

// Entry points of the codec modules: every argument one 32-bit word (a
// pointer on 64-bit hosts), the library's own calling convention.
using LoadPagedEntry = HDIB(WINAPI*)(LPCSTR, UINT, int*);
using LoadStatusEntry = HDIB(WINAPI*)(LPCSTR, int*);
using LoadPlainEntry = HDIB(WINAPI*)(LPCSTR, int);
using SaveFlagsEntry = int(WINAPI*)(LPCSTR, HDIB, int, int);
using SaveStatusEntry = int(WINAPI*)(LPCSTR, HDIB, int*);
using MakeEntry = int(WINAPI*)(LPCSTR, int*);
using SaveOptionStatusEntry = int(WINAPI*)(LPCSTR, HDIB, int, int*);
using SaveThreeZeroEntry = int(WINAPI*)(LPCSTR, HDIB, int, int, int);
using SaveQualityEntry = int(WINAPI*)(LPCSTR, HDIB, int);

// Loads the module, calls the entry through `call` when it was found, frees
// the module and hands back the entry's result (R() when there was none).
template <typename Entry, typename R, typename Call>
R CallCodec(const char* moduleName, const char* entryName, Call call) {
    plat::ModuleHandle module = nullptr;
    R result = R();
    plat::ModuleProc proc = LoadCodecEntry(moduleName, entryName, &module);
    if (proc) result = call(reinterpret_cast<Entry>(proc));
    FreeCodecModule(module);
    return result;
}

}  // namespace

plat::ModuleProc LoadCodecEntry(const char* moduleName, const char* entryName,
                                plat::ModuleHandle* module) {
    int systemError = 0;
    plat::ModuleHandle handle = plat::OpenModule(moduleName, &systemError);
    *module = handle;
    // Results below 32 are load failures; on 32-bit hosts and here the only
    // one ever met is 0, which is what the message shows.
    const std::uintptr_t value = reinterpret_cast<std::uintptr_t>(handle);
    if (value < 32) {
        char text[kMessageBytes];
        std::snprintf(text, sizeof(text), "'%s' module has not found (%i)", moduleName ? moduleName : "",
                      static_cast<int>(value));
        plat::ShowMessage(text, kModuleCaption, kTaskModal);
        *module = nullptr;
        return nullptr;
    }
    plat::ModuleProc proc = plat::ModuleEntry(handle, entryName);
    if (!proc) {
        // The module stays loaded for the caller to free.
        char text[kMessageBytes];
        std::snprintf(text, sizeof(text), "'%s' function has not found in '%s' module",
                      entryName ? entryName : "", moduleName ? moduleName : "");
        plat::ShowMessage(text, kModuleCaption, kTaskModal);
        return nullptr;
    }
    return proc;
}

void FreeCodecModule(plat::ModuleHandle module) {
    if (module) plat::CloseModule(module);
}

// ---- load side ----------------------------------------------------------------
HDIB LoadAlderThunk(const char* fileName, UINT page, int* status) {
    return CallCodec<LoadPagedEntry, HDIB>("ALDER32.DLL", "LoadAlderIntoDIB",
                                           [&](LoadPagedEntry f) { return f(fileName, page, status); });
}

HDIB LoadBirchThunk(const char* fileName, int* status) {
    return CallCodec<LoadStatusEntry, HDIB>("BIRCH32.DLL", "LoadBirchIntoDIB",
                                            [&](LoadStatusEntry f) { return f(fileName, status); });
}

HDIB LoadBeechThunk(const char* fileName, UINT page, int* status) {
    return CallCodec<LoadPagedEntry, HDIB>("BIRCH32.DLL", "LoadBeechIntoDIB",
                                           [&](LoadPagedEntry f) { return f(fileName, page, status); });
}

HDIB LoadCedarThunk(const char* fileName, UINT page, int* status) {
    return CallCodec<LoadPagedEntry, HDIB>("CEDAR32.DLL", "LoadCedarIntoDIB",
                                           [&](LoadPagedEntry f) { return f(fileName, page, status); });
}

HDIB LoadElderThunk(const char* fileName, int reserved) {
    return CallCodec<LoadPlainEntry, HDIB>("ELDER32.DLL", "LoadElderIntoDIB",
                                           [&](LoadPlainEntry f) { return f(fileName, reserved); });
}

HDIB LoadMapleThunk(const char* fileName, int reserved) {
    return CallCodec<LoadPlainEntry, HDIB>("ALDER32.DLL", "LoadMapleIntoDIB",
                                           [&](LoadPlainEntry f) { return f(fileName, reserved); });
}

// ---- save side: module names without the "32" --------------------------------------
int SaveAlderThunk(const char* fileName, HDIB dib, int option2, int one) {
    return CallCodec<SaveFlagsEntry, int>("ALDER.DLL", "SaveDIBInAlderFormat",
                                          [&](SaveFlagsEntry f) { return f(fileName, dib, option2, one); });
}

int SaveBirchThunk(const char* fileName, HDIB dib, int* status) {
    return CallCodec<SaveStatusEntry, int>("BIRCH.DLL", "SaveDIBInBirchFormat",
                                           [&](SaveStatusEntry f) { return f(fileName, dib, status); });
}

int MakeBeechThunk(const char* fileName, int* status) {
    return CallCodec<MakeEntry, int>("BIRCH.DLL", "MakeBeechFile",
                                     [&](MakeEntry f) { return f(fileName, status); });
}

int SaveBeechThunk(const char* fileName, HDIB dib, int* status) {
    return CallCodec<SaveStatusEntry, int>("BIRCH.DLL", "SaveDIBInBeechFormat",
                                           [&](SaveStatusEntry f) { return f(fileName, dib, status); });
}

int SaveCedarThunk(const char* fileName, HDIB dib, int option1, int* status) {
    return CallCodec<SaveOptionStatusEntry, int>(
        "CEDAR.DLL", "SaveDIBInCedarFormat",
        [&](SaveOptionStatusEntry f) { return f(fileName, dib, option1, status); });
}

int SaveElderThunk(const char* fileName, HDIB dib, int flag, int one) {
    return CallCodec<SaveFlagsEntry, int>("ELDER.DLL", "SaveDIBInElderFormat",
                                          [&](SaveFlagsEntry f) { return f(fileName, dib, flag, one); });
}

int SaveMapleThunk(const char* fileName, HDIB dib, int zero1, int zero2, int zero3) {
    // The writer's entry name is all capitals.
    return CallCodec<SaveThreeZeroEntry, int>(
        "ALDER.DLL", "SAVEDIBINMAPLEFORMAT",
        [&](SaveThreeZeroEntry f) { return f(fileName, dib, zero1, zero2, zero3); });
}

int SaveHazelThunk(const char* fileName, HDIB dib, int quality) {
    return CallCodec<SaveQualityEntry, int>("HAZEL.DLL", "SaveDIBInHazelFile",
                                            [&](SaveQualityEntry f) { return f(fileName, dib, quality); });
}

}  // namespace prism
