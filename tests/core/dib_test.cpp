// Header arithmetic, the checked allocation and the view of a block.
#include "core/dib.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace testing_support;

namespace {

Bytes InfoHeader(int bitCount, std::uint32_t clrUsed, int width = 4, int height = 4) {
    DibShape shape;
    shape.width = width;
    shape.height = height;
    shape.bitCount = bitCount;
    shape.colors = 0;
    shape.clrUsed = clrUsed;
    return PackedDib(shape);
}

TEST(DibColorCount, FollowsClrUsedOrTheDepth) {
    struct Case {
        int bitCount;
        std::uint32_t clrUsed;
        std::uint32_t count;
    } cases[] = {{1, 0, 2},   {4, 0, 16},  {8, 0, 256}, {24, 0, 0},   {16, 0, 0},
                 {32, 0, 0},  {24, 7, 7},  {8, 7, 7},   {1, 300, 300}, {2, 0, 0}};
    for (const Case& c : cases) {
        Bytes h = InfoHeader(c.bitCount, c.clrUsed);
        EXPECT_EQ(prism::DibColorCount(h.data()), c.count) << c.bitCount << "/" << c.clrUsed;
        EXPECT_EQ(prism::DibPaletteSize(h.data()), c.count * 4u);
    }
}

TEST(DibColorCount, CoreHeaderLooksOnlyAtItsDepth) {
    DibShape shape;
    shape.coreHeader = true;
    shape.bitCount = 4;
    Bytes h = PackedDib(shape);
    // Bytes where a 40-byte header would keep biClrUsed must not count.
    std::memset(h.data() + 12, 0xFF, 24);
    EXPECT_EQ(prism::DibColorCount(h.data()), 16u);
    EXPECT_EQ(prism::DibPaletteSize(h.data()), 48u);
    EXPECT_EQ(prism::DibBits(h.data()), h.data() + 12 + 48);
}

TEST(DibRowBytes, RowsEndOnA32BitBoundary) {
    struct Case {
        std::int64_t width;
        int bitCount;
        std::uint64_t stride;
    } cases[] = {{33, 1, 8},  {32, 1, 4},  {1, 1, 4},  {1, 24, 4},  {5, 24, 16}, {3, 8, 4},
                 {9, 4, 8},   {0, 8, 0},   {-3, 8, 0}, {0x7FFFFFFF, 24, 0x180000000ull}};
    for (const Case& c : cases)
        EXPECT_EQ(prism::DibRowBytes(c.width, c.bitCount), c.stride) << c.width << "x" << c.bitCount;
}

TEST(DibBlockBytes, RefusesSizesOutsideThe32BitRange) {
    std::uint64_t bytes = 0;
    EXPECT_TRUE(prism::DibBlockBytes(5, 3, 24, 0, &bytes));
    EXPECT_EQ(bytes, 40u + 3 * 16);
    EXPECT_TRUE(prism::DibBlockBytes(8, 2, 8, 256, &bytes));
    EXPECT_EQ(bytes, 40u + 1024 + 16);
    EXPECT_FALSE(prism::DibBlockBytes(-1, 3, 8, 0, &bytes));
    EXPECT_FALSE(prism::DibBlockBytes(3, -1, 8, 0, &bytes));
    EXPECT_FALSE(prism::DibBlockBytes(65536, 65536, 24, 0, &bytes));
    EXPECT_FALSE(prism::DibBlockBytes(0x7FFFFFFF, 1, 24, 0, &bytes));
    EXPECT_EQ(prism::NewDib(65536, 65536, 24, 0), nullptr);
}

TEST(NewDib, MakesAZeroedImageWithItsHeaderFilledIn) {
    HDIB dib = prism::NewDib(5, 3, 4, 16);
    ASSERT_NE(dib, nullptr);
    Bytes b = BlockBytes(dib);
    ASSERT_EQ(b.size(), 40u + 64 + 3 * 4);
    BITMAPINFOHEADER h;
    std::memcpy(&h, b.data(), sizeof(h));
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, 5);
    EXPECT_EQ(h.biHeight, 3);
    EXPECT_EQ(h.biPlanes, 1);
    EXPECT_EQ(h.biBitCount, 4);
    EXPECT_EQ(h.biSizeImage, 12u);
    EXPECT_EQ(h.biClrUsed, 16u);
    for (size_t i = 40; i < b.size(); ++i) ASSERT_EQ(b[i], 0) << i;
    GlobalFree(dib);
}

TEST(ViewDib, ChecksTheHeaderAndTableAgainstTheBlock) {
    Bytes dib = InfoHeader(8, 0, 3, 2);
    dib.resize(40 + 1024 + 8);
    prism::DibView v;
    ASSERT_EQ(prism::ViewDib(dib.data(), dib.size(), &v), prism::DibStatus::kOk);
    EXPECT_EQ(v.width, 3);
    EXPECT_EQ(v.height, 2);
    EXPECT_EQ(v.stride, 4u);
    EXPECT_EQ(v.bits, dib.data() + 40 + 1024);
    EXPECT_TRUE(v.RowsFit());

    // One byte short of the rows: the view stands, the rows do not fit.
    ASSERT_EQ(prism::ViewDib(dib.data(), dib.size() - 1, &v), prism::DibStatus::kOk);
    EXPECT_FALSE(v.RowsFit());
    // Short of the colour table or of the header itself.
    EXPECT_EQ(prism::ViewDib(dib.data(), 40 + 1023, &v), prism::DibStatus::kTooSmall);
    EXPECT_EQ(prism::ViewDib(dib.data(), 39, &v), prism::DibStatus::kTooSmall);
    EXPECT_EQ(prism::ViewDib(dib.data(), 3, &v), prism::DibStatus::kTooSmall);
    EXPECT_EQ(prism::ViewDib(nullptr, 100, &v), prism::DibStatus::kTooSmall);

    // A top-down height is refused, and so is a table of 2^31 entries.
    Bytes topDown = dib;
    std::int32_t negative = -2;
    std::memcpy(topDown.data() + 8, &negative, 4);
    EXPECT_EQ(prism::ViewDib(topDown.data(), topDown.size(), &v), prism::DibStatus::kBadSize);
    Bytes hugeTable = dib;
    std::uint32_t used = 0x80000000u;
    std::memcpy(hugeTable.data() + 32, &used, 4);
    EXPECT_EQ(prism::ViewDib(hugeTable.data(), hugeTable.size(), &v), prism::DibStatus::kTooSmall);
}

}  // namespace
