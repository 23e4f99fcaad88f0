// Loads the built shared library the way a host does (PRISM32.DLL by
// LoadLibraryA, libprism32.so by dlopen) and calls its exports through the
// addresses it hands out: by ordinal on Windows, by name everywhere.
#include "prism32.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#ifdef _WIN32
#define PRISM_LIBRARY_NAME "PRISM32.DLL"
#else
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

class Library {
public:
    Library() {
#ifdef _WIN32
        handle_ = ::LoadLibraryA(PRISM_LIBRARY_NAME);
#else
        handle_ = ::dlopen(PRISM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
#endif
    }
    ~Library() {
#ifdef _WIN32
        if (handle_) ::FreeLibrary(static_cast<HMODULE>(handle_));
#else
        if (handle_) ::dlclose(handle_);
#endif
    }
    bool loaded() const { return handle_ != nullptr; }
    void* ByName(const char* name) const {
#ifdef _WIN32
        return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
#else
        return ::dlsym(handle_, name);
#endif
    }
    // By ordinal where the platform has them; by name elsewhere.
    void* Entry(const char* name, int ordinal) const {
#ifdef _WIN32
        (void)name;
        return reinterpret_cast<void*>(
            ::GetProcAddress(static_cast<HMODULE>(handle_), MAKEINTRESOURCEA(ordinal)));
#else
        (void)ordinal;
        return ByName(name);
#endif
    }
    template <typename F>
    F Get(const char* name, int ordinal) const {
        return reinterpret_cast<F>(Entry(name, ordinal));
    }

private:
    void* handle_ = nullptr;
};

TEST(SharedLibrary, EveryExportResolvesByNameAndOrdinalToTheSameCode) {
    Library lib;
    ASSERT_TRUE(lib.loaded());
    ASSERT_GT(sizeof(kExports) / sizeof(kExports[0]), 0u);
    for (const ExportEntry& e : kExports) {
        void* byName = lib.ByName(e.name);
        EXPECT_NE(byName, nullptr) << e.name;
        EXPECT_EQ(lib.Entry(e.name, e.ordinal), byName) << e.name << " @" << e.ordinal;
    }
}

TEST(SharedLibrary, InternalNamesStayHidden) {
    Library lib;
    ASSERT_TRUE(lib.loaded());
    EXPECT_EQ(lib.ByName("LastImgError"), nullptr);
    EXPECT_EQ(lib.ByName("DibColorCount"), nullptr);
    EXPECT_EQ(lib.ByName("HandleAttachNotification"), nullptr);
}

TEST(SharedLibrary, ErrorExportsByOrdinal) {
    Library lib;
    ASSERT_TRUE(lib.loaded());
    auto setError = lib.Get<int(WINAPI*)(int)>("SetImgError", 29);
    auto getError = lib.Get<int(WINAPI*)(void)>("ImgError", 28);
    auto errorText = lib.Get<LPSTR(WINAPI*)(LPSTR, int)>("ImgErrorString", 27);
    auto version = lib.Get<INT_PTR(WINAPI*)(LPSTR, int)>("GetImageVersion", 36);
    ASSERT_TRUE(setError && getError && errorText && version);

    setError(0);
    EXPECT_EQ(setError(17), 0);
    EXPECT_EQ(getError(), 17);
    char text[64];
    EXPECT_EQ(errorText(text, -1), text);
    EXPECT_STREQ(text, "Can't lock global memory");
    EXPECT_EQ(version(text, 13), reinterpret_cast<INT_PTR>(text));
    EXPECT_STREQ(text, "Version 5.13");
}

TEST(SharedLibrary, ImageRoundTripThroughTheLoadedModule) {
    Library lib;
    ASSERT_TRUE(lib.loaded());
    auto save = lib.Get<BOOL(WINAPI*)(LPCSTR, HDIB)>("SaveDIB", 44);
    auto load = lib.Get<HDIB(WINAPI*)(LPCSTR)>("LoadDIBFromFile", 43);
    ASSERT_TRUE(save && load);
#ifdef _WIN32
    auto alloc = &::GlobalAlloc;
    auto lock = &::GlobalLock;
    auto unlock = &::GlobalUnlock;
    auto size = &::GlobalSize;
    auto release = &::GlobalFree;
#else
    // A host of the shared library takes the block functions from it.
    auto alloc = reinterpret_cast<HGLOBAL (*)(UINT, SIZE_T)>(lib.ByName("GlobalAlloc"));
    auto lock = reinterpret_cast<LPVOID (*)(HGLOBAL)>(lib.ByName("GlobalLock"));
    auto unlock = reinterpret_cast<BOOL (*)(HGLOBAL)>(lib.ByName("GlobalUnlock"));
    auto size = reinterpret_cast<SIZE_T (*)(HGLOBAL)>(lib.ByName("GlobalSize"));
    auto release = reinterpret_cast<HGLOBAL (*)(HGLOBAL)>(lib.ByName("GlobalFree"));
    ASSERT_TRUE(alloc && lock && unlock && size && release);
#endif
    // A 2 by 2, 24-bit image.
    unsigned char dib[40 + 16] = {};
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = 2;
    h.biHeight = 2;
    h.biPlanes = 1;
    h.biBitCount = 24;
    h.biSizeImage = 16;
    std::memcpy(dib, &h, sizeof(h));
    for (int i = 0; i < 16; ++i) dib[40 + i] = static_cast<unsigned char>(i * 11);
    HGLOBAL block = alloc(GHND, sizeof(dib));
    ASSERT_NE(block, nullptr);
    std::memcpy(lock(block), dib, sizeof(dib));
    unlock(block);

    const char* path = "dll-roundtrip.bmp";
    ASSERT_TRUE(save(path, block));
    HDIB loaded = load(path);
    ASSERT_NE(loaded, nullptr);
    ASSERT_EQ(size(loaded), sizeof(dib));
    EXPECT_EQ(std::memcmp(lock(loaded), dib, sizeof(dib)), 0);
    unlock(loaded);
    EXPECT_EQ(release(loaded), nullptr);
    EXPECT_EQ(release(block), nullptr);
    std::remove(path);
}

}  // namespace
