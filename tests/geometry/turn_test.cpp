// Right-angle turns and flips of DIBs: each export against a mapping
// written out pixel by pixel, the invariants between them, the one-column
// shift of the 270-degree turn, other depths and bad blocks.
#include "geometry/dib_copy.h"
#include "geometry/picture.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

using picture::Bytes;
using picture::Picture;

namespace {

using Op = picture::DibOp;

// A source DIB with header fields that must carry over as they stand.
Bytes Source(const Picture& p) {
    Bytes dib = picture::ToDib(p);
    picture::Put32(dib, 20, 0);    // biSizeImage left 0, as from outside
    picture::Put32(dib, 24, 100);  // biXPelsPerMeter
    picture::Put32(dib, 28, 200);  // biYPelsPerMeter
    picture::Put32(dib, 36, 3);    // biClrImportant
    return dib;
}

// The whole result block expected for a result picture: the source's header
// and table, the result's rows, 4 spare bytes.  A quarter turn swaps width
// and height and sets biSizeImage.
Bytes ExpectedBlock(const Bytes& src, const Picture& result, bool quarter) {
    Bytes out = picture::ToDib(result);
    const size_t head = picture::BitsOffset(src);
    std::copy(src.begin(), src.begin() + static_cast<long>(head), out.begin());
    if (quarter) {
        picture::Put32(out, 4, static_cast<std::uint32_t>(result.width));
        picture::Put32(out, 8, static_cast<std::uint32_t>(result.height));
        picture::Put32(out, 20, static_cast<std::uint32_t>(testing_support::Stride(result.width, result.bits) *
                                                           static_cast<size_t>(result.height)));
    }
    out.resize(out.size() + 4, 0);
    return out;
}

Picture Turn90(const Picture& s) {
    Picture r(s.height, s.width, s.bits);
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) r.at(x, y) = s.at(s.width - 1 - y, x);
    return r;
}
Picture Turn180(const Picture& s) {
    Picture r(s.width, s.height, s.bits);
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) r.at(x, y) = s.at(s.width - 1 - x, s.height - 1 - y);
    return r;
}
Picture MirrorX(const Picture& s) {
    Picture r(s.width, s.height, s.bits);
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) r.at(x, y) = s.at(s.width - 1 - x, y);
    return r;
}
Picture MirrorY(const Picture& s) {
    Picture r(s.width, s.height, s.bits);
    for (int y = 0; y < r.height; ++y)
        for (int x = 0; x < r.width; ++x) r.at(x, y) = s.at(x, s.height - 1 - y);
    return r;
}

// RotateDIB270 as the library defines it: result (x', y') takes source
// (y', h - x') for x' from 1 to h.  Column 0 stays zero; x' = h is one
// pixel past the last column, so source row 0 is written at bit h * depth
// of each result row: into padding, into the next row's first pixel, or
// into the spare bytes behind the last row.
Bytes Expected270(const Bytes& src, const Picture& s) {
    Picture r(s.height, s.width, s.bits);
    for (int y = 0; y < r.height; ++y)
        for (int x = 1; x < r.width; ++x) r.at(x, y) = s.at(y, s.height - x);
    Bytes out = ExpectedBlock(src, r, true);
    unsigned char* area = out.data() + picture::BitsOffset(out);
    const std::uint64_t stride = testing_support::Stride(r.width, r.bits);
    for (int y = 0; y < r.height; ++y)
        picture::PutBits(area, y * stride * 8 + static_cast<std::uint64_t>(s.height) * s.bits, s.bits, s.at(y, 0));
    return out;
}

class TurnTest : public ::testing::TestWithParam<std::tuple<int, std::pair<int, int>>> {
protected:
    int bits() const { return std::get<0>(GetParam()); }
    int width() const { return std::get<1>(GetParam()).first; }
    int height() const { return std::get<1>(GetParam()).second; }
    Picture Pic() const { return picture::Varied(width(), height(), bits()); }
};

TEST_P(TurnTest, Rotate90TurnsClockwise) {
    Picture s = Pic();
    Bytes src = Source(s);
    EXPECT_EQ(picture::Run(RotateDIB90, src), ExpectedBlock(src, Turn90(s), true));
}

TEST_P(TurnTest, Rotate180TurnsHalfWay) {
    Picture s = Pic();
    Bytes src = Source(s);
    EXPECT_EQ(picture::Run(RotateDIB180, src), ExpectedBlock(src, Turn180(s), false));
}

TEST_P(TurnTest, Rotate270TurnsBackWithItsOneColumnShift) {
    Picture s = Pic();
    Bytes src = Source(s);
    EXPECT_EQ(picture::Run(RotateDIB270, src), Expected270(src, s));
}

TEST_P(TurnTest, FlipsMirror) {
    Picture s = Pic();
    Bytes src = Source(s);
    EXPECT_EQ(picture::Run(FlipDIBHorizontal, src), ExpectedBlock(src, MirrorX(s), false));
    EXPECT_EQ(picture::Run(FlipDIBVertical, src), ExpectedBlock(src, MirrorY(s), false));
}

TEST_P(TurnTest, FourQuarterTurnsGiveTheInputBack) {
    Bytes src = Source(Pic());
    Bytes b = src;
    for (int i = 0; i < 4; ++i) b = picture::Run(RotateDIB90, b);
    ASSERT_EQ(b.size(), src.size() + 4);  // the spare bytes behind the rows
    b.resize(src.size());
    picture::Put32(b, 20, 0);  // the turns fill in biSizeImage
    EXPECT_EQ(b, src);
}

TEST_P(TurnTest, TwoOfAnyHalfTurnOrFlipGiveTheInputBack) {
    Bytes src = Source(Pic());
    for (Op op : {RotateDIB180, FlipDIBHorizontal, FlipDIBVertical}) {
        Bytes b = picture::Run(op, picture::Run(op, src));
        ASSERT_EQ(b.size(), src.size() + 4);
        b.resize(src.size());
        EXPECT_EQ(b, src);
    }
}

TEST_P(TurnTest, HalfTurnIsBothFlips) {
    Bytes src = Source(Pic());
    Bytes half = picture::Run(RotateDIB180, src);
    EXPECT_EQ(picture::Run(FlipDIBVertical, picture::Run(FlipDIBHorizontal, src)), half);
    EXPECT_EQ(picture::Run(FlipDIBHorizontal, picture::Run(FlipDIBVertical, src)), half);
}

// Turning back with RotateDIB270 moves every pixel one column right of
// where it started.
TEST_P(TurnTest, QuarterTurnAndBackShiftOneColumn) {
    Picture s = Pic();
    Picture back = picture::FromDib(picture::Run(RotateDIB270, picture::Run(RotateDIB90, Source(s))));
    ASSERT_EQ(back.width, s.width);
    ASSERT_EQ(back.height, s.height);
    for (int y = 0; y < s.height; ++y)
        for (int x = 1; x < s.width; ++x) ASSERT_EQ(back.at(x, y), s.at(x - 1, y)) << x << "," << y;
}

std::string TurnName(const ::testing::TestParamInfo<TurnTest::ParamType>& info) {
    return "d" + std::to_string(std::get<0>(info.param)) + "_" + std::to_string(std::get<1>(info.param).first) +
           "x" + std::to_string(std::get<1>(info.param).second);
}

INSTANTIATE_TEST_SUITE_P(Depths, TurnTest,
                         ::testing::Combine(::testing::Values(1, 4, 8, 24),
                                            ::testing::Values(std::make_pair(1, 1), std::make_pair(7, 5),
                                                              std::make_pair(13, 32), std::make_pair(33, 9),
                                                              std::make_pair(8, 8), std::make_pair(5, 4),
                                                              std::make_pair(64, 3), std::make_pair(3, 17),
                                                              std::make_pair(130, 7), std::make_pair(2, 16))),
                         TurnName);

// Hand-checked: a 1-bit image of height 32 has rows of exactly 4 bytes
// after RotateDIB270, so source row 0 lands on the first pixel of the next
// stored row and its last pixel in the spare bytes.
TEST(RotateDIB270, OneBitHeight32SpillsIntoTheNextRowAndTheSpareBytes) {
    Picture s(3, 32, 1);
    s.at(0, 0) = 1;  // row 0: 1 0 1
    s.at(2, 0) = 1;
    s.at(1, 5) = 1;  // lands at result column 32 - 5 = 27 of result row 1
    Bytes out = picture::Run(RotateDIB270, Source(s));
    const size_t bits = 40 + 8;
    ASSERT_EQ(out.size(), bits + 3 * 4 + 4);
    const Bytes rows(out.begin() + bits, out.end());
    EXPECT_EQ(rows, (Bytes{0, 0, 0, 0,        // result row 0: column 0 is never written
                           0x80, 0, 0, 0x10,  // row 1: source (0,0) at column 0, source (1,5) at 27
                           0, 0, 0, 0,        // row 2: source (1,0) is 0
                           0x80, 0, 0, 0}));  // spare bytes: source (2,0)
}

// Hand-checked: 24-bit, height 5, rows of 16 bytes; source row 0 goes to
// bytes 15..17 of each result row, the last two on the next row's first
// pixel, or into the spare bytes.
TEST(RotateDIB270, TwentyFourBitHeight5StraddlesPaddingAndNextRow) {
    Picture s(2, 5, 24);
    s.at(0, 0) = 0x030201;
    s.at(1, 0) = 0x060504;
    Bytes out = picture::Run(RotateDIB270, Source(s));
    ASSERT_EQ(out.size(), 40u + 2 * 16 + 4);
    const unsigned char* r = out.data() + 40;
    EXPECT_EQ(r[15], 1);
    EXPECT_EQ(r[16], 2);  // next row, first pixel
    EXPECT_EQ(r[17], 3);
    EXPECT_EQ(r[18], 0);
    EXPECT_EQ(r[31], 4);
    EXPECT_EQ(r[32], 5);  // spare bytes
    EXPECT_EQ(r[33], 6);
}

TEST(RotateDIB90, SetsBiSizeImageAndKeepsResolution) {
    Picture s = picture::Varied(6, 3, 8);
    Bytes src = Source(s);
    Bytes turned = picture::Run(RotateDIB90, src);
    EXPECT_EQ(picture::Get32(turned, 20), 4u * 6);
    EXPECT_EQ(picture::Get32(turned, 24), 100u);
    EXPECT_EQ(picture::Get32(turned, 28), 200u);
    Bytes half = picture::Run(RotateDIB180, src);
    EXPECT_EQ(picture::Get32(half, 20), 0u);
}

// A compressed image is not looked at: its bytes are turned as rows.
TEST(RotateDIB180, TurnsTheBytesOfACompressedHeaderAsRows) {
    Picture s = picture::Varied(4, 2, 8);
    Bytes src = Source(s);
    picture::Put32(src, 16, 1);
    Bytes out = picture::Run(RotateDIB180, src);
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(picture::Get32(out, 16), 1u);
    EXPECT_EQ(picture::FromDib(out), Turn180(s));
}

// Depths outside 1, 4, 8, 24: the vertical flip moves whole rows, the
// others give the zero picture with the right header.
TEST(TurnOtherDepths, VerticalFlipMirrorsTheRestGiveZeroPictures) {
    for (int bits : {2, 16, 32}) {
        testing_support::DibSpec shape;
        shape.width = 5;
        shape.height = 3;
        shape.bitCount = bits;
        shape.colors = 0;
        Bytes src = testing_support::PackedDib(shape);
        const size_t stride = testing_support::Stride(5, bits);
        for (size_t i = 40; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i * 7 + 1);

        Bytes flipped = picture::Run(FlipDIBVertical, src);
        ASSERT_EQ(flipped.size(), src.size() + 4) << bits;
        for (int y = 0; y < 3; ++y)
            EXPECT_TRUE(std::equal(flipped.begin() + 40 + y * stride, flipped.begin() + 40 + (y + 1) * stride,
                                   src.begin() + 40 + (2 - y) * stride))
                << bits << " row " << y;

        for (Op op : {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBHorizontal}) {
            Bytes out = picture::Run(op, src);
            const bool quarter = op == RotateDIB90 || op == RotateDIB270;
            const size_t rows = quarter ? testing_support::Stride(3, bits) * 5 : stride * 3;
            ASSERT_EQ(out.size(), 40 + rows + 4) << bits;
            EXPECT_EQ(picture::Get32(out, 4), quarter ? 3u : 5u);
            EXPECT_EQ(picture::Get32(out, 8), quarter ? 5u : 3u);
            EXPECT_EQ(Bytes(out.begin() + 40, out.end()), Bytes(rows + 4, 0)) << bits;
        }
    }
}

// Blocks that are not images of this kind give 0 and leave the last
// error alone.
TEST(TurnBadInput, RefusedWithoutAnErrorCode) {
    const Op ops[] = {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBVertical, FlipDIBHorizontal};
    Bytes good = Source(picture::Varied(9, 4, 8));
    auto with = [&](size_t at, std::uint32_t v) {
        Bytes b = good;
        picture::Put32(b, at, v);
        return b;
    };
    Bytes planes = good;
    planes[12] = 2;
    Bytes core(12 + 6 + 4, 0);  // 12-byte header, 1-bit, 2 entries, one row
    core[0] = 12;
    core[4] = 8;
    core[6] = 1;
    core[8] = 1;
    core[10] = 1;
    const Bytes bad[] = {
        Bytes(good.begin(), good.end() - 1),  // rows cut short
        Bytes(good.begin(), good.begin() + 30),  // header cut short
        with(4, 0xFFFFFFFFu),                 // width -1
        with(8, 0x80000000u),                 // height negative
        with(4, 0x7FFFFFFF),                  // rows far beyond the block
        with(32, 0x40000000),                 // colour table beyond the block
        planes,
        core,
    };
    SetImgError(5);
    for (Op op : ops) {
        EXPECT_EQ(op(nullptr), nullptr);
        HGLOBAL freed = testing_support::BlockFrom(good);
        GlobalFree(freed);
        EXPECT_EQ(op(freed), nullptr);
        for (size_t i = 0; i < sizeof(bad) / sizeof(bad[0]); ++i) EXPECT_TRUE(picture::Run(op, bad[i]).empty()) << i;
    }
    EXPECT_EQ(ImgError(), 5);
}

TEST(TurnEmpty, ZeroSizedImagesGiveZeroSizedResults) {
    for (int bits : {1, 4, 8, 24}) {
        Bytes src = picture::ToDib(Picture(0, 3, bits));
        Bytes out = picture::Run(RotateDIB90, src);
        ASSERT_EQ(out.size(), src.size() + 4) << bits;  // 3 by 0: no rows
        EXPECT_EQ(picture::Get32(out, 4), 3u);
        EXPECT_EQ(picture::Get32(out, 8), 0u);
        EXPECT_EQ(picture::Run(FlipDIBVertical, src).size(), src.size() + 4);
    }
}

TEST(DibPixelCopy, CopiesOnePixelByDepth) {
    using prism::DibPixelCopy;
    struct Case {
        int depth;
        unsigned char from[3];
        int fromOffset;
        unsigned char to[3];
        int toOffset;
        unsigned char expect[3];
    } cases[] = {
        {1, {0x20}, 2, {0x00}, 7, {0x01}},          // set
        {1, {0xDF}, 2, {0xFF}, 0, {0x7F}},          // clear
        {4, {0xAB}, 0, {0x12}, 0, {0xA2}},          // high to high
        {4, {0xAB}, 4, {0x12}, 4, {0x1B}},          // low to low
        {4, {0xAB}, 0, {0x12}, 4, {0x1A}},          // high to low
        {4, {0xAB}, 4, {0x12}, 0, {0xB2}},          // low to high
        {4, {0xAB}, 2, {0x12}, 0, {0x12}},          // other offsets: nothing
        {4, {0xAB}, 0, {0x12}, 2, {0x12}},
        {8, {0x5A}, 3, {0x00}, 6, {0x5A}},          // offsets ignored
        {24, {1, 2, 3}, 5, {9, 9, 9}, 1, {1, 2, 3}},
        {0, {1, 2, 3}, 0, {9, 9, 9}, 0, {9, 9, 9}},  // out of range
        {25, {1, 2, 3}, 0, {9, 9, 9}, 0, {9, 9, 9}},
        {16, {1, 2, 3}, 0, {9, 9, 9}, 0, {9, 9, 9}},
    };
    for (const Case& c : cases) {
        unsigned char to[3] = {c.to[0], c.to[1], c.to[2]};
        DibPixelCopy(c.from, c.fromOffset, to, c.toOffset, c.depth);
        EXPECT_EQ(Bytes(to, to + 3), Bytes(c.expect, c.expect + 3)) << "depth " << c.depth << " offsets "
                                                                    << c.fromOffset << "," << c.toOffset;
    }
}

TEST(DibRowCopy, CopiesForwardByteByByte) {
    unsigned char a[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned char b[8] = {};
    prism::DibRowCopy(b, a, 0);
    EXPECT_EQ(Bytes(b, b + 8), Bytes(8, 0));
    prism::DibRowCopy(b, a, 5);
    EXPECT_EQ(Bytes(b, b + 8), (Bytes{1, 2, 3, 4, 5, 0, 0, 0}));
    // Overlapping forward: each byte copied reads one already written.
    prism::DibRowCopy(a + 1, a, 6);
    EXPECT_EQ(Bytes(a, a + 8), (Bytes{1, 1, 1, 1, 1, 1, 1, 8}));
}

TEST(MaskTable, SelectsBitsFromTheTop) {
    for (int i = 0; i < 8; ++i) EXPECT_EQ(prism::MaskTable[i], 0x80 >> i);
}

}  // namespace
