// Right-angle turns and flips of DIBs: the invariants between them, other
// depths, compressed and empty images, and bad blocks.  Every export's
// output (the one-column shift of the 270-degree turn included) is pinned
// in tests/pinned.
#include "support/test_support.h"

using namespace testing_support;

namespace {

// A source DIB with header fields that must carry over as they stand.
Bytes Source(const Picture& p) {
    Bytes dib = ToDib(p);
    for (auto [at, v] : {std::pair{20u, 0u}, {24u, 100u}, {28u, 200u}, {36u, 3u}}) Put32(dib, at, v);
    return dib;
}

// Four quarter turns, and two of any half turn or flip, give the input
// back, less the spare bytes and the biSizeImage the quarter turns set.
TEST(Turns, InvariantsHold) {
    for (int bits : {1, 4, 8, 24})
        for (auto [w, h] : {std::pair{1, 1}, {7, 5}, {13, 32}, {33, 9}, {3, 17}, {130, 7}}) {
            SCOPED_TRACE(std::to_string(w) + "x" + std::to_string(h) + " at " + std::to_string(bits));
            const Bytes src = Source(Varied(w, h, bits));
            for (DibOp op : {RotateDIB90, RotateDIB180, FlipDIBHorizontal, FlipDIBVertical}) {
                Bytes b = src;
                for (int i = 0; i < (op == RotateDIB90 ? 4 : 2); ++i) b = Call(op, b);
                ASSERT_EQ(b.size(), src.size() + 4);
                b.resize(src.size());
                EXPECT_EQ(op == RotateDIB90 ? With(b, 20, 0) : b, src);
            }
            const Bytes half = Call(RotateDIB180, src);
            EXPECT_EQ(Call(FlipDIBVertical, Call(FlipDIBHorizontal, src)), half);
            EXPECT_EQ(Call(FlipDIBHorizontal, Call(FlipDIBVertical, src)), half);
        }
}

// Quirks: a compressed image is turned as rows; depths outside 1, 4, 8, 24
// are mirrored row-wise by the vertical flip and give zero pictures of the
// right size from the rest; a zero-sized image gives a zero-sized result.
TEST(TurnQuirks, CompressedOtherDepthsAndEmptyImages) {
    const Bytes plain = Source(Varied(4, 2, 8));
    EXPECT_EQ(Call(RotateDIB180, With(plain, 16, 1)), With(Call(RotateDIB180, plain), 16, 1));

    for (int bits : {16, 32}) {
        Bytes src = Image(5, 3, bits);
        const size_t stride = Stride(5, bits);
        for (size_t i = 40; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i * 7 + 1);
        Bytes want = src;
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
    for (int bits : {1, 4, 8, 24}) {  // 0 by 3, then 3 by 0: no rows, only the spare bytes
        const Bytes src = Image(0, 3, bits);
        EXPECT_EQ(Call(RotateDIB90, src), With(With(src, 4, 3), 8, 0) + Bytes(4, 0)) << bits;
        EXPECT_EQ(Call(FlipDIBVertical, src), src + Bytes(4, 0)) << bits;
    }
}

// Blocks that are not images of this kind give 0 and leave the last error
// alone.
TEST(TurnBadInput, RefusedWithoutAnErrorCode) {
    const Bytes good = Source(Varied(9, 4, 8));
    auto with = [&](size_t at, std::uint32_t v) { return With(good, at, v); };
    const Bytes bad[] = {
        Bytes(good.begin(), good.end() - 1),     // rows cut short
        Bytes(good.begin(), good.begin() + 30),  // header cut short
        with(4, 0xFFFFFFFFu),                    // width -1
        with(8, 0x80000000u),                    // height negative
        with(4, 0x7FFFFFFF),                     // rows far beyond the block
        with(32, 0x40000000),                    // colour table beyond the block
        with(12, 2 | 8 << 16),                   // two planes
        PackedDib({8, 1, 1, -1, 0, 0, true}),    // 12-byte header
    };
    SetImgError(5);
    for (DibOp op : {RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBVertical, FlipDIBHorizontal}) {
        EXPECT_EQ(op(nullptr), nullptr);
        HGLOBAL freed = BlockFrom(good);
        GlobalFree(freed);
        EXPECT_EQ(op(freed), nullptr);
        for (const Bytes& b : bad) EXPECT_TRUE(Call(op, b).empty()) << (&b - bad);
    }
    EXPECT_EQ(ImgError(), 5);
}

}  // namespace
