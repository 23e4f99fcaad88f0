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

#ifdef _WIN32
struct Library {
    HMODULE handle = ::LoadLibraryA("PRISM32.DLL");
    ~Library() { if (handle) ::FreeLibrary(handle); }
    void* ByName(const char* name) const { return reinterpret_cast<void*>(::GetProcAddress(handle, name)); }
    void* Entry(const char*, int ordinal) const {
        return reinterpret_cast<void*>(::GetProcAddress(handle, MAKEINTRESOURCEA(ordinal)));
    }
};
#else
struct Library {
    void* handle = ::dlopen(PRISM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ~Library() { if (handle) ::dlclose(handle); }
    void* ByName(const char* name) const { return ::dlsym(handle, name); }
    void* Entry(const char* name, int) const { return ByName(name); }  // no ordinals here
};
#endif

TEST(SharedLibrary, EveryExportResolvesByNameAndOrdinalAndInternalsStayHidden) {
    Library lib;
    ASSERT_NE(lib.handle, nullptr);
    ASSERT_GT(sizeof(kExports) / sizeof(kExports[0]), 0u);
    for (const ExportEntry& e : kExports) {
        void* byName = lib.ByName(e.name);
        EXPECT_NE(byName, nullptr) << e.name;
        EXPECT_EQ(lib.Entry(e.name, e.ordinal), byName) << e.name << " @" << e.ordinal;
    }
    for (const char* internal : {"LastImgError", "DibColorCount", "HandleAttachNotification"})
        EXPECT_EQ(lib.ByName(internal), nullptr) << internal;
}

TEST(SharedLibrary, ErrorsVersionAndAnImageRoundTripThroughTheLoadedModule) {
    Library lib;
    ASSERT_NE(lib.handle, nullptr);
    auto setError = reinterpret_cast<int(WINAPI*)(int)>(lib.Entry("SetImgError", 29));
    auto getError = reinterpret_cast<int(WINAPI*)(void)>(lib.Entry("ImgError", 28));
    auto errorText = reinterpret_cast<LPSTR(WINAPI*)(LPSTR, int)>(lib.Entry("ImgErrorString", 27));
    auto version = reinterpret_cast<INT_PTR(WINAPI*)(LPSTR, int)>(lib.Entry("GetImageVersion", 36));
    auto save = reinterpret_cast<BOOL(WINAPI*)(LPCSTR, HDIB)>(lib.Entry("SaveDIB", 44));
    auto load = reinterpret_cast<HDIB(WINAPI*)(LPCSTR)>(lib.Entry("LoadDIBFromFile", 43));
    ASSERT_TRUE(setError && getError && errorText && version && save && load);
    setError(0);
    EXPECT_EQ(setError(17), 0);
    EXPECT_EQ(getError(), 17);
    char text[64];
    EXPECT_EQ(errorText(text, -1), text);
    EXPECT_STREQ(text, "Can't lock global memory");
    EXPECT_EQ(version(text, 13), reinterpret_cast<INT_PTR>(text));
    EXPECT_STREQ(text, "Version 5.13");
#ifdef _WIN32
    auto alloc = &::GlobalAlloc;
    auto lock = &::GlobalLock;
    auto unlock = &::GlobalUnlock;
    auto release = &::GlobalFree;
#else
    // A host of the shared library takes the block functions from it.
    auto alloc = reinterpret_cast<HGLOBAL (*)(UINT, SIZE_T)>(lib.ByName("GlobalAlloc"));
    auto lock = reinterpret_cast<LPVOID (*)(HGLOBAL)>(lib.ByName("GlobalLock"));
    auto unlock = reinterpret_cast<BOOL (*)(HGLOBAL)>(lib.ByName("GlobalUnlock"));
    auto release = reinterpret_cast<HGLOBAL (*)(HGLOBAL)>(lib.ByName("GlobalFree"));
    ASSERT_TRUE(alloc && lock && unlock && release);
#endif
    // A 2 by 2, 24-bit image.
    unsigned char dib[40 + 16] = {40, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0, 16};
    for (int i = 0; i < 16; ++i) dib[40 + i] = static_cast<unsigned char>(i * 11);
    HGLOBAL block = alloc(GHND, sizeof(dib));
    std::memcpy(lock(block), dib, sizeof(dib));
    unlock(block);
    ASSERT_TRUE(save("dll-roundtrip.bmp", block));
    HDIB loaded = load("dll-roundtrip.bmp");
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(std::memcmp(lock(loaded), dib, sizeof(dib)), 0);
    unlock(loaded);
    EXPECT_EQ(release(loaded), nullptr);
    EXPECT_EQ(release(block), nullptr);
    std::remove("dll-roundtrip.bmp");
}

}  // namespace
