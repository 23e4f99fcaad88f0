// Right-angle turns and flips of DIBs: each export against a mapping written
// out pixel by pixel as a whole-block comparison, the invariants between
// them, the one-column shift of the 270-degree turn, other depths and bad
// blocks.
#include "geometry/dib_copy.h"
#include "support/test_support.h"

#include <tuple>

using namespace testing_support;

namespace {

using Op = DibOp;

// A source DIB with header fields that must carry over as they stand.
Bytes Source(const Picture& p) {
    Bytes dib = ToDib(p);
    Put32(dib, 20, 0);    // biSizeImage left 0, as from outside
    Put32(dib, 24, 100);  // resolution
    Put32(dib, 28, 200);
    Put32(dib, 36, 3);    // biClrImportant
    return dib;
}

// The whole result block: the source's header and table, the result's rows,
// 4 spare bytes.  A quarter turn swaps width and height and sets biSizeImage.
Bytes ExpectedBlock(const Bytes& src, const Picture& result, bool quarter) {
    Bytes out = ToDib(result);
    std::copy(src.begin(), src.begin() + static_cast<long>(BitsOffset(src)), out.begin());
    if (quarter) {
        Put32(out, 4, static_cast<std::uint32_t>(result.width));
        Put32(out, 8, static_cast<std::uint32_t>(result.height));
        Put32(out, 20, static_cast<std::uint32_t>(Stride(result.width, result.bits) *
                                                           static_cast<size_t>(result.height)));
    }
    out.resize(out.size() + 4, 0);
    return out;
}

// Result (x, y) of a w by h source takes source (sx, sy); x from 1 only for
// RotateDIB270, whose column 0 is never written.
struct Mapping {
    Op op;
    bool quarter;
    void (*from)(int x, int y, int w, int h, int* sx, int* sy);
};
const Mapping kMappings[] = {
    {RotateDIB90, true, [](int x, int y, int w, int, int* sx, int* sy) { *sx = w - 1 - y, *sy = x; }},
    {RotateDIB180, false, [](int x, int y, int w, int h, int* sx, int* sy) { *sx = w - 1 - x, *sy = h - 1 - y; }},
    {FlipDIBHorizontal, false, [](int x, int y, int w, int, int* sx, int* sy) { *sx = w - 1 - x, *sy = y; }},
    {FlipDIBVertical, false, [](int x, int y, int, int h, int* sx, int* sy) { *sx = x, *sy = h - 1 - y; }},
    {RotateDIB270, true, [](int x, int y, int, int h, int* sx, int* sy) { *sx = y, *sy = h - x; }},
};

// RotateDIB270 as the library defines it: x' from 1 to h takes source
// (y', h - x'), so column 0 stays zero and source row 0 is written one
// pixel past the last column, at bit h * depth of each result row: into
// padding, into the next row's first pixel, or into the spare bytes.
Bytes Expected(const Mapping& m, const Bytes& src, const Picture& s) {
    Picture r = m.quarter ? Picture(s.height, s.width, s.bits) : Picture(s.width, s.height, s.bits);
    const bool shifted = m.op == RotateDIB270;
    for (int y = 0; y < r.height; ++y)
        for (int x = shifted ? 1 : 0; x < r.width; ++x) {
            int sx, sy;
            m.from(x, y, s.width, s.height, &sx, &sy);
            r.at(x, y) = s.at(sx, sy);
        }
    Bytes out = ExpectedBlock(src, r, m.quarter);
    const std::uint64_t stride = Stride(r.width, r.bits);
    for (int y = 0; shifted && y < r.height; ++y)
        PutBits(out.data() + BitsOffset(out), y * stride * 8 + std::uint64_t(s.height) * s.bits,
                         s.bits, s.at(y, 0));
    return out;
}

class TurnTest : public ::testing::TestWithParam<std::tuple<int, std::pair<int, int>>> {};

TEST_P(TurnTest, EveryExportMatchesItsMappingAndTheInvariantsHold) {
    const int bits = std::get<0>(GetParam());
    const auto size = std::get<1>(GetParam());
    const Picture s = Varied(size.first, size.second, bits);
    const Bytes src = Source(s);
    for (const Mapping& m : kMappings)
        EXPECT_EQ(Call(m.op, src), Expected(m, src, s)) << (&m - kMappings);

    // Four quarter turns, and two of any half turn or flip, give the input
    // back, less the spare bytes and the biSizeImage the quarter turns set.
    Bytes b = src;
    for (int i = 0; i < 4; ++i) b = Call(RotateDIB90, b);
    ASSERT_EQ(b.size(), src.size() + 4);
    b.resize(src.size());
    Put32(b, 20, 0);
    EXPECT_EQ(b, src);
    for (Op op : {RotateDIB180, FlipDIBHorizontal, FlipDIBVertical}) {
        b = Call(op, Call(op, src));
        ASSERT_EQ(b.size(), src.size() + 4);
        b.resize(src.size());
        EXPECT_EQ(b, src);
    }
    const Bytes half = Call(RotateDIB180, src);
    EXPECT_EQ(Call(FlipDIBVertical, Call(FlipDIBHorizontal, src)), half);
    EXPECT_EQ(Call(FlipDIBHorizontal, Call(FlipDIBVertical, src)), half);
}

INSTANTIATE_TEST_SUITE_P(Depths, TurnTest,
                         ::testing::Combine(::testing::Values(1, 4, 8, 24),
                                            ::testing::Values(std::make_pair(1, 1), std::make_pair(7, 5),
                                                              std::make_pair(13, 32), std::make_pair(33, 9),
                                                              std::make_pair(3, 17), std::make_pair(130, 7))));

// Quirks: a compressed image is turned as rows; depths outside 1, 4, 8, 24
// are mirrored row-wise by the vertical flip and give zero pictures of the
// right size from the rest; a zero-sized image gives a zero-sized result.
TEST(TurnQuirks, CompressedOtherDepthsAndEmptyImages) {
    Picture s = Varied(4, 2, 8);
    Bytes rle = Source(s);
    Put32(rle, 16, 1);
    Bytes want = Call(RotateDIB180, Source(s));
    Put32(want, 16, 1);
    EXPECT_EQ(Call(RotateDIB180, rle), want);

    for (int bits : {16, 32}) {
        Bytes src = Image(5, 3, bits);
        const size_t stride = Stride(5, bits);
        for (size_t i = 40; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i * 7 + 1);
        want = src;
        for (int y = 0; y < 3; ++y)
            std::copy(src.begin() + 40 + (2 - y) * stride, src.begin() + 40 + (3 - y) * stride, want.begin() + 40 + y * stride);
        want.resize(want.size() + 4, 0);
        EXPECT_EQ(Call(FlipDIBVertical, src), want) << bits;
        std::fill(want.begin() + 40, want.end(), 0);
        EXPECT_EQ(Call(RotateDIB180, src), want) << bits;
        EXPECT_EQ(Call(FlipDIBHorizontal, src), want) << bits;
        Put32(want, 4, 3), Put32(want, 8, 5);
        want.resize(40 + Stride(3, bits) * 5 + 4);
        Put32(want, 20, static_cast<std::uint32_t>(want.size() - 44));
        EXPECT_EQ(Call(RotateDIB90, src), want) << bits;
        EXPECT_EQ(Call(RotateDIB270, src), want) << bits;
    }
    for (int bits : {1, 4, 8, 24}) {
        Bytes src = ToDib(Picture(0, 3, bits));
        Bytes out = Call(RotateDIB90, src);
        ASSERT_EQ(out.size(), src.size() + 4) << bits;  // 3 by 0: no rows
        EXPECT_EQ(Get32(out, 4), 3u);
        EXPECT_EQ(Get32(out, 8), 0u);
        EXPECT_EQ(Call(FlipDIBVertical, src).size(), src.size() + 4);
    }
}

// Blocks that are not images of this kind give 0 and leave the last error
// alone.
TEST(TurnBadInput, RefusedWithoutAnErrorCode) {
    const Bytes good = Source(Varied(9, 4, 8));
    auto with = [&](size_t at, std::uint32_t v) {
        Bytes b = good;
        Put32(b, at, v);
        return b;
    };
    Bytes planes = good;
    planes[12] = 2;
    Bytes core(12 + 6 + 4, 0);  // 12-byte header, 1-bit, 2 entries, one row
    core[0] = 12, core[4] = 8, core[6] = 1, core[8] = 1, core[10] = 1;
    const Bytes bad[] = {
        Bytes(good.begin(), good.end() - 1),     // rows cut short
        Bytes(good.begin(), good.begin() + 30),  // header cut short
        with(4, 0xFFFFFFFFu),                    // width -1
        with(8, 0x80000000u),                    // height negative
        with(4, 0x7FFFFFFF),                     // rows far beyond the block
        with(32, 0x40000000),                    // colour table beyond the block
        planes,
        core,
    };
    SetImgError(5);
    for (Op op : {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBVertical, FlipDIBHorizontal}) {
        EXPECT_EQ(op(nullptr), nullptr);
        HGLOBAL freed = BlockFrom(good);
        GlobalFree(freed);
        EXPECT_EQ(op(freed), nullptr);
        for (const Bytes& b : bad) EXPECT_TRUE(Call(op, b).empty()) << (&b - bad);
    }
    EXPECT_EQ(ImgError(), 5);
}

}  // namespace
