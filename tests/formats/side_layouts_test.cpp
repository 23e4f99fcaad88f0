// The byte-level halves of metafiles, clipboard files and text images:
// placeable headers, metafile bodies, picture sizes, the clipboard file
// directory and the library's own measure of text lines.
#include "core/errors.h"
#include "formats/clipboard_file_layout.h"
#include "formats/metafile_layout.h"
#include "formats/text_layout.h"
#include "support/test_support.h"


#include <algorithm>
#include <array>
#include <tuple>

using namespace testing_support;
using prism::LastImgError;

namespace {

void Put(Bytes* b, std::uint32_t v, int n) { for (int i = 0; i < n; ++i) b->push_back(static_cast<unsigned char>(v >> (8 * i))); }

// A placeable header with the given extents and units (checksum 0), then
// a METAHEADER claiming `words` 16-bit words, then `tail` bytes.
Bytes MetaFile(bool placeable, int right, int bottom, int units, std::uint32_t words, size_t tail) {
    Bytes b;
    if (placeable)
        Put(&b, 0x9AC6CDD7u, 4), Put(&b, 0, 2), Put(&b, 0xFFFF & -10, 2), Put(&b, 20, 2), Put(&b, right, 2), Put(&b, bottom, 2),
            Put(&b, units, 2), Put(&b, 0, 4), Put(&b, 0, 2);
    Put(&b, 1, 2), Put(&b, 9, 2), Put(&b, 0x300, 2), Put(&b, words, 4), Put(&b, 0, 2), Put(&b, 3, 4), Put(&b, 0, 2);
    b.insert(b.end(), tail, 0x33);
    return b;
}

// Units per inch stop at 1440, and the extents are measured in them.
TEST(PlaceableHeader, WrittenByteForByte) {
    constexpr unsigned char x = 0xD7 ^ 0xC6, y = 0xCD ^ 0x9A;
    const struct { int w, h, rx, ry; Bytes fields; } cases[] = {
        {100, 50, 96, 96, {0, 0, 0, 0, 100, 0, 50, 0, 96, 0, 0, 0, 0, 0, x ^ 100 ^ 50 ^ 96, y}},
        {100, 100, 2000, 2000, {0, 0, 0, 0, 72, 0, 72, 0, 0xA0, 5, 0, 0, 0, 0, x ^ 0xA0, y ^ 5}},
        {300, 150, 96, 120, {0, 0, 0, 0, 0x51, 1, 135, 0, 108, 0, 0, 0, 0, 0, x ^ 0x51 ^ 135 ^ 108, y ^ 1}},
        {7, 7, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, x, y}},
    };
    for (const auto& c : cases) {
        unsigned char h[22];
        prism::MakePlaceableHeader(h, c.w, c.h, c.rx, c.ry);
        EXPECT_EQ(Bytes(h, h + 22), Bytes({0xD7, 0xCD, 0xC6, 0x9A, 0, 0}) + c.fields) << c.w << " at " << c.rx;
        EXPECT_EQ(h[20] | h[21] << 8, prism::PlaceableChecksum(h));
    }
}

TEST(MetaFileBody, ReadsSizesAndRefusesWhatCannotBeRead) {
    const struct { const char* name; Bytes file; bool ok; int error, width, height, units; long bytes; } cases[] = {
        {"placeable", MetaFile(true, 1430, 740, 1440, 12, 6), true, 27, 1440, 720, 1440, 24},
        {"bare", MetaFile(false, 0, 0, 0, 9, 0), true, 27, 5, 5, 1, 18},
        {"records past the end", MetaFile(false, 0, 0, 0, 4000, 10), true, 27, 5, 5, 1, 28},
        {"size 0", MetaFile(false, 0, 0, 0, 0, 0), false, 4, 5, 5, 1, 0},
        {"size 2^31", MetaFile(true, 1, 1, 1, 0x80000000u, 0), false, 1, 11, -19, 1, 0},
        {"key only", {0xD7, 0xCD, 0xC6, 0x9A}, false, 4, 0, 0, 0, 0},
        {"missing file: no code", {}, false, 27, 5, 5, 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScratchFile file("wmf");
        if (!c.file.empty()) file.Write(c.file);
        LastImgError = 27;
        int w = 5, h = 5, units = 1;
        prism::MetaFileBody body;
        const bool ok = prism::ReadMetaFileBody(c.file.empty() ? "no-such.wmf" : file.path(), &w, &h, &units, &body);
        EXPECT_EQ(std::tuple(ok, LastImgError, w, h, units, body.bytes), std::tuple(c.ok, c.error, c.width, c.height, c.units, c.bytes));
        const Bytes read = Take(body.bits);  // the block may be larger
        EXPECT_EQ(Bytes(read.begin(), read.begin() + std::min<size_t>(read.size(), c.bytes)), Bytes(c.file.end() - c.bytes, c.file.end()));
    }
}

// Bare bodies: a METAHEADER claiming `words`, then records of (size in
// words, function), each padded to its size.
Bytes Body(std::uint32_t words, std::initializer_list<std::pair<std::uint32_t, int>> records) {
    Bytes b = MetaFile(false, 0, 0, 0, words, 0);
    for (auto [size, function] : records)  // lying sizes stay short
        Put(&b, size, 4), Put(&b, function, 2), b.insert(b.end(), 2 * (std::clamp<std::uint32_t>(size, 3, 64) - 3), 0);
    return b;
}

TEST(MetaFileBody, RecordsMustLieInsideTheBody) {
    const struct { const char* name; Bytes body; bool fit; } cases[] = {
        {"two records and the end", Body(9 + 5 + 3, {{5, 0x41B}, {3, 0}}), true}, {"short header", Bytes(10, 0), false},
        {"no end record, exact", Body(9 + 5, {{5, 0x41B}}), true}, {"record past the size", Body(9 + 5, {{7, 0x41B}}), false},
        {"record of 2 words", Body(9 + 3, {{2, 0x41B}, {3, 0}}), false}, {"size past the bytes", Body(9 + 30, {{3, 0}}), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(prism::MetaRecordsFit(c.body.data(), c.body.size()), c.fit) << c.name;
}

// Clipboard files measure against 96 x 120 pixels an inch with no extent
// rule of their own; the clipboard at 96, millimetres at 24.5 to the inch,
// twips at 1440.  An extent of 0 or a mode without a rule keeps the
// defaults (480 x 600 and 640 x 480).
TEST(PictureSizes, ClipboardFileAndClipboardRules) {
    const struct { bool file; int mm, x, y, w, h; } cases[] = {
        {true, 1, 30, 20, 30, 20},       {true, 2, 254, 508, 96, 240},  {true, 3, 2540, 2540, 96, 120},
        {true, 4, 100, 200, 96, 240},    {true, 5, 1000, 1000, 96, 120}, {true, 6, 100, 50, 2000, 1000},
        {true, 7, 2540, 254, 96, 12},    {true, 7, -2, -3, 192, 360},   {true, 8, 0, 9, 480, 600},
        {true, 8, 2540, 0, 96, 0},       {true, 9, 1, 1, 480, 600},     {true, 0, 1, 1, 480, 600},
        // 245 millimetres are 9.9999... inches in doubles, so 95 pixels.
        {false, 1, 30, 20, 30, 20},      {false, 2, 245, 490, 95, 191}, {false, 3, 2450, 0, 95, 480},
        {false, 7, 4900, 2450, 191, 95}, {false, 4, 100, 50, 96, 48},   {false, 5, 1000, 500, 96, 48},
        {false, 6, 1440, 2880, 96, 192}, {false, 8, 0, 50, 640, 480},   {false, 9, 5, 5, 640, 480},
    };
    for (const auto& c : cases) {
        int w = c.file ? -1 : 640, h = c.file ? -1 : 480;
        if (c.file) prism::ClipboardFilePictureSize(c.mm, c.x, c.y, 96, 120, &w, &h);
        else prism::ClipboardPictureSize(c.mm, c.x, c.y, 96, &w, &h);
        EXPECT_EQ(std::pair(w, h), std::pair(c.w, c.h)) << (c.file ? "file" : "clipboard") << ", mode " << c.mm;
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
    const struct { const char* name; Bytes file; int code; std::uint32_t length, offset; } cases[] = {
        {"second entry", ClipFile(50000, 2, {{2, 7, 200}, {8, 44, 182}}), 0, 44, 182},
        {"identifier 50001", ClipFile(50001, 1, {{8, 4, 93}}), 9, 0, 0}, {"count 0", ClipFile(50000, 0, {{8, 4, 93}}), 14, 0, 0},
        {"only format 2", ClipFile(50000, 1, {{2, 4, 93}}), 14, 0, 0},
        {"count beyond the file", ClipFile(50000, 60000, {{2, 4, 93}}), 14, 0, 0},
    };
    for (const auto& c : cases) {
        ScratchFile file("clp");
        file.Write(c.file);
        HFILE f = plat::FileOpen(file.path(), plat::kOpenRead);
        prism::ClipboardEntry entry{};
        EXPECT_EQ(prism::FindClipboardEntry(f, 8, &entry), c.code) << c.name;
        EXPECT_EQ(std::pair(entry.length, entry.offset), std::pair(c.length, c.offset)) << c.name;
        plat::FileClose(f);
    }
}

TEST(ClipboardFileDirectory, DataReadsOnlyWhatTheFileHolds) {
    ScratchFile file("clp");
    file.Write(Bytes{1, 2, 3, 4, 5, 6});
    HFILE f = plat::FileOpen(file.path(), plat::kOpenRead);
    EXPECT_EQ(Take(prism::ReadClipboardData(f, 2, 3)), (Bytes{3, 4, 5}));
    for (auto [offset, length] : {std::pair<std::uint32_t, std::uint32_t>{2, 5}, {7, 0}, {0xFFFFFFF0u, 1}, {1, 0xFFFFFFFFu}}) {
        LastImgError = 0;
        EXPECT_EQ(prism::ReadClipboardData(f, offset, length), nullptr);
        EXPECT_EQ(LastImgError, 4) << offset << " " << length;
    }
    plat::FileClose(f);

    unsigned char header[93];
    prism::MakeClipboardFileHeader(header, 0x01020304);
    EXPECT_EQ(Bytes(header, header + 93), Cut(Cut(ClipFile(50000, 1, {{8, 0x01020304, 93}}), 14), 93));  // the name bytes are zero
}

TEST(TextLines, MeasureWalksLinesTabsAndLimits) {
    const std::string tall(3000, '\r'), wide(1 << 20, 'w');
    const struct { const char* name; std::string text; int x, y; size_t used; bool cut; } cases[] = {
        {"two lines", "ab\r\ncde", 32, 17, 7, false}, {"code 8 is the tab", "\b\t", 73, 1, 2, false}, {"empty", "", 1, 1, 0, false},
        {"stops below 32767 less a line", tall, 0, 32753, 2047, true},
        {"width stops growing", wide, 32761, 1, wide.size(), false},
        {"ends at a zero", std::string("a\0b", 3), 9, 1, 1, false},
    };
    for (const auto& c : cases) {
        const auto m = prism::MeasureTextLines(reinterpret_cast<const unsigned char*>(c.text.data()), c.text.size(), 16, 8);
        EXPECT_EQ(std::tuple(m.x, m.y, m.used, m.cut), std::tuple(c.x, c.y, c.used, c.cut)) << c.name;
    }
}

}  // namespace
