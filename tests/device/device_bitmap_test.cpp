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

int Width(const Bytes& dib) { return static_cast<int>(dib[4] | dib[5] << 8 | dib[6] << 16); }
int Height(const Bytes& dib) { return static_cast<int>(dib[8] | dib[9] << 8 | dib[10] << 16); }
int Depth(const Bytes& dib) { return dib[14]; }

Bytes Take(HDIB dib) {
    Bytes b = BlockBytes(dib);
    GlobalFree(dib);
    return b;
}

// A device bitmap of the DIB's depth holding its pixels: rows top first,
// ending on 16-bit boundaries.
HBITMAP DeviceCopy(const Bytes& dib) {
    const int w = Width(dib), h = Height(dib), d = Depth(dib);
    const size_t wb = (w * d + 15) / 16 * 2, stride = Stride(w, d), at = dib.size() - stride * h;
    Bytes bits(wb * h);
    for (int y = 0; y < h; ++y) std::copy_n(dib.begin() + at + stride * (h - 1 - y), wb, bits.begin() + wb * y);
    return CreateBitmap(w, h, 1, d, bits.data());
}

// Pixel values of a device bitmap of depth 1 to 24, top row first.
std::vector<unsigned> PixelsOf(HBITMAP bitmap) {
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
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
    for (int y = Height(dib) - 1; y >= 0; --y)
        for (int x = 0; x < Width(dib); ++x) v.push_back(PixelAt(dib, x, y));
    return v;
}

TEST(DeviceBitmap, DibToBitmapAndBackKeepsEveryColour) {
    for (int bits : {1, 4, 8, 24}) {
        for (int width : {13, 17}) {
            SCOPED_TRACE(::testing::Message() << width << " pixels wide at " << bits << " bits");
            Bytes dib = PackedDib({width, 5, bits});
            if (bits == 1) std::fill_n(dib.begin() + 44, 3, 255), std::fill_n(dib.begin() + 40, 3, 0);
            HDIB block = BlockFrom(dib);
            HBITMAP bitmap = ConvertDIBToBitmap(block);
            ASSERT_NE(bitmap, nullptr);
            BITMAP bm = {};
            GetObjectA(bitmap, sizeof(bm), &bm);
            // A 1-bit image makes a monochrome bitmap; the others one of the
            // display's form, 32 bits on this display.
            EXPECT_EQ(bm.bmBitsPixel, bits == 1 ? 1 : GetDeviceCaps(GetDC(nullptr), BITSPIXEL));
            EXPECT_EQ(ColorsOf(bitmap), ColorsOf(dib));

            const Bytes back = Take(ConvertBitmapToDIB(bitmap, nullptr));
            ASSERT_FALSE(back.empty());
            const int backBits = bits == 1 ? 1 : 24;
            EXPECT_EQ(Depth(back), backBits);
            const size_t table = backBits == 1 ? 8 : 0;
            EXPECT_EQ(back.size(), 40 + table + Stride(width, backBits) * 5 + 10);  // 10 bytes of slack
            EXPECT_EQ(ColorsOf(back), ColorsOf(dib));
            DeleteObject(bitmap);
            GlobalFree(block);
        }
    }
}

using DibTurn = HDIB(WINAPI*)(HDIB);

HDIB Turn(DibTurn first, DibTurn second, HDIB dib) {
    HDIB a = first(dib);
    if (!second) return a;
    HDIB b = second(a);
    GlobalFree(a);
    return b;
}

TEST(DeviceBitmap, TurnsAndFlipsMatchTheDibOperationsWithRowsTopFirst) {
    struct Op {
        const char* name;
        std::function<HBITMAP(HBITMAP)> device;
        DibTurn dib1;
        DibTurn dib2;
    };
    // Rows run the other way, so the device quarter turns are the DIB
    // turns the other way round.
    const Op ops[] = {
        {"RotateBitmap90", RotateBitmap90, RotateDIB180, RotateDIB90},
        {"RotateBitmap270", RotateBitmap270, RotateDIB90, nullptr},
        {"RotateBitmap180", [](HBITMAP b) { return RotateBitmap180(b) ? b : nullptr; }, RotateDIB180, nullptr},
        {"FlipBitmapVertical", [](HBITMAP b) { return FlipBitmapVertical(b) ? b : nullptr; }, FlipDIBVertical, nullptr},
        {"FlipBitmapHorizontal", [](HBITMAP b) { return FlipBitmapHorizontal(b) ? b : nullptr; }, FlipDIBHorizontal,
         nullptr},
    };
    for (int bits : {1, 4, 8, 24}) {
        for (const Op& op : ops) {
            SCOPED_TRACE(::testing::Message() << op.name << " at " << bits << " bits");
            const Bytes dib = PackedDib({13, 6, bits});
            HDIB block = BlockFrom(dib);
            Bytes expected = Take(Turn(op.dib1, op.dib2, block));
            GlobalFree(block);
            std::vector<unsigned> want = PixelsOf(expected);
            if (bits == 1 && op.dib1 == RotateDIB90 && !op.dib2)  // the first column stays blank
                for (size_t i = 0; i < want.size(); i += static_cast<size_t>(Width(expected))) want[i] = 0;

            HBITMAP source = DeviceCopy(dib);
            ASSERT_NE(source, nullptr);
            HBITMAP result = op.device(source);
            ASSERT_NE(result, nullptr);
            BITMAP bm = {};
            GetObjectA(result, sizeof(bm), &bm);
            EXPECT_EQ(bm.bmWidth, Width(expected));
            EXPECT_EQ(bm.bmWidthBytes, (bm.bmWidth * bits + 15) / 16 * 2);
            EXPECT_EQ(PixelsOf(result), want);
            if (result != source) DeleteObject(result);
            DeleteObject(source);
        }
    }
}

TEST(DeviceBitmap, OtherDepthsComeOutBlankAndOneBitTurnsTakeLongRows) {
    const Bytes white(32 * 3 * 2, 0xFF);
    HBITMAP high = CreateBitmap(32, 3, 1, 16, white.data());
    EXPECT_EQ(RotateBitmap180(high), TRUE);
    Bytes bits(white.size());
    GetBitmapBits(high, static_cast<LONG>(bits.size()), bits.data());
    EXPECT_EQ(bits, Bytes(bits.size(), 0));
    DeleteObject(high);

    HBITMAP wide = CreateBitmap(65535, 1, 1, 1, Bytes(8192, 0x80).data());
    HBITMAP tall = RotateBitmap90(wide);
    BITMAP bm = {};
    GetObjectA(tall, sizeof(bm), &bm);
    EXPECT_EQ(bm.bmWidth, 1);
    EXPECT_EQ(bm.bmHeight, 65535);
    DeleteObject(tall);
    DeleteObject(wide);
}

TEST(DeviceBitmap, HandlesThatNameNoBitmapFailWithTheirCodes) {
    HBITMAP deleted = CreateBitmap(4, 4, 1, 1, nullptr);
    DeleteObject(deleted);
    HPALETTE palette = CreateDIBPalette(BlockFrom(PackedDib({2, 2, 1})));
    struct Call {
        const char* name;
        std::function<bool(HBITMAP)> call;  // true when it made or did something
        int code;                           // -1: the last error stands
    };
    const Call calls[] = {
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
    for (const Call& c : calls) {
        for (HBITMAP h : {HBITMAP(nullptr), deleted, reinterpret_cast<HBITMAP>(palette)}) {
            SCOPED_TRACE(::testing::Message() << c.name << " of " << h);
            SetImgError(30);
            EXPECT_FALSE(c.call(h));
            EXPECT_EQ(ImgError(), c.code < 0 ? 30 : c.code);
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
            for (int i = 0; i < 10; ++i) {
                const unsigned char* q = dib.data() + 40 + 4 * i;
                EXPECT_EQ(e[i].peRed << 16 | e[i].peGreen << 8 | e[i].peBlue, q[2] << 16 | q[1] << 8 | q[0]);
            }
            DeleteObject(palette);
        }
        GlobalFree(block);
    }
    // This display is true colour: no system palette to read or copy.
    HDC screen = GetDC(nullptr);
    const bool hasPalette = GetDeviceCaps(screen, RASTERCAPS) & RC_PALETTE;
    ReleaseDC(nullptr, screen);
    if (hasPalette) GTEST_SKIP() << "these checks are for a display without a palette";
    RGBQUAD entries[4] = {{1, 2, 3, 4}};
    EXPECT_EQ(GetSystemPalette(entries), FALSE);
    EXPECT_EQ(entries[0].rgbRed, 3);
    EXPECT_EQ(GetCurrentPalette(), nullptr);
    EXPECT_EQ(ImgError(), 10);
}

TEST(DeviceBitmap, HighColourBecomesTwentyFourBitsWithoutTable) {
    HBITMAP high = CreateBitmap(5, 2, 1, 16, Bytes(20, 0x1F).data());
    const Bytes dib = Take(ConvertBitmapToDIB(high, nullptr));
    ASSERT_FALSE(dib.empty());
    EXPECT_EQ(Depth(dib), 24);
    EXPECT_EQ(dib[32], 0);  // biClrUsed
    EXPECT_EQ(ColorsOf(dib), ColorsOf(high));
    DeleteObject(high);
}

unsigned Checks(int x, int y) { return (x + y) % 3 ? 0xFFFFFF : 0; }

TEST(DeviceBitmap, MonochromeCopyInvertAndFiles) {
    const Bytes dib = PackedDib({11, 4, 24}, Checks);
    HDIB block = BlockFrom(dib);
    HBITMAP colour = ConvertDIBToBitmap(block);
    HBITMAP mono = ConvertToMonochromeBitmap(colour);
    BITMAP bm = {};
    GetObjectA(mono, sizeof(bm), &bm);
    EXPECT_EQ(bm.bmBitsPixel, 1);
    EXPECT_EQ(ColorsOf(mono), ColorsOf(dib));

    HBITMAP copy = DuplicateBitmap(mono);
    BITMAP cm = {};
    GetObjectA(copy, sizeof(cm), &cm);
    EXPECT_EQ(PixelsOf(copy), PixelsOf(mono));
    EXPECT_EQ(cm.bmWidthBytes, bm.bmWidthBytes);

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
    EXPECT_EQ(LoadBitmapFromFile(file.path()), nullptr);
    EXPECT_EQ(ImgError(), 9);
    for (HGDIOBJ o : {HGDIOBJ(colour), HGDIOBJ(mono), HGDIOBJ(copy), HGDIOBJ(loaded)}) DeleteObject(o);
    GlobalFree(block);
}

}  // namespace
