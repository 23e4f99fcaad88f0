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
