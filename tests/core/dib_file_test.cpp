// Header arithmetic, the checked allocation and the view of a block;
// reading and writing BMP files and bare packed DIBs.
#include "core/dib.h"
#include "core/errors.h"
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

// Writes the bytes to a scratch file and loads it: the block's bytes, or
// empty on failure.
Bytes Load(const Bytes& file) {
    ScratchFile in("load");
    in.Write(file);
    return Take(LoadDIBFromFile(in.path()));
}

TEST(DibFile, LoadsAsStoredAndSavesBackByteForByteAndCoreHeadersGrow) {
    const int depths[][3] = {{1, 33, 5}, {4, 7, 3}, {8, 5, 4}, {24, 3, 6}};
    for (const auto& d : depths) {
        const std::uint32_t colors = d[0] <= 8 ? 1u << d[0] : 0;
        DibShape shape{d[1], d[2], d[0], -1, colors, static_cast<std::uint32_t>(Stride(d[1], d[0]) * d[2])};
        const Bytes packed = PackedDib(shape), bmp = BmpFile(packed);
        ScratchFile out("bmp-out");
        HGLOBAL block = BlockFrom(packed);
        SetImgError(13);  // success leaves an older error standing
        EXPECT_EQ(Load(bmp), packed) << d[0];
        ASSERT_TRUE(SaveDIB(out.path(), block));
        EXPECT_EQ(out.Read(), bmp) << d[0];
        EXPECT_EQ(ImgError(), 13);
        GlobalFree(block);
        // A 12-byte header becomes the 40-byte one of the same image, with
        // 4-byte entries, no resolution and both colour counts filled in.
        shape.coreHeader = true;
        Bytes expected = packed;
        std::memset(&expected[24], 0, 8);
        Put32(expected, 36, colors);
        EXPECT_EQ(Load(BmpFile(PackedDib(shape))), expected) << d[0];
    }
}

TEST(DibFile, OffsetsTablesAndShortFiles) {
    // A bare packed DIB and an offset of 0 take the pixels from behind the
    // table; the reader fills in biSizeImage and biClrUsed.
    const Bytes packed = Image(6, 3, 8);
    Bytes want = packed;
    Put32(want, 20, 3 * 8);
    Put32(want, 32, 256);
    EXPECT_EQ(Load(packed), want);
    EXPECT_EQ(Load(BmpFile(packed, 0)), want);
    // The offset may leave a gap before the pixels.
    const Bytes rgb = Image(4, 2, 24);
    Bytes gap = BmpFile(rgb, 14 + 40 + 10);
    gap.insert(gap.begin() + 14 + 40, 10, 0xEE);
    EXPECT_EQ(Load(gap), With(rgb, 20, 2 * 12));
    // The table holds biClrUsed entries when it is set.
    const std::uint32_t tables[][3] = {{8, 3, 3}, {24, 0, 0}, {24, 2, 2}, {1, 0, 2}};
    for (const auto& t : tables) {
        const Bytes got = Load(BmpFile(Image(3, 2, int(t[0]), nullptr, int(t[2]), t[1])));
        EXPECT_EQ(Get32(got, 32), t[2]);
        EXPECT_EQ(got.size(), 40 + t[2] * 4 + Stride(3, int(t[0])) * 2);
    }
    // A file shorter than its pixel area loads; the missing rows are zero.
    const Bytes full = Uniform(8, 4, 8, 0xAB);
    EXPECT_EQ(Load(Short(BmpFile(full), 20)), With(With(Short(full, 20), 20, 4 * 8), 32, 256) + Bytes(20, 0));
}

TEST(DibFile, ReadDibInfoCountsOffsetsFromWhereTheFileStands) {
    const Bytes packed = Image(5, 2, 4), bmp = BmpFile(packed);
    Bytes file = bmp;
    file.insert(file.begin(), 1000, 0x55);
    ScratchFile in("inside");
    in.Write(file);
    HFILE f = plat::FileOpen(in.path(), plat::kOpenRead);
    ASSERT_EQ(plat::FileSeek(f, 1000, plat::kSeekSet), 1000);
    Bytes info = Take(ReadDIBInfo(f));
    EXPECT_EQ(plat::FileSeek(f, 0, plat::kSeekCur), 1000 + 14 + 40 + 64);
    ASSERT_EQ(info.size(), 40u + 64);
    EXPECT_EQ(Bytes(info.begin() + 40, info.end()), Bytes(packed.begin() + 40, packed.begin() + 104));
    plat::FileClose(f);
}

TEST(DibFile, BadFilesAndFailedSavesGiveTheirCodes) {
    const Bytes good = BmpFile(Image(1, 1, 8));
    auto with = [&](size_t at, std::uint32_t v) { return With(good, 14 + at, v); };
    Bytes fiftyThree(53, 0x20), wide = with(4, 0x7FFFFFFF);
    fiftyThree[0] = 'B', fiftyThree[1] = 'M';
    Put32(wide, 14 + 8, 0x7FFFFFFF);
    const struct { const char* name; Bytes bytes; int code; } cases[] = {
        {"empty", {}, 4}, {"one byte", {0x42}, 4}, {"53 bytes of BM", fiftyThree, 4},
        {"header size 108", with(0, 108), 9}, {"pixel area leaves 32 bits", wide, 9},
        {"top-down", with(8, 0xFFFFFFFFu), 9}, {"top-down with its size", [&] { Bytes b = with(8, 0xFFFFFFFFu); return Put32(b, 34, 4), b; }(), 9},
        {"colour table of 2^30", with(32, 0x40000000), 9}};
    for (const auto& c : cases) {
        SetImgError(0);
        EXPECT_TRUE(Load(c.bytes).empty()) << c.name;
        EXPECT_EQ(ImgError(), c.code) << c.name;
    }
    HGLOBAL block = BlockFrom(Image(1, 1, 8));
    const struct { bool (*fails)(HGLOBAL); int code; } calls[] = {
        {[](HGLOBAL) { return !LoadDIBFromFile("no-such-file.bmp"); }, 3},
        {[](HGLOBAL) { return !LoadDIBFromFile(nullptr); }, 3},
        {[](HGLOBAL) { return !ReadDIBInfo(plat::kBadFile); }, 8},
        {[](HGLOBAL) { return !SaveDIB("unused.bmp", nullptr); }, 8},
        {[](HGLOBAL b) { return !SaveDIB("no-such-directory/out.bmp", b); }, 3}};
    for (const auto& c : calls) {
        SetImgError(0);
        EXPECT_TRUE(c.fails(block));
        EXPECT_EQ(ImgError(), c.code);
    }
    GlobalFree(block);
}

TEST(DibFile, SaveWritesTheBlockAsItStandsUnderTheWaitCursor) {
    Bytes packed = Image(3, 3, 4);
    packed.resize(packed.size() + 9, 0x77);  // slack at the end of the block
    HGLOBAL block = BlockFrom(packed);
    ScratchFile out("as-is");
    const plat::CursorCounts before = plat::CursorActivity();
    ASSERT_TRUE(SaveDIB(out.path(), block));
    const plat::CursorCounts after = plat::CursorActivity();
    EXPECT_EQ(after.waitShown - before.waitShown, 1);
    EXPECT_EQ(after.restored - before.restored, 1);
    Bytes want = BmpFile(packed);  // biSizeImage stays 0
    EXPECT_EQ(out.Read(), want);
    EXPECT_EQ(Get32(Load(want), 20), 3u * 4);  // and is worked out on reading
    GlobalFree(block);
}

}  // namespace
