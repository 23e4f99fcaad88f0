// Movable blocks: the semantics hosts rely on, on every platform.
#include "prism32.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(Blocks, ZeroInitLockCountsAndSize) {
    HGLOBAL block = GlobalAlloc(GHND, 100);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(GlobalSize(block), 100u);
    unsigned char* p = static_cast<unsigned char*>(GlobalLock(block));
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 100; ++i) ASSERT_EQ(p[i], 0) << i;
    EXPECT_EQ(GlobalLock(block), p);  // a second lock, same address
    EXPECT_NE(GlobalUnlock(block), 0);  // still locked once
    EXPECT_EQ(GlobalUnlock(block), 0);  // now unlocked
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(Blocks, ReAllocKeepsContentsAndZeroFillsOnlyWhenAsked) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 16);
    ASSERT_NE(block, nullptr);
    std::memset(GlobalLock(block), 0xA5, 16);
    GlobalUnlock(block);
    HGLOBAL grown = GlobalReAlloc(block, 64, GMEM_ZEROINIT);
    ASSERT_NE(grown, nullptr);
    unsigned char* p = static_cast<unsigned char*>(GlobalLock(grown));
    for (int i = 0; i < 16; ++i) ASSERT_EQ(p[i], 0xA5) << i;
    for (int i = 16; i < 64; ++i) ASSERT_EQ(p[i], 0) << i;
    GlobalUnlock(grown);
    HGLOBAL shrunk = GlobalReAlloc(grown, 8, 0);
    ASSERT_NE(shrunk, nullptr);
    EXPECT_GE(GlobalSize(shrunk), 8u);
    EXPECT_LT(GlobalSize(shrunk), 64u);
    EXPECT_EQ(static_cast<unsigned char*>(GlobalLock(shrunk))[7], 0xA5);
    GlobalUnlock(shrunk);
    GlobalFree(shrunk);
}

// Image-sized blocks live apart from small ones: a block resized across
// that line, up and down, keeps its bytes, is zero-filled where it grew,
// and can be written to its last byte.
TEST(Blocks, ReAllocAcrossTheLargeBlockLineKeepsContents) {
    const SIZE_T mib = SIZE_T(1) << 20;
    const SIZE_T sizes[] = {5 * mib + 3, 9 * mib + 1, 6 * mib, 100, 7 * mib + 4095, 8 * mib};
    SIZE_T size = 16;
    HGLOBAL block = GlobalAlloc(GHND, size);
    ASSERT_NE(block, nullptr);
    auto pattern = [](SIZE_T i) { return static_cast<unsigned char>(i * 31 ^ (i >> 12)); };
    for (SIZE_T next : sizes) {
        unsigned char* p = static_cast<unsigned char*>(GlobalLock(block));
        for (SIZE_T i = 0; i < size; ++i) p[i] = pattern(i);
        GlobalUnlock(block);
        block = GlobalReAlloc(block, next, GMEM_MOVEABLE | GMEM_ZEROINIT);
        ASSERT_NE(block, nullptr) << next;
        ASSERT_EQ(GlobalSize(block), next);
        p = static_cast<unsigned char*>(GlobalLock(block));
        for (SIZE_T i = 0; i < next; ++i) ASSERT_EQ(p[i], i < size ? pattern(i) : 0) << next << " at " << i;
        GlobalUnlock(block);
        size = next;
    }
    EXPECT_EQ(GlobalFree(block), nullptr);
}

// A large block written, freed and made again at a size near it, the
// memory of the first may come back: zero-filled when asked, every byte.
TEST(Blocks, LargeBlockMadeAgainIsZeroFilled) {
    const SIZE_T sizes[] = {(SIZE_T(6) << 20) + 5, (SIZE_T(5) << 20) + 1, (SIZE_T(6) << 20) + 5};
    for (SIZE_T size : sizes) {
        HGLOBAL block = GlobalAlloc(GHND, size);
        ASSERT_NE(block, nullptr);
        unsigned char* p = static_cast<unsigned char*>(GlobalLock(block));
        for (SIZE_T i = 0; i < size; ++i) ASSERT_EQ(p[i], 0) << size << " at " << i;
        std::memset(p, 0xC3, size);
        GlobalUnlock(block);
        GlobalFree(block);
    }
}

#ifndef _WIN32
// The handle table can tell a freed or made-up handle from a live one.
TEST(Blocks, DeadAndForgedHandlesAreRefused) {
    HGLOBAL block = GlobalAlloc(GHND, 10);
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(GlobalFree(block), nullptr);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalSize(block), 0u);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalReAlloc(block, 20, 0), nullptr);
    EXPECT_EQ(GlobalFree(block), block);  // failure returns the handle

    // The slot is reused by the next block, under a different handle.
    HGLOBAL next = GlobalAlloc(GHND, 10);
    ASSERT_NE(next, nullptr);
    EXPECT_NE(next, block);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalFree(next), nullptr);

    EXPECT_EQ(GlobalLock(reinterpret_cast<HGLOBAL>(0x7777777)), nullptr);
    EXPECT_EQ(GlobalLock(nullptr), nullptr);
}

TEST(Blocks, EmptyBlockExistsButCannotBeLocked) {
    HGLOBAL block = GlobalAlloc(GHND, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), 0u);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(Blocks, ImpossibleSizesFailCleanly) {
    EXPECT_EQ(GlobalAlloc(GHND, static_cast<SIZE_T>(-1)), nullptr);
    HGLOBAL block = GlobalAlloc(GHND, 4);
    EXPECT_EQ(GlobalReAlloc(block, static_cast<SIZE_T>(-1), 0), nullptr);
    EXPECT_EQ(GlobalSize(block), 4u);  // left as it was
    GlobalFree(block);
}
#endif

}  // namespace
