// Movable blocks: the semantics hosts rely on, on every platform.
#include "support/test_support.h"

namespace {

TEST(Blocks, ZeroInitLockCountsReAllocAndSize) {
    HGLOBAL block = GlobalAlloc(GHND, 100);
    unsigned char* p = static_cast<unsigned char*>(GlobalLock(block));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(testing_support::Bytes(p, p + 100), testing_support::Bytes(100, 0));
    EXPECT_EQ(GlobalLock(block), p);    // a second lock, same address
    EXPECT_NE(GlobalUnlock(block), 0);  // still locked once
    EXPECT_EQ(GlobalUnlock(block), 0);  // now unlocked
    // Growing keeps the contents and zero-fills when asked; shrinking keeps the head.
    std::memset(GlobalLock(block), 0xA5, 100);
    GlobalUnlock(block);
    HGLOBAL grown = GlobalReAlloc(block, 164, GMEM_ZEROINIT);
    ASSERT_NE(grown, nullptr);
    testing_support::Bytes want(164, 0);
    std::fill(want.begin(), want.begin() + 100, 0xA5);
    EXPECT_EQ(testing_support::BlockBytes(grown), want);
    HGLOBAL shrunk = GlobalReAlloc(grown, 8, 0);
    ASSERT_NE(shrunk, nullptr);
    EXPECT_TRUE(GlobalSize(shrunk) >= 8u && GlobalSize(shrunk) < 64u);
    EXPECT_EQ(static_cast<unsigned char*>(GlobalLock(shrunk))[7], 0xA5);
    GlobalUnlock(shrunk);
    EXPECT_EQ(GlobalFree(shrunk), nullptr);
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
// The handle table tells a freed, empty or made-up handle from a live one.
TEST(Blocks, DeadEmptyForgedAndImpossibleBlocks) {
    HGLOBAL block = GlobalAlloc(GHND, 10);
    ASSERT_EQ(GlobalFree(block), nullptr);
    EXPECT_TRUE(!GlobalLock(block) && !GlobalSize(block) && !GlobalUnlock(block) && !GlobalReAlloc(block, 20, 0));
    EXPECT_EQ(GlobalFree(block), block);  // failure returns the handle
    HGLOBAL next = GlobalAlloc(GHND, 10);  // the slot is reused under a different handle
    EXPECT_NE(next, block);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalFree(next), nullptr);
    EXPECT_EQ(GlobalLock(reinterpret_cast<HGLOBAL>(0x7777777)), nullptr);
    EXPECT_EQ(GlobalLock(nullptr), nullptr);
    HGLOBAL empty = GlobalAlloc(GHND, 0);  // exists, but cannot be locked
    ASSERT_NE(empty, nullptr);
    EXPECT_TRUE(GlobalSize(empty) == 0 && !GlobalLock(empty));
    EXPECT_EQ(GlobalFree(empty), nullptr);
    EXPECT_EQ(GlobalAlloc(GHND, static_cast<SIZE_T>(-1)), nullptr);
    block = GlobalAlloc(GHND, 4);
    EXPECT_EQ(GlobalReAlloc(block, static_cast<SIZE_T>(-1), 0), nullptr);
    EXPECT_EQ(GlobalSize(block), 4u);  // left as it was
    GlobalFree(block);
}
#endif

}  // namespace
