// Reading and writing BMP files and bare packed DIBs.
#include "core/errors.h"
#include "platform/platform.h"
#include "prism32.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace testing_support;

namespace {

class DibFileTest : public ::testing::Test {
protected:
    void SetUp() override { saved_ = SetImgError(0); }
    void TearDown() override { prism::LastImgError = saved_; }
    int saved_ = 0;
};

std::uint32_t Le32(const Bytes& b, size_t at) {
    return std::uint32_t(b[at]) | std::uint32_t(b[at + 1]) << 8 | std::uint32_t(b[at + 2]) << 16 |
           std::uint32_t(b[at + 3]) << 24;
}

// Loads a file and returns the block's bytes (empty on failure).
Bytes LoadBytes(const char* path) {
    HDIB dib = LoadDIBFromFile(path);
    if (!dib) return {};
    Bytes b = BlockBytes(dib);
    EXPECT_EQ(GlobalFree(dib), nullptr);
    return b;
}

struct DepthCase {
    int bitCount;
    int width;
    int height;
};
const DepthCase kDepths[] = {{1, 33, 5}, {4, 7, 3}, {8, 5, 4}, {24, 3, 6}};

TEST_F(DibFileTest, BmpWithInfoHeaderLoadsAsStoredAndSavesBackByteForByte) {
    for (const DepthCase& d : kDepths) {
        DibShape shape;
        shape.width = d.width;
        shape.height = d.height;
        shape.bitCount = d.bitCount;
        shape.clrUsed = d.bitCount <= 8 ? 1u << d.bitCount : 0;
        shape.sizeImage = static_cast<std::uint32_t>(Stride(d.width, d.bitCount) * d.height);
        Bytes packed = PackedDib(shape);
        Bytes bmp = BmpFile(packed);
        ScratchFile in("bmp-in"), out("bmp-out");
        in.Write(bmp);

        HDIB dib = LoadDIBFromFile(in.path());
        ASSERT_NE(dib, nullptr) << d.bitCount;
        EXPECT_EQ(BlockBytes(dib), packed) << d.bitCount;
        ASSERT_TRUE(SaveDIB(out.path(), dib));
        EXPECT_EQ(out.Read(), bmp) << d.bitCount;
        GlobalFree(dib);
    }
}

// A 12-byte header turns into the 40-byte header of the same image, with
// 4-byte table entries, no resolution, and both colour counts filled in.
TEST_F(DibFileTest, CoreHeaderBecomesAnInfoHeaderWithFourByteEntries) {
    for (const DepthCase& d : kDepths) {
        DibShape shape;
        shape.width = d.width;
        shape.height = d.height;
        shape.bitCount = d.bitCount;
        shape.coreHeader = true;
        ScratchFile in("core");
        in.Write(BmpFile(PackedDib(shape)));

        const std::uint32_t colors = d.bitCount <= 8 ? 1u << d.bitCount : 0;
        shape.coreHeader = false;
        shape.clrUsed = colors;
        shape.sizeImage = static_cast<std::uint32_t>(Stride(d.width, d.bitCount) * d.height);
        Bytes expected = PackedDib(shape);
        std::memset(&expected[24], 0, 8);        // no resolution in a core header
        std::memcpy(&expected[36], &colors, 4);  // biClrImportant
        EXPECT_EQ(LoadBytes(in.path()), expected) << d.bitCount;
    }
}

TEST_F(DibFileTest, BarePackedDibAndZeroOffsetTakePixelsFromBehindTheTable) {
    DibShape shape;
    shape.width = 6;
    shape.height = 3;
    shape.bitCount = 8;
    Bytes packed = PackedDib(shape);
    ScratchFile bare("bare"), zero("zero-offset");
    bare.Write(packed);
    zero.Write(BmpFile(packed, 0));

    Bytes fromBare = LoadBytes(bare.path());
    Bytes fromZero = LoadBytes(zero.path());
    ASSERT_FALSE(fromBare.empty());
    EXPECT_EQ(fromBare, fromZero);
    // Fields the reader fills in where the file had 0.
    EXPECT_EQ(Le32(fromBare, 20), 3u * 8);
    EXPECT_EQ(Le32(fromBare, 32), 256u);
    fromBare[20] = fromBare[32] = fromBare[33] = 0;
    EXPECT_EQ(fromBare, packed);
}

TEST_F(DibFileTest, OffsetBitsMayLeaveAGapBeforeThePixels) {
    DibShape shape;
    shape.width = 4;
    shape.height = 2;
    shape.bitCount = 24;
    Bytes packed = PackedDib(shape);
    Bytes file = BmpFile(packed, 14 + 40 + 10);
    file.insert(file.begin() + 14 + 40, 10, 0xEE);  // ten junk bytes after the header
    ScratchFile in("gap");
    in.Write(file);
    Bytes got = LoadBytes(in.path());
    ASSERT_FALSE(got.empty());
    EXPECT_EQ(Bytes(got.begin() + 40, got.end()), Bytes(packed.begin() + 40, packed.end()));
}

TEST_F(DibFileTest, ReadDibInfoCountsOffsetsFromWhereTheFileStands) {
    DibShape shape;
    shape.width = 5;
    shape.height = 2;
    shape.bitCount = 4;
    Bytes packed = PackedDib(shape);
    Bytes file(1000, 0x55);
    Bytes bmp = BmpFile(packed);
    file.insert(file.end(), bmp.begin(), bmp.end());
    ScratchFile in("inside");
    in.Write(file);

    HFILE f = plat::FileOpen(in.path(), plat::kOpenRead);
    ASSERT_NE(f, plat::kBadFile);
    ASSERT_EQ(plat::FileSeek(f, 1000, plat::kSeekSet), 1000);
    HDIB info = ReadDIBInfo(f);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(GlobalSize(info), 40u + 16 * 4);
    EXPECT_EQ(plat::FileSeek(f, 0, plat::kSeekCur), 1000 + 14 + 40 + 64);
    Bytes got = BlockBytes(info);
    EXPECT_EQ(Bytes(got.begin() + 40, got.end()), Bytes(packed.begin() + 40, packed.begin() + 40 + 64));
    GlobalFree(info);
    plat::FileClose(f);
}

TEST_F(DibFileTest, ColourCountFollowsClrUsed) {
    struct Case {
        int bitCount;
        std::uint32_t clrUsed;
        std::uint32_t tableEntries;
    } cases[] = {{8, 3, 3}, {24, 0, 0}, {24, 2, 2}, {1, 0, 2}};
    for (const Case& c : cases) {
        DibShape shape;
        shape.width = 3;
        shape.height = 2;
        shape.bitCount = c.bitCount;
        shape.colors = static_cast<int>(c.tableEntries);
        shape.clrUsed = c.clrUsed;
        ScratchFile in("clrused");
        in.Write(BmpFile(PackedDib(shape)));
        Bytes got = LoadBytes(in.path());
        ASSERT_FALSE(got.empty());
        EXPECT_EQ(Le32(got, 32), c.tableEntries);
        EXPECT_EQ(got.size(), 40 + c.tableEntries * 4 + Stride(3, c.bitCount) * 2);
    }
}

TEST_F(DibFileTest, ShortPixelAreaStillLoadsWithTheMissingRowsZero) {
    DibShape shape;
    shape.width = 8;
    shape.height = 4;
    shape.bitCount = 8;
    shape.colors = 0;
    shape.clrUsed = 0;
    Bytes packed = PackedDib(shape, [](int, int) { return 0xABu; });
    // 8-bit with no table: biClrUsed 0 means 256 entries, so give them.
    Bytes table(1024, 0x11);
    packed.insert(packed.begin() + 40, table.begin(), table.end());
    Bytes file = BmpFile(packed);
    file.resize(file.size() - 20);  // the last two and a half rows are missing
    ScratchFile in("short");
    in.Write(file);
    Bytes got = LoadBytes(in.path());
    ASSERT_EQ(got.size(), 40 + 1024 + 32u);
    for (size_t i = 0; i < 12; ++i) EXPECT_EQ(got[40 + 1024 + i], 0xAB) << i;
    for (size_t i = 12; i < 32; ++i) EXPECT_EQ(got[40 + 1024 + i], 0) << i;
}

TEST_F(DibFileTest, BadFilesFailWithTheirCodes) {
    Bytes fiftyThree(53, 0x20);
    fiftyThree[0] = 'B';
    fiftyThree[1] = 'M';
    DibShape shape;
    shape.bitCount = 8;
    Bytes v5 = BmpFile(PackedDib(shape));
    v5[14] = 108;  // a header kind the library does not know
    Bytes tall = BmpFile(PackedDib(shape));
    std::uint32_t huge = 0x7FFFFFFF;
    std::memcpy(&tall[14 + 8], &huge, 4);   // biHeight: the pixel area leaves 32 bits
    std::memcpy(&tall[14 + 4], &huge, 4);   // and biWidth
    Bytes topDown = BmpFile(PackedDib(shape));
    std::int32_t minus = -1;
    std::memcpy(&topDown[14 + 8], &minus, 4);
    Bytes hugeTable = BmpFile(PackedDib(shape));
    std::uint32_t manyColours = 0x40000000;
    std::memcpy(&hugeTable[14 + 32], &manyColours, 4);

    struct Case {
        const char* name;
        Bytes bytes;
        int code;
    } cases[] = {
        {"empty", {}, 4},
        {"one byte", {0x42}, 4},
        {"53 bytes of BM", fiftyThree, 4},
        {"header size 108", v5, 9},
        {"pixel area overflows", tall, 9},
        {"top-down height", topDown, 9},
        {"colour table of 2^30", hugeTable, 9},
    };
    for (const Case& c : cases) {
        ScratchFile in("bad");
        in.Write(c.bytes);
        SetImgError(0);
        EXPECT_EQ(LoadDIBFromFile(in.path()), nullptr) << c.name;
        EXPECT_EQ(ImgError(), c.code) << c.name;
    }
    SetImgError(0);
    EXPECT_EQ(LoadDIBFromFile("no-such-file.bmp"), nullptr);
    EXPECT_EQ(ImgError(), 3);
    SetImgError(0);
    EXPECT_EQ(LoadDIBFromFile(nullptr), nullptr);
    EXPECT_EQ(ImgError(), 3);
    SetImgError(0);
    EXPECT_EQ(ReadDIBInfo(plat::kBadFile), nullptr);
    EXPECT_EQ(ImgError(), 8);
}

TEST_F(DibFileTest, SuccessDoesNotClearAnOlderError) {
    DibShape shape;
    ScratchFile in("keep");
    in.Write(BmpFile(PackedDib(shape)));
    SetImgError(13);
    HDIB dib = LoadDIBFromFile(in.path());
    ASSERT_NE(dib, nullptr);
    ScratchFile out("keep-out");
    EXPECT_TRUE(SaveDIB(out.path(), dib));
    EXPECT_EQ(ImgError(), 13);
    GlobalFree(dib);
}

TEST_F(DibFileTest, SaveWritesTheBlockAsItStands) {
    DibShape shape;
    shape.width = 3;
    shape.height = 3;
    shape.bitCount = 4;
    shape.sizeImage = 0;
    Bytes packed = PackedDib(shape);
    packed.resize(packed.size() + 9, 0x77);  // slack at the end of the block
    HGLOBAL block = BlockFrom(packed);
    ScratchFile out("as-is");
    ASSERT_TRUE(SaveDIB(out.path(), block));
    Bytes file = out.Read();
    ASSERT_EQ(file.size(), packed.size() + 14);
    EXPECT_EQ(file[0], 'B');
    EXPECT_EQ(file[1], 'M');
    EXPECT_EQ(Le32(file, 2), packed.size() + 14);
    EXPECT_EQ(Le32(file, 6), 0u);
    EXPECT_EQ(Le32(file, 10), 14u + 40 + 64);
    EXPECT_EQ(Bytes(file.begin() + 14, file.end()), packed);
    EXPECT_EQ(Le32(file, 14 + 20), 0u);  // biSizeImage is not filled in

    // Reading it back computes biSizeImage again.
    Bytes back = LoadBytes(out.path());
    EXPECT_EQ(Le32(back, 20), 3u * 4);
    GlobalFree(block);
}

TEST_F(DibFileTest, SaveShowsTheWaitCursorAndPutsTheOldOneBack) {
    DibShape shape;
    HGLOBAL block = BlockFrom(PackedDib(shape));
    plat::CursorCounts before = plat::CursorActivity();
    ScratchFile out("cursor");
    ASSERT_TRUE(SaveDIB(out.path(), block));
    plat::CursorCounts after = plat::CursorActivity();
    EXPECT_EQ(after.waitShown - before.waitShown, 1);
    EXPECT_EQ(after.restored - before.restored, 1);
    GlobalFree(block);
}

TEST_F(DibFileTest, SaveFailures) {
    DibShape shape;
    HGLOBAL block = BlockFrom(PackedDib(shape));
    EXPECT_FALSE(SaveDIB("unused.bmp", nullptr));
    EXPECT_EQ(ImgError(), 8);
    SetImgError(0);
    EXPECT_FALSE(SaveDIB("no-such-directory/out.bmp", block));
    EXPECT_EQ(ImgError(), 3);
    GlobalFree(block);
}

}  // namespace
