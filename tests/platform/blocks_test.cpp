// Movable blocks: the semantics hosts rely on, on every platform.
#include "support/test_support.h"

#include <algorithm>

namespace {

using testing_support::Bytes;

TEST(Blocks, ZeroInitLockCountsReAllocAndSize) {
    HGLOBAL block = GlobalAlloc(GHND, 100);
    unsigned char* p = static_cast<unsigned char*>(GlobalLock(block));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(Bytes(p, p + 100), Bytes(100, 0));
    EXPECT_EQ(GlobalLock(block), p);    // a second lock, same address
    EXPECT_NE(GlobalUnlock(block), 0);  // still locked once
    EXPECT_EQ(GlobalUnlock(block), 0);  // now unlocked
    // Growing keeps the contents and zero-fills when asked; shrinking keeps the head.
    std::memset(GlobalLock(block), 0xA5, 100);
    GlobalUnlock(block);
    HGLOBAL grown = GlobalReAlloc(block, 164, GMEM_ZEROINIT);
    Bytes want(164, 0);
    std::fill(want.begin(), want.begin() + 100, 0xA5);
    EXPECT_EQ(testing_support::BlockBytes(grown), want);
    HGLOBAL shrunk = GlobalReAlloc(grown, 8, 0);
    EXPECT_TRUE(GlobalSize(shrunk) >= 8u && GlobalSize(shrunk) < 64u);
    EXPECT_EQ(testing_support::BlockBytes(shrunk)[7], 0xA5);
    EXPECT_EQ(GlobalFree(shrunk), nullptr);
}

// Image-sized blocks live apart from small ones: a block resized across
// that line, up and down, keeps its bytes, is zero-filled where it grew,
// and can be written to its last byte; a large block made again after one
// was written and freed may reuse its memory, and is zero-filled all the same.
TEST(Blocks, ReAllocAcrossTheLargeBlockLineAndReuseKeepContentsAndZeroFill) {
    const SIZE_T mib = SIZE_T(1) << 20;
    const SIZE_T sizes[] = {5 * mib + 3, 9 * mib + 1, 6 * mib, 100, 7 * mib + 4095, 8 * mib};
    auto pattern = [](SIZE_T i) { return static_cast<unsigned char>(i * 31 ^ (i >> 12)); };
    SIZE_T size = 16;
    HGLOBAL block = GlobalAlloc(GHND, size);
    for (SIZE_T next : sizes) {
        unsigned char* p = static_cast<unsigned char*>(GlobalLock(block));
        for (SIZE_T i = 0; i < size; ++i) p[i] = pattern(i);
        GlobalUnlock(block);
        block = GlobalReAlloc(block, next, GMEM_MOVEABLE | GMEM_ZEROINIT);
        ASSERT_EQ(GlobalSize(block), next);
        p = static_cast<unsigned char*>(GlobalLock(block));
        for (SIZE_T i = 0; i < next; ++i) ASSERT_EQ(p[i], i < size ? pattern(i) : 0) << next << " at " << i;
        std::memset(p, 0xC3, next);
        GlobalUnlock(block);
        size = next;
    }
    EXPECT_EQ(GlobalFree(block), nullptr);
    for (SIZE_T again : {8 * mib, 6 * mib + 5, 5 * mib + 1}) {
        block = GlobalAlloc(GHND, again);
        const Bytes bytes = testing_support::BlockBytes(block);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<std::ptrdiff_t>(again)) << again;
        std::memset(GlobalLock(block), 0xC3, again);
        GlobalUnlock(block), GlobalFree(block);
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
    EXPECT_TRUE(next != block && !GlobalLock(block) && !GlobalFree(next));
    EXPECT_TRUE(!GlobalLock(reinterpret_cast<HGLOBAL>(0x7777777)) && !GlobalLock(nullptr));
    HGLOBAL empty = GlobalAlloc(GHND, 0);  // exists, but cannot be locked
    EXPECT_TRUE(empty && GlobalSize(empty) == 0 && !GlobalLock(empty) && !GlobalFree(empty));
    EXPECT_EQ(GlobalAlloc(GHND, static_cast<SIZE_T>(-1)), nullptr);
    block = GlobalAlloc(GHND, 4);
    EXPECT_EQ(GlobalReAlloc(block, static_cast<SIZE_T>(-1), 0), nullptr);
    EXPECT_EQ(GlobalSize(block), 4u);  // left as it was
    GlobalFree(block);
}
#endif

}  // namespace
