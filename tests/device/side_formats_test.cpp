// Metafiles, clipboard files, text drawn as images and the clipboard's
// metafile pictures, under wine (true-colour display, 96 dots per inch, a
// default memory-context font 16 pixels a line).
#include "support/device_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

using namespace testing_support;

namespace {

int Width(const Bytes& dib) { return dib[4] | dib[5] << 8; }

void Put(Bytes* b, std::uint32_t v, int n) {
    for (int i = 0; i < n; ++i) b->push_back(static_cast<unsigned char>(v >> (8 * i)));
}
std::uint32_t Le(const Bytes& b, size_t at, int n) {
    std::uint32_t v = 0;
    for (int i = n - 1; i >= 0; --i) v = v << 8 | b[at + i];
    return v;
}

int ScreenCaps(int index) {
    HDC screen = GetDC(nullptr);
    const int value = GetDeviceCaps(screen, index);
    ReleaseDC(nullptr, screen);
    return value;
}

// A metafile body that blackens the square (0, 0)-(10, 10).
Bytes SquareMetaFile() {
    HDC dc = CreateMetaFileA(nullptr);
    PatBlt(dc, 0, 0, 10, 10, BLACKNESS);
    HMETAFILE mf = CloseMetaFile(dc);
    Bytes bits(GetMetaFileBitsEx(mf, 0, nullptr));
    GetMetaFileBitsEx(mf, static_cast<UINT>(bits.size()), bits.data());
    DeleteMetaFile(mf);
    return bits;
}

// Black inside the 10-pixel square at the top left, white elsewhere.
void ExpectSquare(HBITMAP bitmap, int width, int height) {
    SIZE size;
    const Colors c = ColorsOf(bitmap, &size);
    ASSERT_EQ(size.cx, width);
    ASSERT_EQ(size.cy, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            ASSERT_EQ(c[static_cast<size_t>(y) * width + x], x < 10 && y < 10 ? 0u : 0xFFFFFFu) << x << "," << y;
}

TEST(MetaFileFiles, SavedAsHeaderAndOneStretchAndReadBack) {
    const int rx = ScreenCaps(LOGPIXELSX), ry = ScreenCaps(LOGPIXELSY);
    for (int bits : {1, 8, 24}) {
        SCOPED_TRACE(::testing::Message() << bits << " bits");
        const Bytes dib = PackedDib({13, 6, bits});  // biClrUsed and biSizeImage 0 ("computed")
        HDIB block = BlockFrom(dib);
        ScratchFile file("wmf");
        ASSERT_EQ(SaveDIBIntoMetaFile(file.path(), block), 1);
        const Bytes out = file.Read();
        ASSERT_GT(out.size(), 22u + 18u);
        const unsigned inch = std::min(1440, (rx + ry) / 2);
        Bytes head;
        Put(&head, 0x9AC6CDD7u, 4), Put(&head, 0, 6), Put(&head, 13 * inch / rx, 2), Put(&head, 6 * inch / ry, 2);
        Put(&head, inch, 2), Put(&head, 0, 4), Put(&head, 0, 2);
        for (int i = 0; i < 10; ++i) head[20] ^= head[2 * i], head[21] ^= head[2 * i + 1];  // the checksum
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 22), head);
        // The records, and the stretch of the whole image with its table and
        // pixels complete.
        std::vector<unsigned> functions;
        size_t stretch = 0;
        for (size_t at = 22 + 18; at + 6 <= out.size(); at += 2 * Le(out, at, 4)) {
            functions.push_back(Le(out, at + 4, 2));
            if (functions.back() == 0x0F43) stretch = at;
            if (functions.back() == 0 || Le(out, at, 4) < 3) break;
        }
        // SetMapMode, [CreatePalette, SelectPalette, RealizePalette],
        // CreateBrushIndirect, SelectObject (the blank bitmap's selection is
        // not recorded here), PatBlt, StretchDIBits, end.
        std::vector<unsigned> expected = {0x0103, 0x02FC, 0x012D, 0x061D, 0x0F43, 0};
        if (bits != 24) expected.insert(expected.begin() + 1, {0x00F7, 0x0234, 0x0035});
        ASSERT_EQ(functions, expected);
        const size_t info = stretch + 6 + 22;  // behind the raster operation, usage and eight sizes
        EXPECT_EQ(Le(out, info + 32, 4), bits == 24 ? 0u : 1u << bits);  // biClrUsed written out
        EXPECT_TRUE(std::equal(dib.begin() + 40, dib.end(), out.begin() + info + 40));

        HBITMAP bitmap = LoadMetaFileIntoBitmap(file.path());
        ASSERT_NE(bitmap, nullptr);
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
        HDIB back = LoadImageIntoDIB(file.path(), 3, &status);
        ASSERT_NE(back, nullptr) << format;
        EXPECT_EQ(ColorsOf(BlockBytes(back)), ColorsOf(dib)) << format;
        EXPECT_EQ(status, -5);
        GlobalFree(back);
    }
    GlobalFree(block);
    const struct { const char* name; Bytes bytes; int code; } refused[] = {
        {"load.wmf", {0xD7, 0xCD, 0xC6, 0x9A}, 4}, {"load.clp", {0x50, 0xC3, 2, 0}, 14}};
    for (const auto& r : refused) {
        ScratchFile file(r.name);
        file.Write(r.bytes);
        int status = -5;
        SetImgError(0);
        EXPECT_EQ(LoadImageIntoDIB(file.path(), 1, &status), nullptr);
        EXPECT_EQ(ImgError(), r.code);
        EXPECT_EQ(status, -5);
    }
}

TEST(MetaFileFiles, BareAndDamagedFiles) {
    const Bytes square = SquareMetaFile();
    ScratchFile file("wmf");
    file.Write(square);
    // No placeable header: 5 by 5 inches.
    HBITMAP bitmap = LoadMetaFileIntoBitmap(file.path());
    ExpectSquare(bitmap, 5 * ScreenCaps(LOGPIXELSX), 5 * ScreenCaps(LOGPIXELSY));
    DeleteObject(bitmap);

    Bytes placeable;
    Put(&placeable, 0x9AC6CDD7u, 4), Put(&placeable, 0, 6), Put(&placeable, 1440, 2), Put(&placeable, 720, 2);
    Put(&placeable, 1440, 2), Put(&placeable, 0, 4), Put(&placeable, 0xBAD, 2);  // a wrong checksum is not read
    placeable.insert(placeable.end(), square.begin(), square.end());
    Bytes wrongKey = placeable, pastEnd = square, size2g = square;
    wrongKey[0] ^= 1;
    pastEnd[6] += 40;
    size2g[9] = 0x80;
    const struct { const char* name; Bytes bytes; int code; int width; } cases[] = {
        {"placeable, bad checksum", placeable, 0, 96},
        {"wrong key: read as bare, its size word 0", wrongKey, 4, 0},
        {"record past the file", pastEnd, 16, 0},
        {"size 2^31", size2g, 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(c.bytes);
        SetImgError(0);
        bitmap = LoadMetaFileIntoBitmap(file.path());
        EXPECT_EQ(ImgError(), c.code);
        if (!c.width) {
            EXPECT_EQ(bitmap, nullptr);
            continue;
        }
        ExpectSquare(bitmap, c.width, c.width / 2);
        DeleteObject(bitmap);
    }
    SetImgError(0);
    EXPECT_EQ(LoadMetaFileIntoBitmap("no-such.wmf"), nullptr);
    EXPECT_EQ(ImgError(), 0);
    EXPECT_EQ(DrawMetaFileIntoBitmap(nullptr, 0, 5), nullptr);
    EXPECT_EQ(ImgError(), 1);

    // 9000 by 8000 at 32 bits is more than the library asks for: half of it
    // is made, and the picture still drawn at the asked size (the square
    // twice as large).
    HDC dc = CreateMetaFileA(nullptr);
    PatBlt(dc, 0, 0, 10, 10, BLACKNESS);
    HMETAFILE mf = CloseMetaFile(dc);
    bitmap = DrawMetaFileIntoBitmap(mf, 9000, 8000);
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
    EXPECT_EQ(bm.bmWidth, 4500);
    EXPECT_EQ(bm.bmHeight, 4000);
    HDC memory = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(memory, bitmap);
    EXPECT_EQ(GetPixel(memory, 19, 19) & 0xFFFFFF, 0u);
    EXPECT_EQ(GetPixel(memory, 20, 19) & 0xFFFFFF, 0xFFFFFFu);
    SelectObject(memory, old);
    DeleteDC(memory), DeleteObject(bitmap), DeleteMetaFile(mf);
}

// A clipboard file of entries (format, data) laid out one after another.
Bytes ClipFile(std::vector<std::pair<int, Bytes>> entries, std::uint16_t id = 50000) {
    Bytes b;
    Put(&b, id, 2), Put(&b, static_cast<std::uint32_t>(entries.size()), 2);
    std::uint32_t offset = static_cast<std::uint32_t>(4 + 89 * entries.size());
    for (const auto& e : entries) {
        Put(&b, e.first, 2), Put(&b, static_cast<std::uint32_t>(e.second.size()), 4), Put(&b, offset, 4);
        b.insert(b.end(), 79, 0);
        offset += static_cast<std::uint32_t>(e.second.size());
    }
    for (const auto& e : entries) b.insert(b.end(), e.second.begin(), e.second.end());
    return b;
}

Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }

TEST(ClipboardFiles, WrittenByteForByteAndReadBack) {
    const Bytes dib = PackedDib({7, 5, 24});
    HDIB source = BlockFrom(dib);
    HBITMAP bitmap = ConvertDIBToBitmap(source);
    ScratchFile file("clp");
    ASSERT_EQ(SaveClipboardFormat(file.path(), bitmap), 1);
    HDIB convertedBlock = ConvertBitmapToDIB(bitmap, nullptr);
    const Bytes converted = BlockBytes(convertedBlock);
    GlobalFree(convertedBlock);
    // The converted image without its 10 bytes of slack, behind 93 bytes.
    const Bytes packed(converted.begin(), converted.end() - 10);
    EXPECT_EQ(file.Read(), ClipFile({{8, packed}}));
    HBITMAP back = static_cast<HBITMAP>(LoadClipboardFormat(file.path(), 8));
    EXPECT_EQ(ColorsOf(back), ColorsOf(dib));
    DeleteObject(back);
    DeleteObject(bitmap);
    GlobalFree(source);
}

TEST(ClipboardFiles, EachRenderingAndEachFailure) {
    Bytes picture;
    Put(&picture, 6, 4), Put(&picture, 10, 4), Put(&picture, 5, 4), Put(&picture, 0, 4);  // twips times 20
    const Bytes square = SquareMetaFile();
    picture.insert(picture.end(), square.begin(), square.end());
    ScratchFile file("clp");
    file.Write(ClipFile({{2, {1, 2, 3, 4, 5}}, {1, Text("Hi\r\nthere")}, {3, picture}, {5, {0}}}));
    HGLOBAL raw = LoadClipboardFormat(file.path(), 2);
    EXPECT_EQ(BlockBytes(raw), (Bytes{1, 2, 3, 4, 5}));
    GlobalFree(raw);
    HBITMAP drawn = static_cast<HBITMAP>(LoadClipboardFormat(file.path(), 3));
    ExpectSquare(drawn, 200, 100);
    DeleteObject(drawn);
    HBITMAP text = static_cast<HBITMAP>(LoadClipboardFormat(file.path(), 1));
    HGLOBAL block = BlockFrom(Text("Hi\r\nthere"));
    HBITMAP direct = LoadASCIIIntoBitmap(block);
    SIZE a, b;
    EXPECT_EQ(ColorsOf(text, &a), ColorsOf(direct, &b));
    EXPECT_EQ(a.cx, b.cx);
    DeleteObject(text), DeleteObject(direct), GlobalFree(block);

    Bytes lyingOffset = ClipFile({{8, {1, 2}}}), lyingLength = lyingOffset;
    lyingOffset[10] = 0xFF;
    lyingLength[8] = 0x7F;
    const struct { const char* name; Bytes bytes; int format, code; } cases[] = {
        {"count 0", Bytes{0x50, 0xC3, 0, 0}, 8, 14},
        {"format 5", ClipFile({{5, {1}}}), 5, 14},
        {"offset past the file", lyingOffset, 8, 4},
        {"length past the file", lyingLength, 8, 4},
        {"picture shorter than its record", ClipFile({{3, {1, 2}}}), 3, 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(c.bytes);
        SetImgError(0);
        EXPECT_EQ(LoadClipboardFormat(file.path(), static_cast<WORD>(c.format)), nullptr);
        EXPECT_EQ(ImgError(), c.code);
    }
    EXPECT_EQ(LoadClipboardFormat("no-such.clp", 8), nullptr);
    EXPECT_EQ(ImgError(), 3);
}

// What DrawTextA draws of the text into a 1-bit bitmap in a memory
// context, at the size it measures.
Colors DrawnDirectly(const std::string& text, SIZE* size) {
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

TEST(TextImages, DrawnAsTheSystemDrawsTheText) {
    ScratchFile file("txt");
    const struct { const char* name; std::string text; BOOL notOem; std::string drawn; } cases[] = {
        {"two lines, the longer first", "longer line here\r\nHi", 1, "longer line here\r\nHi"},
        {"OEM u-umlaut", "\x81" "ber\r\n", 0, "\xFC" "ber\r\n"},
        {"ANSI bytes as they are", "\xFC" "ber\r\n", 1, "\xFC" "ber\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(Text(c.text));
        SetImgError(7);
        HBITMAP bitmap = LoadASCIIFile(file.path(), c.notOem);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(ImgError(), 0);
        BITMAP bm = {};
        GetObjectA(bitmap, sizeof(bm), &bm);
        EXPECT_EQ(bm.bmBitsPixel, 1);
        SIZE got, want;
        EXPECT_EQ(ColorsOf(bitmap, &got), DrawnDirectly(c.drawn, &want));
        EXPECT_EQ(got.cx, want.cx);
        EXPECT_EQ(got.cy, want.cy);
        DeleteObject(bitmap);
    }
}

TEST(TextImages, OddFilesAndTheHeightLimit) {
    ScratchFile file("txt");
    std::string tall;
    for (int i = 0; i < 2100; ++i) tall += "x\r\n";
    Bytes binary;
    for (int i = 0; i < 256; ++i) binary.push_back(static_cast<unsigned char>(i));
    const struct { const char* name; Bytes bytes; int messages; } cases[] = {
        {"empty", {}, 0}, {"binary", binary, 0}, {"taller than 32767", Text(tall), 1},
        {"one line of 1 MB", Bytes(1 << 20, 'w'), 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        file.Write(c.bytes);
        MessageRecorder recorder;
        HBITMAP bitmap = LoadASCIIFile(file.path(), 1);
        EXPECT_NE(bitmap, nullptr);
        EXPECT_EQ(ImgError(), 0);
        ASSERT_EQ(recorder.messages().size(), static_cast<size_t>(c.messages));
        if (c.messages) {
            EXPECT_EQ(recorder.messages()[0].text, "Lines truncated");
            EXPECT_EQ(recorder.messages()[0].caption, "SORRY");
            EXPECT_EQ(recorder.messages()[0].style, 48u);
            BITMAP bm = {};
            GetObjectA(bitmap, sizeof(bm), &bm);
            EXPECT_LE(bm.bmHeight, 32768);
            EXPECT_GE(bm.bmHeight, 32752);
        }
        DeleteObject(bitmap);
    }
    EXPECT_EQ(LoadASCIIFile("no-such.txt", 1), nullptr);
    EXPECT_EQ(ImgError(), 3);
    EXPECT_EQ(LoadASCIIIntoBitmap(nullptr), nullptr);
    EXPECT_EQ(ImgError(), 1);
}

// A window of this thread, destroyed at the end of the scope.
struct TestWindow {
    HWND hwnd = CreateWindowA("STATIC", "clip", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    ~TestWindow() { DestroyWindow(hwnd); }
};

// Keeps the clipboard open from a second thread (a window of the same
// thread would simply take it over) until released.
struct ClipboardHolder {
    HANDLE opened = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE release = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    HANDLE thread = CreateThread(nullptr, 0, &Hold, this, 0, nullptr);
    bool open = WaitForSingleObject(opened, 10000) == WAIT_OBJECT_0;
    static DWORD WINAPI Hold(void* self) {
        auto* h = static_cast<ClipboardHolder*>(self);
        if (!OpenClipboard(nullptr)) return 1;
        SetEvent(h->opened);
        WaitForSingleObject(h->release, 10000);
        CloseClipboard();
        return 0;
    }
    void Release() {
        SetEvent(release);
        WaitForSingleObject(thread, 10000);
    }
    ~ClipboardHolder() {
        Release();
        CloseHandle(thread), CloseHandle(opened), CloseHandle(release);
    }
};

// Puts a metafile picture of the square on the clipboard.
void PutPicture(HWND owner, LONG mm, LONG x, LONG y) {
    const Bytes square = SquareMetaFile();
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
    auto* pict = static_cast<METAFILEPICT*>(GlobalLock(block));
    *pict = METAFILEPICT{mm, x, y, SetMetaFileBitsEx(static_cast<UINT>(square.size()), square.data())};
    GlobalUnlock(block);
    ASSERT_TRUE(OpenClipboard(owner));
    EmptyClipboard();
    SetClipboardData(CF_METAFILEPICT, block);
    CloseClipboard();
}

TEST(ClipboardPictures, DrawnAtTheirSizeOrRefused) {
    TestWindow window;
    ASSERT_NE(window.hwnd, nullptr);
    PutPicture(window.hwnd, MM_TEXT, 40, 30);
    HBITMAP bitmap = PlaceMetaFileIntoBMPFromCLP(window.hwnd);
    ExpectSquare(bitmap, 40, 30);
    DeleteObject(bitmap);
    HDIB dib = PlaceMetaFileIntoDIBFromCLP(window.hwnd);
    ASSERT_NE(dib, nullptr);
    const Bytes bytes = BlockBytes(dib);
    EXPECT_EQ(Width(bytes), 40);
    EXPECT_EQ(ColorsOf(bytes)[0], 0u);
    EXPECT_EQ(ColorsOf(bytes)[11], 0xFFFFFFu);
    GlobalFree(dib);
    EXPECT_EQ(PlaceMetaFileIntoBMPFromCLP(nullptr), nullptr);

    // Held open by another thread: code 29 and a message.
    ClipboardHolder holder;
    ASSERT_TRUE(holder.open);
    {
        MessageRecorder recorder;
        EXPECT_EQ(PlaceMetaFileIntoBMPFromCLP(window.hwnd), nullptr);
        EXPECT_EQ(ImgError(), 29);
        ASSERT_EQ(recorder.messages().size(), 1u);
        EXPECT_EQ(recorder.messages()[0].text, "Could not open clipboard");
        EXPECT_EQ(recorder.messages()[0].caption, "ERROR");
    }
    holder.Release();
    // Empty: code 1, and the clipboard is left open.
    ASSERT_TRUE(OpenClipboard(window.hwnd));
    EmptyClipboard();
    CloseClipboard();
    EXPECT_EQ(PlaceMetaFileIntoDIBFromCLP(window.hwnd), nullptr);
    EXPECT_EQ(ImgError(), 1);
    EXPECT_EQ(GetOpenClipboardWindow(), window.hwnd);
    CloseClipboard();
}

}  // namespace
