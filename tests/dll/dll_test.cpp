// Loads the built shared library the way a host does (PRISM32.DLL by
// LoadLibraryA, libprism32.so by dlopen) and calls its exports through the
// addresses it hands out: by ordinal on Windows, by name everywhere.
#include "prism32.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace {

struct ExportEntry {
    const char* name;
    int ordinal;
};
#define PRISM_EXPORT_ENTRY(name, ordinal) {#name, ordinal},
const ExportEntry kExports[] = {
#include "prism_exports.inc"
};
#undef PRISM_EXPORT_ENTRY

// The block functions come from the system on Windows and from the
// library itself elsewhere, as a host of the shared library takes them.
#ifdef _WIN32
struct Library {
    HMODULE handle = ::LoadLibraryA("PRISM32.DLL");
    ~Library() { if (handle) ::FreeLibrary(handle); }
    void* ByName(const char* name) const { return reinterpret_cast<void*>(::GetProcAddress(handle, name)); }
    void* Entry(const char*, int ordinal) const { return ByName(MAKEINTRESOURCEA(ordinal)); }
    void* Block(const char* name) const {
        return reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA("kernel32.dll"), name));
    }
};
#else
struct Library {
    void* handle = ::dlopen(PRISM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ~Library() { if (handle) ::dlclose(handle); }
    void* ByName(const char* name) const { return ::dlsym(handle, name); }
    void* Entry(const char* name, int) const { return ByName(name); }  // no ordinals here
    void* Block(const char* name) const { return ByName(name); }
};
#endif
template <typename F> F As(void* address) { return reinterpret_cast<F>(address); }

TEST(SharedLibrary, EveryExportResolvesByNameAndOrdinalAndInternalsStayHidden) {
    Library lib;
    ASSERT_NE(lib.handle, nullptr);
    for (const ExportEntry& e : kExports) {
        void* byName = lib.ByName(e.name);
        EXPECT_NE(byName, nullptr) << e.name;
        EXPECT_EQ(lib.Entry(e.name, e.ordinal), byName) << e.name << " @" << e.ordinal;
    }
    for (const char* internal : {"LastImgError", "DibColorCount", "HandleAttachNotification"})
        EXPECT_EQ(lib.ByName(internal), nullptr) << internal;
}

// Calls through the addresses handed out: the version text, and a 2 by 2,
// 24-bit image saved and loaded back byte for byte.
TEST(SharedLibrary, VersionAndAnImageRoundTripThroughTheLoadedModule) {
    Library lib;
    ASSERT_NE(lib.handle, nullptr);
    auto version = As<INT_PTR(WINAPI*)(LPSTR, int)>(lib.Entry("GetImageVersion", 36));
    auto save = As<BOOL(WINAPI*)(LPCSTR, HDIB)>(lib.Entry("SaveDIB", 44));
    auto load = As<HDIB(WINAPI*)(LPCSTR)>(lib.Entry("LoadDIBFromFile", 43));
    auto alloc = As<HGLOBAL(WINAPI*)(UINT, SIZE_T)>(lib.Block("GlobalAlloc"));
    auto lock = As<LPVOID(WINAPI*)(HGLOBAL)>(lib.Block("GlobalLock"));
    auto unlock = As<BOOL(WINAPI*)(HGLOBAL)>(lib.Block("GlobalUnlock"));
    auto release = As<HGLOBAL(WINAPI*)(HGLOBAL)>(lib.Block("GlobalFree"));
    ASSERT_TRUE(version && save && load && alloc && lock && unlock && release);
    char text[64];
    EXPECT_EQ(version(text, 13), reinterpret_cast<INT_PTR>(text));
    EXPECT_STREQ(text, "Version 5.13");
    unsigned char dib[40 + 16] = {40, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0, 16};
    for (int i = 0; i < 16; ++i) dib[40 + i] = static_cast<unsigned char>(i * 11);
    HGLOBAL block = alloc(GHND, sizeof(dib));
    unlock((std::memcpy(lock(block), dib, sizeof(dib)), block));
    ASSERT_TRUE(save("dll-roundtrip.bmp", block));
    HDIB loaded = load("dll-roundtrip.bmp");
    std::remove("dll-roundtrip.bmp");
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(std::memcmp(lock(loaded), dib, sizeof(dib)), 0);
    unlock(loaded);
    EXPECT_TRUE(release(loaded) == nullptr && release(block) == nullptr);
}

}  // namespace
