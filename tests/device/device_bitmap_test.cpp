// Device bitmaps made from DIBs and back, their turns and flips against the
// DIB operations, palettes, and handles that name no bitmap.  Runs in the
// Windows build under wine, whose display is true colour (32 bits a pixel,
// no palette); the tests that rely on that say so.
#include "support/device_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <vector>

using namespace testing_support;

namespace {

// Pixel values of a device bitmap of depth 1 to 24, and of a packed DIB,
// top row first.
std::vector<unsigned> PixelsOf(HBITMAP bitmap) {
    const BITMAP bm = RecordOf(bitmap);
    Bytes bits(static_cast<size_t>(bm.bmWidthBytes) * bm.bmHeight);
    GetBitmapBits(bitmap, static_cast<LONG>(bits.size()), bits.data());
    std::vector<unsigned> v;
    for (int y = 0; y < bm.bmHeight; ++y)
        for (int x = 0; x < bm.bmWidth; ++x) {
            const unsigned char* row = bits.data() + static_cast<size_t>(bm.bmWidthBytes) * y;
            switch (bm.bmBitsPixel) {
                case 1: v.push_back(row[x / 8] >> (7 - x % 8) & 1); break;
                case 4: v.push_back(x % 2 ? row[x / 2] & 15 : row[x / 2] >> 4); break;
                case 8: v.push_back(row[x]); break;
                default: v.push_back(row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16); break;
            }
        }
    return v;
}

std::vector<unsigned> PixelsOf(const Bytes& dib) {
    std::vector<unsigned> v;
    for (int y = Field(dib, 8) - 1; y >= 0; --y)
        for (int x = 0; x < Field(dib, 4); ++x) v.push_back(PixelAt(dib, x, y));
    return v;
}

// A device bitmap of the DIB's depth holding its pixels: rows top first,
// ending on 16-bit boundaries.
HBITMAP DeviceCopy(const Bytes& dib) {
    const int w = Field(dib, 4), h = Field(dib, 8), d = dib[14];
    const size_t wb = (w * d + 15) / 16 * 2, stride = Stride(w, d), at = dib.size() - stride * h;
    Bytes bits(wb * h);
    for (int y = 0; y < h; ++y) std::copy_n(dib.begin() + at + stride * (h - 1 - y), wb, bits.begin() + wb * y);
    return CreateBitmap(w, h, 1, d, bits.data());
}

using Values = std::vector<unsigned>;

TEST(DeviceBitmap, DibToBitmapAndBackKeepsEveryColour) {
    const int displayBits = ScreenCaps(BITSPIXEL);
    for (int bits : {1, 4, 8, 24}) {
        for (int width : {13, 17}) {
            SCOPED_TRACE(::testing::Message() << width << " pixels wide at " << bits << " bits");
            Bytes dib = PackedDib({width, 5, bits});
            if (bits == 1) std::fill_n(dib.begin() + 44, 3, 255), std::fill_n(dib.begin() + 40, 3, 0);
            HDIB block = BlockFrom(dib);
            HBITMAP bitmap = ConvertDIBToBitmap(block);
            ASSERT_NE(bitmap, nullptr);
            // A 1-bit image makes a monochrome bitmap; the others one of the
            // display's form.
            EXPECT_EQ(RecordOf(bitmap).bmBitsPixel, bits == 1 ? 1 : displayBits);
            EXPECT_EQ(ColorsOf(bitmap), ColorsOf(dib));
            // Back at 1 bit with its table or at 24 bits, 10 bytes of slack behind.
            const Bytes back = Take(ConvertBitmapToDIB(bitmap, nullptr));
            ASSERT_FALSE(back.empty());
            const int backBits = bits == 1 ? 1 : 24;
            EXPECT_EQ(back[14], backBits);
            EXPECT_EQ(back.size(), 40 + (backBits == 1 ? 8 : 0) + Stride(width, backBits) * 5 + 10);
            EXPECT_EQ(ColorsOf(back), ColorsOf(dib));
            DeleteObject(bitmap);
            GlobalFree(block);
        }
    }
}

// Rows run the other way, so the device quarter turns are the DIB turns
// the other way round.
TEST(DeviceBitmap, TurnsAndFlipsMatchTheDibOperationsWithRowsTopFirst) {
    using Device = std::function<HBITMAP(HBITMAP)>;
    auto inPlace = [](BOOL(WINAPI * f)(HBITMAP)) { return Device([f](HBITMAP b) { return f(b) ? b : nullptr; }); };
    const struct { const char* name; Device device; std::vector<DibOp> dib; } ops[] = {
        {"RotateBitmap90", RotateBitmap90, {RotateDIB180, RotateDIB90}},
        {"RotateBitmap270", RotateBitmap270, {RotateDIB90}},
        {"RotateBitmap180", inPlace(RotateBitmap180), {RotateDIB180}},
        {"FlipBitmapVertical", inPlace(FlipBitmapVertical), {FlipDIBVertical}},
        {"FlipBitmapHorizontal", inPlace(FlipBitmapHorizontal), {FlipDIBHorizontal}},
    };
    for (int bits : {1, 4, 8, 24}) {
        for (const auto& op : ops) {
            SCOPED_TRACE(::testing::Message() << op.name << " at " << bits << " bits");
            const Bytes dib = PackedDib({13, 6, bits});
            Bytes expected = dib;
            for (DibOp turn : op.dib) expected = Call(turn, expected);
            Values want = PixelsOf(expected);
            if (bits == 1 && op.dib.size() == 1 && op.dib[0] == RotateDIB90)  // the first column stays blank
                for (size_t i = 0; i < want.size(); i += static_cast<size_t>(Field(expected, 4))) want[i] = 0;
            HBITMAP source = DeviceCopy(dib);
            ASSERT_NE(source, nullptr);
            HBITMAP result = op.device(source);
            ASSERT_NE(result, nullptr);
            const BITMAP bm = RecordOf(result);
            EXPECT_EQ(std::vector<LONG>({bm.bmWidth, bm.bmWidthBytes}),
                      std::vector<LONG>({Field(expected, 4), (Field(expected, 4) * bits + 15) / 16 * 2}));
            EXPECT_EQ(PixelsOf(result), want);
            if (result != source) DeleteObject(result);
            DeleteObject(source);
        }
    }
}

// Other depths come out blank, as the bit moves leave them; a 1-bit turn
// takes rows as long as a bitmap has.
TEST(DeviceBitmap, OneBitTurnsTakeLongRows) {
    HBITMAP wide = CreateBitmap(65535, 1, 1, 1, Bytes(8192, 0x80).data());
    HBITMAP tall = RotateBitmap90(wide);
    EXPECT_EQ(std::vector<LONG>({RecordOf(tall).bmWidth, RecordOf(tall).bmHeight}), std::vector<LONG>({1, 65535}));
    DeleteObject(tall);
    DeleteObject(wide);
}

TEST(DeviceBitmap, HandlesThatNameNoBitmapFailWithTheirCodes) {
    HBITMAP deleted = CreateBitmap(4, 4, 1, 1, nullptr);
    DeleteObject(deleted);
    HPALETTE palette = CreateDIBPalette(BlockFrom(PackedDib({2, 2, 1})));
    const struct {
        const char* name;
        std::function<bool(HBITMAP)> call;  // true when it made or did something
        int code;                           // -1: the last error stands
    } calls[] = {
        {"RotateBitmap90", [](HBITMAP b) { return RotateBitmap90(b) != nullptr; }, 15},
        {"RotateBitmap270", [](HBITMAP b) { return RotateBitmap270(b) != nullptr; }, 15},
        {"RotateBitmap180", [](HBITMAP b) { return RotateBitmap180(b) != 0; }, 15},
        {"FlipBitmapVertical", [](HBITMAP b) { return FlipBitmapVertical(b) != 0; }, 15},
        {"FlipBitmapHorizontal", [](HBITMAP b) { return FlipBitmapHorizontal(b) != 0; }, 15},
        {"DuplicateBitmap", [](HBITMAP b) { return DuplicateBitmap(b) != nullptr; }, 7},
        {"ConvertToMonochromeBitmap", [](HBITMAP b) { return ConvertToMonochromeBitmap(b) != nullptr; }, 8},
        {"ConvertBitmapToDIB", [](HBITMAP b) { return ConvertBitmapToDIB(b, nullptr) != nullptr; }, -1},
        {"SaveBitmap", [](HBITMAP b) { return SaveBitmap("never.bmp", b, nullptr) != 0; }, -1},
    };
    for (const auto& c : calls) {
        for (HBITMAP h : {HBITMAP(nullptr), deleted, reinterpret_cast<HBITMAP>(palette)}) {
            SCOPED_TRACE(::testing::Message() << c.name << " of " << h);
            SetImgError(30);
            EXPECT_EQ(FailureCode(c.call(h)), c.code < 0 ? 30 : c.code);
        }
    }
    DeleteObject(palette);
}

TEST(DevicePalette, FromTheColourTableAndFromTheDisplay) {
    Bytes dib = PackedDib({3, 2, 24, 10, 10});
    for (std::uint32_t used : {0u, 10u}) {
        dib[32] = static_cast<unsigned char>(used);
        HDIB block = BlockFrom(dib);
        SetImgError(30);
        HPALETTE palette = CreateDIBPalette(block);
        EXPECT_EQ(palette != nullptr, used != 0);
        EXPECT_EQ(ImgError(), 30);
        if (palette) {
            PALETTEENTRY e[12] = {};
            EXPECT_EQ(GetPaletteEntries(palette, 0, 12, e), 10u);
            for (int i = 0; i < 10; ++i)  // 0xRRGGBB
                EXPECT_EQ(unsigned(e[i].peRed << 16 | e[i].peGreen << 8 | e[i].peBlue), Get32(dib, 40 + 4 * i)) << i;
            DeleteObject(palette);
        }
        GlobalFree(block);
    }
    if (ScreenCaps(RASTERCAPS) & RC_PALETTE) GTEST_SKIP() << "these checks are for a display without a palette";
    RGBQUAD entries[4] = {{1, 2, 3, 4}};
    EXPECT_EQ(GetSystemPalette(entries), FALSE);
    EXPECT_EQ(entries[0].rgbRed, 3);
    EXPECT_EQ(GetCurrentPalette(), nullptr);
    EXPECT_EQ(ImgError(), 10);
}

unsigned Checks(int x, int y) { return (x + y) % 3 ? 0xFFFFFF : 0; }

TEST(DeviceBitmap, HighColourMonochromeCopyInvertAndFiles) {
    HBITMAP high = CreateBitmap(5, 2, 1, 16, Bytes(20, 0x1F).data());
    const Bytes fromHigh = Take(ConvertBitmapToDIB(high, nullptr));
    ASSERT_FALSE(fromHigh.empty());
    EXPECT_EQ(std::vector<int>({fromHigh[14], fromHigh[32]}), std::vector<int>({24, 0}));  // no table
    EXPECT_EQ(ColorsOf(fromHigh), ColorsOf(high));
    DeleteObject(high);

    const Bytes dib = PackedDib({11, 4, 24}, Checks);
    HDIB block = BlockFrom(dib);
    HBITMAP colour = ConvertDIBToBitmap(block);
    HBITMAP mono = ConvertToMonochromeBitmap(colour);
    EXPECT_EQ(RecordOf(mono).bmBitsPixel, 1);
    EXPECT_EQ(ColorsOf(mono), ColorsOf(dib));
    HBITMAP copy = DuplicateBitmap(mono);
    EXPECT_EQ(PixelsOf(copy), PixelsOf(mono));
    EXPECT_EQ(RecordOf(copy).bmWidthBytes, RecordOf(mono).bmWidthBytes);
    EXPECT_EQ(InvertBitmap(copy), TRUE);  // no active window: the screen's context
    Colors inverted = ColorsOf(dib);
    for (auto& c : inverted) c ^= 0xFFFFFF;
    EXPECT_EQ(ColorsOf(copy), inverted);

    ScratchFile file("device");
    ASSERT_EQ(SaveBitmap(file.path(), colour, nullptr), TRUE);
    HBITMAP loaded = LoadBitmapFromFile(file.path());
    EXPECT_EQ(ColorsOf(loaded), ColorsOf(dib));
    file.Write(Bytes(64, 'x'));
    SetImgError(0);
    EXPECT_EQ(FailureCode(LoadBitmapFromFile(file.path())), 9);
    for (HGDIOBJ o : {HGDIOBJ(colour), HGDIOBJ(mono), HGDIOBJ(copy), HGDIOBJ(loaded)}) DeleteObject(o);
    GlobalFree(block);
}

}  // namespace
