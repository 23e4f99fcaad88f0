// Header arithmetic, the checked allocation and the view of a block.
#include "core/dib.h"
#include "support/test_support.h"

using namespace testing_support;

namespace {

TEST(Dib, ColourCountsStridesAndCheckedSizes) {
    const std::uint32_t counts[][3] = {{1, 0, 2},  {4, 0, 16}, {8, 0, 256}, {24, 0, 0}, {16, 0, 0},
                                       {32, 0, 0}, {24, 7, 7}, {8, 7, 7},   {1, 300, 300}, {2, 0, 0}};
    for (const auto& c : counts) {
        const Bytes h = Image(4, 4, int(c[0]), nullptr, 0, c[1]);
        EXPECT_EQ(prism::DibColorCount(h.data()), c[2]) << c[0] << "/" << c[1];
        EXPECT_EQ(prism::DibPaletteSize(h.data()), c[2] * 4u);
    }
    // A 12-byte header looks only at its depth, not at where biClrUsed would be.
    Bytes core = PackedDib({1, 1, 4, -1, 0, 0, true});
    std::memset(core.data() + 12, 0xFF, 24);
    EXPECT_EQ(prism::DibColorCount(core.data()), 16u);
    EXPECT_EQ(prism::DibBits(core.data()), core.data() + 12 + 48);

    const std::int64_t strides[][3] = {{33, 1, 8}, {32, 1, 4}, {1, 1, 4}, {1, 24, 4}, {5, 24, 16}, {3, 8, 4},
                                       {9, 4, 8},  {0, 8, 0},  {-3, 8, 0}, {0x7FFFFFFF, 24, 0x180000000ll}};
    for (const auto& s : strides) EXPECT_EQ(prism::DibRowBytes(s[0], int(s[1])), std::uint64_t(s[2])) << s[0];

    std::uint64_t bytes = 0;
    EXPECT_TRUE(prism::DibBlockBytes(5, 3, 24, 0, &bytes) && bytes == 40u + 3 * 16);
    EXPECT_TRUE(prism::DibBlockBytes(8, 2, 8, 256, &bytes) && bytes == 40u + 1024 + 16);
    for (auto [w, h, bits] : {std::tuple{-1, 3, 8}, {3, -1, 8}, {65536, 65536, 24}, {0x7FFFFFFF, 1, 24}})
        EXPECT_FALSE(prism::DibBlockBytes(w, h, bits, 0, &bytes)) << w << "x" << h;
    EXPECT_EQ(prism::NewDib(65536, 65536, 24, 0), nullptr);
    // A new image: the header filled in, everything else zero.
    Bytes want = Image(5, 3, 4, [](int, int) { return 0u; }, 16, 16);
    std::memset(want.data() + 24, 0, want.size() - 24);
    Put32(want, 20, 12);
    Put32(want, 32, 16);
    EXPECT_EQ(Take(prism::NewDib(5, 3, 4, 16)), want);
}

TEST(ViewDib, ChecksTheHeaderAndTableAgainstTheBlock) {
    Bytes dib = Image(3, 2, 8);
    prism::DibView v;
    ASSERT_EQ(prism::ViewDib(dib.data(), dib.size(), &v), prism::DibStatus::kOk);
    EXPECT_TRUE(v.width == 3 && v.height == 2 && v.stride == 4u && v.bits == dib.data() + 40 + 1024 && v.RowsFit());
    // One byte short of the rows: the view stands, the rows do not fit.
    ASSERT_EQ(prism::ViewDib(dib.data(), dib.size() - 1, &v), prism::DibStatus::kOk);
    EXPECT_FALSE(v.RowsFit());
    for (size_t size : {40 + 1023, 39, 3}) EXPECT_EQ(prism::ViewDib(dib.data(), size, &v), prism::DibStatus::kTooSmall);
    EXPECT_EQ(prism::ViewDib(nullptr, 100, &v), prism::DibStatus::kTooSmall);
    // A top-down height is refused, and so is a table of 2^31 entries.
    Bytes bad = dib;
    Put32(bad, 8, 0xFFFFFFFEu);
    EXPECT_EQ(prism::ViewDib(bad.data(), bad.size(), &v), prism::DibStatus::kBadSize);
    bad = dib;
    Put32(bad, 32, 0x80000000u);
    EXPECT_EQ(prism::ViewDib(bad.data(), bad.size(), &v), prism::DibStatus::kTooSmall);
}

}  // namespace
