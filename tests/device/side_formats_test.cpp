// Metafiles, clipboard files, text drawn as images and the clipboard's
// metafile pictures, under wine (true-colour display, 96 dots per inch, a
// default memory-context font 16 pixels a line).
#include "support/device_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

using namespace testing_support;

namespace {

// A metafile body that blackens the square (0, 0)-(10, 10), and what a
// width x height picture of it shows: black in that square, white elsewhere.
Bytes SquareMetaFile() {
    HDC dc = CreateMetaFileA(nullptr);
    PatBlt(dc, 0, 0, 10, 10, BLACKNESS);
    HMETAFILE mf = CloseMetaFile(dc);
    Bytes bits(GetMetaFileBitsEx(mf, 0, nullptr));
    GetMetaFileBitsEx(mf, static_cast<UINT>(bits.size()), bits.data());
    DeleteMetaFile(mf);
    return bits;
}

Colors SquareColors(int width, int height) {
    Colors c(static_cast<size_t>(width) * height, 0xFFFFFF);
    for (int i = 0; i < 100; ++i) c[static_cast<size_t>(i / 10) * width + i % 10] = 0;
    return c;
}

// Appends the low n bytes of v, least significant first; reads n (2 or 4)
// bytes so; the bytes of a text.
void Append(Bytes* b, std::uint32_t v, int n) {
    for (int i = 0; i < n; ++i) b->push_back(static_cast<unsigned char>(v >> (8 * i)));
}

std::uint32_t Le(const Bytes& b, size_t at, int n) { return n == 2 ? b[at] | b[at + 1] << 8 : Get32(b, at); }

Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }
using Texts = std::vector<std::string>;

// A clipboard file of entries (format, data) laid out one after another.
Bytes ClipFile(const std::vector<std::pair<int, Bytes>>& entries) {
    Bytes b;
    Append(&b, 50000, 2), Append(&b, static_cast<std::uint32_t>(entries.size()), 2);
    std::uint32_t offset = static_cast<std::uint32_t>(4 + 89 * entries.size());
    for (const auto& e : entries) {
        Append(&b, e.first, 2), Append(&b, static_cast<std::uint32_t>(e.second.size()), 4), Append(&b, offset, 4);
        b.insert(b.end(), 79, 0);
        offset += static_cast<std::uint32_t>(e.second.size());
    }
    for (const auto& e : entries) b.insert(b.end(), e.second.begin(), e.second.end());
    return b;
}

// What DrawTextA draws of the text into a 1-bit bitmap in a memory
// context, at the size it measures; also that size.
Colors DrawnText(const std::string& text, SIZE* size) {
    HDC dc = CreateCompatibleDC(nullptr);
    RECT r = {0, 0, 0, 0};
    DrawTextA(dc, text.c_str(), -1, &r, DT_CALCRECT | DT_EXTERNALLEADING);
    HBITMAP bitmap = CreateBitmap(r.right, r.bottom, 1, 1, nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    PatBlt(dc, 0, 0, r.right, r.bottom, WHITENESS);
    DrawTextA(dc, text.c_str(), -1, &r, DT_NOCLIP | DT_EXTERNALLEADING);
    SelectObject(dc, old);
    DeleteDC(dc);
    const Colors c = ColorsOf(bitmap, size);
    DeleteObject(bitmap);
    return c;
}

TEST(MetaFileFiles, SavedAsHeaderAndOneStretchAndReadBack) {
    const unsigned rx = ScreenCaps(LOGPIXELSX), ry = ScreenCaps(LOGPIXELSY), inch = std::min(1440u, (rx + ry) / 2);
    for (int bits : {1, 8, 24}) {
        SCOPED_TRACE(::testing::Message() << bits << " bits");
        const Bytes dib = PackedDib({13, 6, bits});  // biClrUsed and biSizeImage 0 ("computed")
        HDIB block = BlockFrom(dib);
        ScratchFile file("wmf");
        ASSERT_EQ(SaveDIBIntoMetaFile(file.path(), block), 1);
        const Bytes out = file.Read();
        ASSERT_GT(out.size(), 22u + 18u);
        // The placeable header's key, extents and units (its layout is pinned
        // with the other metafile layouts).
        EXPECT_EQ(std::vector<unsigned>({Le(out, 0, 4), Le(out, 10, 2), Le(out, 12, 2), Le(out, 14, 2)}),
                  std::vector<unsigned>({0x9AC6CDD7u, 13 * inch / rx, 6 * inch / ry, inch}));
        // SetMapMode, [CreatePalette, SelectPalette, RealizePalette],
        // CreateBrushIndirect, SelectObject (the blank bitmap's selection is
        // not recorded here), PatBlt, StretchDIBits of the whole image with
        // its table and pixels complete, end.
        std::vector<unsigned> functions, expected = {0x0103, 0x02FC, 0x012D, 0x061D, 0x0F43, 0};
        if (bits != 24) expected.insert(expected.begin() + 1, {0x00F7, 0x0234, 0x0035});
        size_t stretch = 0;
        for (size_t at = 22 + 18; at + 6 <= out.size(); at += 2 * Le(out, at, 4)) {
            functions.push_back(Le(out, at + 4, 2));
            if (functions.back() == 0x0F43) stretch = at;
            if (functions.back() == 0 || Le(out, at, 4) < 3) break;
        }
        ASSERT_EQ(functions, expected);
        const size_t info = stretch + 6 + 22;  // behind the raster operation, usage and eight sizes
        EXPECT_EQ(Le(out, info + 32, 4), bits == 24 ? 0u : 1u << bits);  // biClrUsed written out
        EXPECT_TRUE(std::equal(dib.begin() + 40, dib.end(), out.begin() + info + 40));
        HBITMAP bitmap = LoadMetaFileIntoBitmap(file.path());
        EXPECT_EQ(ColorsOf(bitmap), ColorsOf(dib));
        DeleteObject(bitmap);
        GlobalFree(block);
    }
}

TEST(MetaFileFiles, DispatchRowsRoundTripAndLeaveTheStatus) {
    const Bytes dib = PackedDib({9, 4, 24});
    HDIB block = BlockFrom(dib);
    for (int format : {7, 8}) {
        ScratchFile file(format == 7 ? "wmf" : "clp");
        ASSERT_EQ(SaveDIBInImageFormat(file.path(), block, format, 0, 0), 1);
        EXPECT_EQ(GetImageFormat(file.path()), format);
        int status = -5;
        const Bytes back = Take(LoadImageIntoDIB(file.path(), 3, &status));
        ASSERT_FALSE(back.empty()) << format;
        EXPECT_EQ(ColorsOf(back), ColorsOf(dib)) << format;
        EXPECT_EQ(status, -5);
    }
    GlobalFree(block);
    const struct { const char* name; Bytes bytes; int code; } refused[] = {
        {"load.wmf", {0xD7, 0xCD, 0xC6, 0x9A}, 4}, {"load.clp", {0x50, 0xC3, 2, 0}, 14}};
    for (const auto& r : refused) {
        ScratchFile file(r.name);
        file.Write(r.bytes);
        int status = -5;
        EXPECT_EQ(std::vector<int>({FailureCode(LoadImageIntoDIB(file.path(), 1, &status)), status}),
                  std::vector<int>({r.code, -5})) << r.name;
    }
}

TEST(MetaFileFiles, BareAndDamagedFiles) {
    const Bytes square = SquareMetaFile();
    Bytes placeable;
    for (auto [v, n] : {std::pair{0x9AC6CDD7u, 4}, {0, 6}, {1440, 2}, {720, 2}, {1440, 2}, {0, 4}, {0xBAD, 2}})
        Append(&placeable, v, n);  // a wrong checksum is not read
    placeable.insert(placeable.end(), square.begin(), square.end());
    Bytes wrongKey = placeable, pastEnd = square, size2g = square;
    wrongKey[0] ^= 1;
    pastEnd[6] += 40;
    size2g[9] = 0x80;
    const int bareX = 5 * ScreenCaps(LOGPIXELSX), bareY = 5 * ScreenCaps(LOGPIXELSY);
    const struct { const char* name; Bytes bytes; int code, width, height; } cases[] = {
        {"no placeable header: 5 by 5 inches", square, 0, bareX, bareY},
        {"placeable, bad checksum", placeable, 0, 96, 48},
        {"wrong key: read as bare, its size word 0", wrongKey, 4, 0, 0},
        {"record past the file", pastEnd, 16, 0, 0},
        {"size 2^31", size2g, 1, 0, 0},
    };
    ScratchFile file("wmf");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(c.bytes);
        SetImgError(0);
        HBITMAP bitmap = LoadMetaFileIntoBitmap(file.path());
        EXPECT_EQ(ImgError(), c.code);
        EXPECT_EQ(bitmap ? ColorsOf(bitmap) : Colors(), c.width ? SquareColors(c.width, c.height) : Colors());
        DeleteObject(bitmap);
    }
    SetImgError(0);
    EXPECT_EQ(FailureCode(LoadMetaFileIntoBitmap("no-such.wmf")), 0);
    EXPECT_EQ(FailureCode(DrawMetaFileIntoBitmap(nullptr, 0, 5)), 1);
    // 9000 by 8000 at 32 bits is more than the library asks for: half of it
    // is made, and the picture still drawn at the asked size (the square
    // twice as large).
    HMETAFILE mf = SetMetaFileBitsEx(static_cast<UINT>(square.size()), square.data());
    HBITMAP bitmap = DrawMetaFileIntoBitmap(mf, 9000, 8000);
    SIZE size;
    const Colors drawn = ColorsOf(bitmap, &size);
    ASSERT_EQ(std::vector<LONG>({size.cx, size.cy}), std::vector<LONG>({4500, 4000}));
    EXPECT_EQ(Colors({drawn[19 * 4500 + 19], drawn[19 * 4500 + 20]}), Colors({0, 0xFFFFFF}));
    DeleteObject(bitmap), DeleteMetaFile(mf);
}

// Written byte for byte and read back; then each rendering of a file
// made here, and each failure.
TEST(ClipboardFiles, WrittenReadBackEachRenderingAndEachFailure) {
    const Bytes dib = PackedDib({7, 5, 24});
    HDIB source = BlockFrom(dib);
    HBITMAP bitmap = ConvertDIBToBitmap(source);
    ScratchFile file("clp");
    ASSERT_EQ(SaveClipboardFormat(file.path(), bitmap), 1);
    // The converted image without its 10 bytes of slack, behind 93 bytes.
    const Bytes converted = Take(ConvertBitmapToDIB(bitmap, nullptr));
    EXPECT_EQ(file.Read(), ClipFile({{8, Bytes(converted.begin(), converted.end() - 10)}}));
    HBITMAP back = static_cast<HBITMAP>(LoadClipboardFormat(file.path(), 8));
    EXPECT_EQ(ColorsOf(back), ColorsOf(dib));
    DeleteObject(back), DeleteObject(bitmap), GlobalFree(source);

    Bytes picture;
    Append(&picture, 6, 4), Append(&picture, 10, 4), Append(&picture, 5, 4), Append(&picture, 0, 4);  // twips times 20
    const Bytes square = SquareMetaFile();
    picture.insert(picture.end(), square.begin(), square.end());
    file.Write(ClipFile({{2, {1, 2, 3, 4, 5}}, {1, Text("Hi\r\nthere")}, {3, picture}, {5, {0}}}));
    EXPECT_EQ(Take(LoadClipboardFormat(file.path(), 2)), (Bytes{1, 2, 3, 4, 5}));
    HBITMAP drawn = static_cast<HBITMAP>(LoadClipboardFormat(file.path(), 3));
    EXPECT_EQ(ColorsOf(drawn), SquareColors(200, 100));
    HBITMAP text = static_cast<HBITMAP>(LoadClipboardFormat(file.path(), 1));
    HGLOBAL block = BlockFrom(Text("Hi\r\nthere"));
    HBITMAP direct = LoadASCIIIntoBitmap(block);
    SIZE a, b;
    EXPECT_EQ(ColorsOf(text, &a), ColorsOf(direct, &b));
    EXPECT_EQ(a.cx, b.cx);
    DeleteObject(drawn), DeleteObject(text), DeleteObject(direct), GlobalFree(block);

    Bytes lyingOffset = ClipFile({{8, {1, 2}}}), lyingLength = lyingOffset;
    lyingOffset[10] = 0xFF;
    lyingLength[8] = 0x7F;
    const struct { const char* name; Bytes bytes; int format, code; } cases[] = {
        {"count 0", Bytes{0x50, 0xC3, 0, 0}, 8, 14},
        {"format 5", ClipFile({{5, {1}}}), 5, 14},
        {"offset past the file", lyingOffset, 8, 4},
        {"length past the file", lyingLength, 8, 4},
        {"picture shorter than its record", ClipFile({{3, {1, 2}}}), 3, 4},
        {"no file", {}, 8, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(c.bytes);
        SetImgError(0);
        EXPECT_EQ(FailureCode(LoadClipboardFormat(c.code == 3 ? "no-such.clp" : file.path(), WORD(c.format))), c.code);
    }
}

// A text file becomes a 1-bit bitmap of what the system draws of it, OEM
// bytes converted on request; odd files still give a bitmap; text taller
// than 32767 pixels is cut there with one message.
TEST(TextImages, DrawnAsTheSystemDrawsTheTextUpToTheHeightLimit) {
    ScratchFile file("txt");
    std::string tall;
    for (int i = 0; i < 2100; ++i) tall += "x\r\n";
    Bytes binary;
    for (int i = 0; i < 256; ++i) binary.push_back(static_cast<unsigned char>(i));
    // drawn: the text as the system draws it; empty for odd files, whose
    // pixels are not compared.  shown: the messages.
    const struct { const char* name; Bytes bytes; BOOL notOem; std::string drawn; Texts shown; } cases[] = {
        {"two lines, the longer first", Text("longer line here\r\nHi"), 1, "longer line here\r\nHi", {}},
        {"OEM u-umlaut", Text("\x81" "ber\r\n"), 0, "\xFC" "ber\r\n", {}},
        {"ANSI bytes as they are", Text("\xFC" "ber\r\n"), 1, "\xFC" "ber\r\n", {}},
        {"empty", {}, 1, "", {}},
        {"binary", binary, 1, "", {}},
        {"taller than 32767", Text(tall), 1, "", {"Lines truncated|SORRY|48"}},
        {"one line of 1 MB", Bytes(1 << 20, 'w'), 1, "", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(c.bytes);
        MessageRecorder recorder;
        SetImgError(7);
        HBITMAP bitmap = LoadASCIIFile(file.path(), c.notOem);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(ImgError(), 0);
        EXPECT_EQ(Shown(recorder), c.shown);
        EXPECT_EQ(RecordOf(bitmap).bmBitsPixel, 1);
        if (!c.shown.empty()) { EXPECT_NEAR(RecordOf(bitmap).bmHeight, 32760, 8); }
        if (!c.drawn.empty()) {
            SIZE got, want;
            EXPECT_EQ(ColorsOf(bitmap, &got), DrawnText(c.drawn, &want));
            EXPECT_EQ(std::vector<LONG>({got.cx, got.cy}), std::vector<LONG>({want.cx, want.cy}));
        }
        DeleteObject(bitmap);
    }
    EXPECT_EQ(FailureCode(LoadASCIIFile("no-such.txt", 1)), 3);
    EXPECT_EQ(FailureCode(LoadASCIIIntoBitmap(nullptr)), 1);
}

// Puts a metafile picture of the square on the clipboard.
void PutPicture(HWND owner, LONG mm, LONG x, LONG y) {
    const Bytes square = SquareMetaFile();
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
    *static_cast<METAFILEPICT*>(GlobalLock(block)) =
        METAFILEPICT{mm, x, y, SetMetaFileBitsEx(static_cast<UINT>(square.size()), square.data())};
    GlobalUnlock(block);
    ASSERT_TRUE(OpenClipboard(owner));
    EmptyClipboard();
    SetClipboardData(CF_METAFILEPICT, block);
    CloseClipboard();
}

TEST(ClipboardPictures, DrawnAtTheirSizeOrRefused) {
    TestWindow window;
    PutPicture(window.get(), MM_TEXT, 40, 30);
    HBITMAP bitmap = PlaceMetaFileIntoBMPFromCLP(window.get());
    EXPECT_EQ(ColorsOf(bitmap), SquareColors(40, 30));
    DeleteObject(bitmap);
    const Bytes dib = Take(PlaceMetaFileIntoDIBFromCLP(window.get()));
    ASSERT_FALSE(dib.empty());
    EXPECT_EQ(ColorsOf(dib), SquareColors(40, 30));
    EXPECT_EQ(PlaceMetaFileIntoBMPFromCLP(nullptr), nullptr);
    // Held open by another thread (a window of this thread would simply
    // take it over): code 29 and a message.
    HANDLE opened = CreateEventA(nullptr, TRUE, FALSE, nullptr), release = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    bool held = false;
    std::thread holder([&] {
        held = OpenClipboard(nullptr);
        SetEvent(opened);
        WaitForSingleObject(release, 10000);
        if (held) CloseClipboard();
    });
    WaitForSingleObject(opened, 10000);
    EXPECT_TRUE(held);
    {
        MessageRecorder recorder;
        EXPECT_EQ(FailureCode(PlaceMetaFileIntoBMPFromCLP(window.get())), 29);
        EXPECT_EQ(Shown(recorder), Texts({"Could not open clipboard|ERROR|48"}));
    }
    SetEvent(release);
    holder.join();
    CloseHandle(opened), CloseHandle(release);
    // Empty: code 1, and the clipboard is left open.
    ASSERT_TRUE(OpenClipboard(window.get()));
    EmptyClipboard();
    CloseClipboard();
    EXPECT_EQ(FailureCode(PlaceMetaFileIntoDIBFromCLP(window.get())), 1);
    EXPECT_EQ(GetOpenClipboardWindow(), window.get());
    CloseClipboard();
}

}  // namespace
