// The byte-level halves of metafiles, clipboard files and text images:
// placeable headers, metafile bodies, picture sizes, the clipboard file
// directory and the library's own measure of text lines.
#include "core/dib.h"
#include "core/errors.h"
#include "formats/clipboard_file_layout.h"
#include "formats/metafile_layout.h"
#include "formats/text_layout.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

using namespace testing_support;
using prism::LastImgError;

namespace {

void Put(Bytes* b, std::uint32_t v, int n) {
    for (int i = 0; i < n; ++i) b->push_back(static_cast<unsigned char>(v >> (8 * i)));
}

// A placeable header with the given extents and units (checksum 0), then
// a METAHEADER claiming `words` 16-bit words, then `tail` bytes.
Bytes MetaFile(bool placeable, int right, int bottom, int units, std::uint32_t words, size_t tail) {
    Bytes b;
    if (placeable) {
        Put(&b, 0x9AC6CDD7u, 4), Put(&b, 0, 2), Put(&b, 0xFFFF & -10, 2), Put(&b, 20, 2);
        Put(&b, right, 2), Put(&b, bottom, 2), Put(&b, units, 2), Put(&b, 0, 4), Put(&b, 0, 2);
    }
    Put(&b, 1, 2), Put(&b, 9, 2), Put(&b, 0x300, 2), Put(&b, words, 4), Put(&b, 0, 2), Put(&b, 3, 4), Put(&b, 0, 2);
    b.insert(b.end(), tail, 0x33);
    return b;
}

TEST(PlaceableHeader, WrittenByteForByte) {
    unsigned char h[22];
    prism::MakePlaceableHeader(h, 100, 50, 96, 96);
    const Bytes expected = {0xD7, 0xCD, 0xC6, 0x9A, 0, 0, 0, 0, 0, 0, 100, 0, 50, 0, 96, 0, 0, 0, 0, 0,
                            static_cast<unsigned char>(0xD7 ^ 0xC6 ^ 100 ^ 50 ^ 96), static_cast<unsigned char>(0xCD ^ 0x9A)};
    EXPECT_EQ(Bytes(h, h + 22), expected);
    // Units per inch stop at 1440, and the extents are measured in them.
    const struct { int w, h, rx, ry, inch, right, bottom; } cases[] = {
        {100, 100, 2000, 2000, 1440, 72, 72}, {300, 150, 96, 120, 108, 337, 135}, {7, 7, 0, 0, 0, 0, 0}};
    for (const auto& c : cases) {
        prism::MakePlaceableHeader(h, c.w, c.h, c.rx, c.ry);
        EXPECT_EQ(h[14] | h[15] << 8, c.inch);
        EXPECT_EQ(h[10] | h[11] << 8, c.right);
        EXPECT_EQ(h[12] | h[13] << 8, c.bottom);
        EXPECT_EQ(h[20] | h[21] << 8, prism::PlaceableChecksum(h));
    }
}

TEST(MetaFileBody, ReadsSizesAndRefusesWhatCannotBeRead) {
    const struct {
        const char* name;
        Bytes file;
        bool ok;
        int error, width, height, units;
        long bytes;
    } cases[] = {
        {"placeable", MetaFile(true, 1430, 740, 1440, 12, 6), true, 27, 1440, 720, 1440, 24},
        {"bare", MetaFile(false, 0, 0, 0, 9, 0), true, 27, 5, 5, 1, 18},
        {"records past the end", MetaFile(false, 0, 0, 0, 4000, 10), true, 27, 5, 5, 1, 28},
        {"size 0", MetaFile(false, 0, 0, 0, 0, 0), false, 4, 5, 5, 1, 0},
        {"size 2^31", MetaFile(true, 1, 1, 1, 0x80000000u, 0), false, 1, 11, -19, 1, 0},
        {"three bytes", {0xD7, 0xCD, 0xC6}, false, 4, 5, 5, 1, 0},
        {"key only", {0xD7, 0xCD, 0xC6, 0x9A}, false, 4, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScratchFile file("wmf");
        file.Write(c.file);
        LastImgError = 27;
        int w = 5, h = 5, units = 1;
        prism::MetaFileBody body;
        EXPECT_EQ(prism::ReadMetaFileBody(file.path(), &w, &h, &units, &body), c.ok);
        EXPECT_EQ(LastImgError, c.error);
        EXPECT_EQ(w, c.width);
        EXPECT_EQ(h, c.height);
        EXPECT_EQ(units, c.units);
        EXPECT_EQ(body.bytes, c.bytes);
        EXPECT_EQ(body.bits != nullptr, c.ok);
        if (body.bits) {
            const Bytes read = BlockBytes(body.bits);
            const size_t at = c.file.size() - c.bytes;
            EXPECT_TRUE(std::equal(c.file.begin() + at, c.file.end(), read.begin()));
            GlobalFree(body.bits);
        }
    }
    prism::MetaFileBody body;
    int w = 5, h = 5, units = 1;
    LastImgError = 27;
    EXPECT_FALSE(prism::ReadMetaFileBody("no-such.wmf", &w, &h, &units, &body));
    EXPECT_EQ(LastImgError, 27);  // a missing file sets no code
}

// Bare bodies: a METAHEADER claiming `words`, then records of (size in
// words, function), each padded to its size.
Bytes Body(std::uint32_t words, std::initializer_list<std::pair<std::uint32_t, int>> records) {
    Bytes b = MetaFile(false, 0, 0, 0, words, 0);
    for (auto [size, function] : records) {
        Put(&b, size, 4), Put(&b, function, 2);
        for (std::uint32_t i = 3; i < size && i < 64; ++i) Put(&b, 0, 2);  // lying sizes stay short
    }
    return b;
}

TEST(MetaFileBody, RecordsMustLieInsideTheBody) {
    const struct { const char* name; Bytes body; bool fit; } cases[] = {
        {"two records and the end", Body(9 + 5 + 3, {{5, 0x41B}, {3, 0}}), true},
        {"no end record, exact", Body(9 + 5, {{5, 0x41B}}), true},
        {"record past the size", Body(9 + 5, {{7, 0x41B}}), false},
        {"record of 2 words", Body(9 + 3, {{2, 0x41B}, {3, 0}}), false},
        {"size past the bytes", Body(9 + 30, {{3, 0}}), false},
        {"record of 2^31 words", Body(9 + 3, {{0x80000000u, 0x41B}}), false},
        {"short header", Bytes(10, 0), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(prism::MetaRecordsFit(c.body.data(), c.body.size()), c.fit) << c.name;
}

TEST(PictureSizes, ClipboardFileAndClipboardRules) {
    const struct { int mm, x, y, w, h; } file[] = {
        {1, 30, 20, 30, 20},     {2, 254, 508, 96, 240},  {3, 2540, 2540, 96, 120}, {4, 100, 200, 96, 240},
        {5, 1000, 1000, 96, 120}, {6, 100, 50, 2000, 1000}, {7, 2540, 254, 96, 12},  {7, -2, -3, 192, 360},
        {8, 0, 9, 480, 600},      {8, 2540, 0, 96, 0},     {9, 1, 1, 480, 600},     {0, 1, 1, 480, 600},
    };
    for (const auto& c : file) {
        int w = -1, h = -1;
        prism::ClipboardFilePictureSize(c.mm, c.x, c.y, 96, 120, &w, &h);
        EXPECT_EQ(w, c.w) << "mode " << c.mm;
        EXPECT_EQ(h, c.h) << "mode " << c.mm;
    }
    // Millimetres at 24.5 to the inch, twips at 1440; an extent of 0 or a
    // mode without a rule keeps the defaults.
    const struct { int mm, x, y, w, h; } clip[] = {
        // 245 millimetres are 9.9999... inches in doubles, so 95 pixels.
        {1, 30, 20, 30, 20}, {2, 245, 490, 95, 191}, {3, 2450, 0, 95, 480}, {7, 4900, 2450, 191, 95},
        {4, 100, 50, 96, 48}, {5, 1000, 500, 96, 48}, {6, 1440, 2880, 96, 192}, {8, 0, 50, 640, 480},
        {9, 5, 5, 640, 480},
    };
    for (const auto& c : clip) {
        int w = 640, h = 480;
        prism::ClipboardPictureSize(c.mm, c.x, c.y, 96, &w, &h);
        EXPECT_EQ(w, c.w) << "mode " << c.mm;
        EXPECT_EQ(h, c.h) << "mode " << c.mm;
    }
    EXPECT_EQ(prism::TruncateToInt(1e300), 2147483647);
    EXPECT_EQ(prism::PixelsOfExtent(1440, 96, 0), 0);
}

// A clipboard file: identifier, count, then entries of (format, length,
// offset) with 79 name bytes each.
Bytes ClipFile(std::uint16_t id, std::uint16_t count, std::initializer_list<std::array<std::uint32_t, 3>> entries) {
    Bytes b;
    Put(&b, id, 2), Put(&b, count, 2);
    for (const auto& e : entries) Put(&b, e[0], 2), Put(&b, e[1], 4), Put(&b, e[2], 4), b.insert(b.end(), 79, 'n');
    return b;
}

TEST(ClipboardFileDirectory, FindsTheEntryOrNamesTheFailure) {
    const struct {
        const char* name;
        Bytes file;
        int format, code;
        std::uint32_t length, offset;
    } cases[] = {
        {"second entry", ClipFile(50000, 2, {{2, 7, 200}, {8, 44, 182}}), 8, 0, 44, 182},
        {"identifier 50001", ClipFile(50001, 1, {{8, 4, 93}}), 8, 9, 0, 0},
        {"count 0", ClipFile(50000, 0, {{8, 4, 93}}), 8, 14, 0, 0},
        {"only format 2", ClipFile(50000, 1, {{2, 4, 93}}), 8, 14, 0, 0},
        {"count beyond the file", ClipFile(50000, 60000, {{2, 4, 93}}), 8, 14, 0, 0},
        {"empty", {}, 8, 9, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScratchFile file("clp");
        file.Write(c.file);
        HFILE f = plat::FileOpen(file.path(), plat::kOpenRead);
        prism::ClipboardEntry entry;
        EXPECT_EQ(prism::FindClipboardEntry(f, static_cast<std::uint16_t>(c.format), &entry), c.code);
        if (c.code == 0) {
            EXPECT_EQ(entry.length, c.length);
            EXPECT_EQ(entry.offset, c.offset);
        }
        plat::FileClose(f);
    }
}

TEST(ClipboardFileDirectory, DataReadsOnlyWhatTheFileHolds) {
    ScratchFile file("clp");
    file.Write(Bytes{1, 2, 3, 4, 5, 6});
    HFILE f = plat::FileOpen(file.path(), plat::kOpenRead);
    HGLOBAL block = prism::ReadClipboardData(f, 2, 3);
    EXPECT_EQ(BlockBytes(block), (Bytes{3, 4, 5}));
    GlobalFree(block);
    for (auto [offset, length] : {std::pair<std::uint32_t, std::uint32_t>{2, 5}, {7, 0}, {0xFFFFFFF0u, 1}, {1, 0xFFFFFFFFu}}) {
        LastImgError = 0;
        EXPECT_EQ(prism::ReadClipboardData(f, offset, length), nullptr);
        EXPECT_EQ(LastImgError, 4);
    }
    plat::FileClose(f);

    unsigned char header[93];
    prism::MakeClipboardFileHeader(header, 0x01020304);
    Bytes expected = ClipFile(50000, 1, {{8, 0x01020304, 93}});
    std::fill(expected.begin() + 14, expected.end(), 0);  // the name bytes are zero
    EXPECT_EQ(Bytes(header, header + 93), expected);
}

TEST(TextLines, MeasureWalksLinesTabsAndLimits) {
    const std::string tall(3000, '\r'), wide(1 << 20, 'w');
    const struct {
        const char* name;
        std::string text;
        int x, y;
        size_t used;
        bool cut;
    } cases[] = {
        {"two lines", "ab\r\ncde", 32, 17, 7, false},
        {"code 8 is the tab", "\b\t", 73, 1, 2, false},
        {"empty", "", 1, 1, 0, false},
        {"stops below 32767 less a line", tall, 0, 32753, 2047, true},
        {"width stops growing", wide, 32761, 1, wide.size(), false},
        {"ends at a zero", std::string("a\0b", 3), 9, 1, 1, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto m = prism::MeasureTextLines(reinterpret_cast<const unsigned char*>(c.text.data()),
                                               c.text.size(), 16, 8);
        EXPECT_EQ(m.x, c.x);
        EXPECT_EQ(m.y, c.y);
        EXPECT_EQ(m.used, c.used);
        EXPECT_EQ(m.cut, c.cut);
    }
}

}  // namespace
