// Run-length coding: pinned streams for small images, round trips where
// the coder promises them, the decoders' row-end rules, damaged streams,
// and refused inputs.
#include "geometry/picture.h"

#include <gtest/gtest.h>

#include <string>

using picture::Bytes;
using picture::Picture;

namespace {

size_t TableOffset(int bits) { return 40 + (size_t(4) << bits); }

// An uncompressed DIB from raw stored rows (padding included), bottom first.
Bytes RawDib(int width, int bits, const std::vector<Bytes>& rows) {
    testing_support::DibSpec shape;
    shape.width = width;
    shape.height = static_cast<int>(rows.size());
    shape.bitCount = bits;
    Bytes dib = testing_support::PackedDib(shape, [](int, int) { return 0u; });
    const size_t stride = testing_support::Stride(width, bits);
    for (size_t y = 0; y < rows.size(); ++y) {
        EXPECT_EQ(rows[y].size(), stride);
        std::copy(rows[y].begin(), rows[y].end(), dib.begin() + static_cast<long>(TableOffset(bits) + y * stride));
    }
    return dib;
}

// A compressed DIB holding `stream` behind a full table.
Bytes CompressedDib(int width, int height, int bits, std::uint32_t compression, const Bytes& stream) {
    testing_support::DibSpec shape;
    shape.width = width;
    shape.height = 0;
    shape.bitCount = bits;
    Bytes dib = testing_support::PackedDib(shape);
    picture::Put32(dib, 8, static_cast<std::uint32_t>(height));
    picture::Put32(dib, 16, compression);
    picture::Put32(dib, 20, static_cast<std::uint32_t>(stream.size()));
    dib.insert(dib.end(), stream.begin(), stream.end());
    return dib;
}

Bytes StreamOf(const Bytes& compressed, int bits) {
    return Bytes(compressed.begin() + static_cast<long>(TableOffset(bits)), compressed.end());
}

// Stored rows of an expanded image, padding included.
std::vector<Bytes> RowsOf(const Bytes& dib) {
    const int width = static_cast<int>(picture::Get32(dib, 4));
    const int height = static_cast<int>(picture::Get32(dib, 8));
    const int bits = static_cast<int>(picture::Get16(dib, 14));
    const size_t stride = testing_support::Stride(width, bits);
    std::vector<Bytes> rows;
    for (int y = 0; y < height; ++y) {
        auto at = dib.begin() + static_cast<long>(TableOffset(bits) + y * stride);
        rows.emplace_back(at, at + static_cast<long>(stride));
    }
    return rows;
}

Bytes Repeat(size_t n, unsigned char v) { return Bytes(n, v); }

struct PinnedCase {
    const char* name;
    int width;
    int bits;
    std::vector<Bytes> rows;
    Bytes stream;
};

// Streams worked out by hand from the coding rules.
const std::vector<PinnedCase>& PinnedCases() {
    static const std::vector<PinnedCase> cases = {
        {"runs_stop_at_250", 600, 8, {Repeat(600, 9)}, {250, 9, 250, 9, 100, 9, 0, 0, 0, 1}},
        {"width1_zero", 1, 8, {{0, 0, 0, 0}}, {2, 0, 0, 0, 0, 1}},
        // The byte behind the last pixel is coded as a further pixel.
        {"width1_tail_takes_padding", 1, 8, {{7, 0, 0, 0}}, {1, 7, 1, 0, 0, 0, 0, 1}},
        {"three_distinct_padded_with_255", 3, 8, {{1, 2, 3, 0}}, {0, 3, 1, 2, 3, 255, 0, 0, 0, 1}},
        {"six_distinct_then_a_pair", 8, 8, {{1, 2, 3, 4, 5, 6, 7, 7}}, {0, 6, 1, 2, 3, 4, 5, 6, 2, 7, 0, 0, 0, 1}},
        {"single_before_a_run", 5, 8, {{4, 6, 6, 6, 6, 0, 0, 0}}, {1, 4, 4, 6, 0, 0, 0, 1}},
        // Look-ahead at a row end without padding reads the next row.
        {"lookahead_reads_next_row", 4, 8, {{1, 2, 3, 4}, {4, 4, 9, 9}},
         {0, 3, 1, 2, 3, 255, 2, 4, 0, 0, 2, 4, 2, 9, 0, 0, 0, 1}},
        // ... and past the block's end sees 0.
        {"lookahead_past_block_sees_zero", 4, 8, {{7, 8, 9, 0}}, {0, 3, 7, 8, 9, 255, 2, 0, 0, 0, 0, 1}},
        {"absolute_to_the_end", 4, 8, {{7, 8, 9, 6}}, {0, 4, 7, 8, 9, 6, 0, 0, 0, 1}},
        // RLE4: the zero padding is two equal bytes, so two single bytes.
        {"rle4_two_single_bytes", 4, 4, {{0x12, 0x34, 0, 0}}, {2, 0x12, 2, 0x34, 0, 0, 0, 1}},
        {"rle4_runs_stop_at_250", 600, 4, {Repeat(300, 0x55)}, {250, 0x55, 250, 0x55, 100, 0x55, 0, 0, 0, 1}},
        {"rle4_tail", 5, 4, {{0x11, 0x11, 0x20, 0}}, {4, 0x11, 1, 0x20, 0, 0, 0, 1}},
        // Odd width: the step that would take 4 of the last 3 pixels keeps
        // its size and ends the row.
        {"rle4_odd_width_two_singles", 3, 4, {{0x12, 0x30, 0, 0}}, {2, 0x12, 2, 0x30, 0, 0, 0, 1}},
        {"rle4_odd_width_absolute", 3, 4, {{0x12, 0x30, 0x55, 0x66}}, {0, 4, 0x12, 0x30, 0, 0, 0, 1}},
        {"rle4_odd_width_absolute_then_single", 7, 4, {{0x12, 0x34, 0x56, 0x70}, {0x88, 0x88, 0x88, 0x80}},
         {0, 6, 0x12, 0x34, 0x56, 255, 1, 0x70, 0, 0, 6, 0x88, 1, 0x80, 0, 0, 0, 1}},
        // Odd width reaching 3 pixels after a run: the look-ahead into the
        // next row picks an absolute run, past the block two single bytes.
        {"rle4_odd_width_stops_at_row_end", 7, 4, {{0x11, 0x11, 0x23, 0x45}, {0x67, 0x89, 0x89, 0x90}},
         {4, 0x11, 0, 4, 0x23, 0x45, 0, 0, 2, 0x67, 4, 0x89, 1, 0x90, 0, 0, 0, 1}},
        {"rle4_odd_width_last_row", 7, 4, {{0x11, 0x11, 0x23, 0x45}},
         {4, 0x11, 2, 0x23, 2, 0x45, 0, 0, 0, 1}},
        {"rle4_absolute_odd_bytes_padded", 10, 4, {{1, 2, 3, 5, 5, 0, 0, 0}}, {0, 6, 1, 2, 3, 255, 4, 5, 0, 0, 0, 1}},
    };
    return cases;
}

TEST(CompressDIB, PinnedStreams) {
    for (const PinnedCase& c : PinnedCases()) {
        SCOPED_TRACE(c.name);
        Bytes src = RawDib(c.width, c.bits, c.rows);
        SetImgError(5);
        Bytes out = picture::Run(CompressDIB, src);
        ASSERT_FALSE(out.empty());
        EXPECT_EQ(ImgError(), 0);
        EXPECT_EQ(StreamOf(out, c.bits), c.stream);
        // Header as it was but for compression and the stream's length.
        Bytes header(out.begin(), out.begin() + static_cast<long>(TableOffset(c.bits)));
        Bytes expected(src.begin(), src.begin() + static_cast<long>(TableOffset(c.bits)));
        picture::Put32(expected, 16, c.bits == 8 ? 1 : 2);
        picture::Put32(expected, 20, static_cast<std::uint32_t>(c.stream.size()));
        EXPECT_EQ(header, expected);
    }
}

// Expanding the pinned streams gives the source back, except for the
// RLE8 tail that takes in the byte behind a row's last pixel.
TEST(ExpandCompressedDIB, PinnedStreamsExpandToTheirSource) {
    for (const PinnedCase& c : PinnedCases()) {
        SCOPED_TRACE(c.name);
        Bytes packed = picture::Run(CompressDIB, RawDib(c.width, c.bits, c.rows));
        Bytes out = picture::Run(ExpandCompressedDIB, packed);
        ASSERT_FALSE(out.empty());
        std::vector<Bytes> rows = RowsOf(out);
        ASSERT_EQ(rows.size(), c.rows.size());
        const size_t pixelBytes = (static_cast<size_t>(c.width) * c.bits + 7) / 8;
        for (size_t y = 0; y < rows.size(); ++y) {
            Bytes want(c.rows[y].begin(), c.rows[y].begin() + static_cast<long>(pixelBytes));
            if (c.bits == 4 && c.width % 2) want.back() &= 0xF0;  // the padding nibble is not a pixel
            want.resize(c.rows[y].size(), 0);
            if (std::string(c.name) == "width1_tail_takes_padding") want[0] = 0;  // second pair lands on column 0
            EXPECT_EQ(rows[y], want) << "row " << y;
        }
    }
}

// Round trips: RLE4 at every width; RLE8 where no row tail takes in a
// differing byte, which holds when each row starts and ends with 0.
class RoundTrip : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(RoundTrip, ExpandGivesTheSourceBack) {
    const int bits = std::get<0>(GetParam());
    const int width = std::get<1>(GetParam());
    for (int height : {1, 2, 5}) {
        for (int pattern = 0; pattern < 3; ++pattern) {
            Picture p = picture::Make(width, height, bits, [&](int x, int y) -> unsigned {
                if (bits == 8 && (x == 0 || x == width - 1)) return 0;
                switch (pattern) {
                    case 0: return (x * 7 + y * 3) % 11;                  // mostly distinct
                    case 1: return ((x / 5 + y) % 3) * 4;                 // short runs
                    default: return x < width / 2 ? 3 : (x * 13) % 16;   // long run, then noise
                }
            });
            Bytes src = picture::ToDib(p);
            Bytes packed = picture::Run(CompressDIB, src);
            ASSERT_FALSE(packed.empty());
            Bytes out = picture::Run(ExpandCompressedDIB, packed);
            ASSERT_EQ(out.size(), src.size());
            EXPECT_EQ(picture::Get32(out, 16), 0u);
            EXPECT_EQ(picture::Get32(out, 20), testing_support::Stride(width, bits) * height);
            picture::Put32(out, 20, 0);
            EXPECT_EQ(out, src) << "height " << height << " pattern " << pattern;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Widths, RoundTrip,
                         ::testing::Combine(::testing::Values(4, 8),
                                            ::testing::Values(1, 2, 3, 4, 5, 6, 7, 9, 16, 31, 33, 255, 256, 301,
                                                              503, 1000)));

TEST(ExpandCompressedDIB, Rle8RowEnds) {
    struct Case {
        const char* name;
        int width;
        int height;
        Bytes stream;
        std::vector<Bytes> rows;
    } cases[] = {
        // A repeat longer than the row's room is cut at the row's end.
        {"repeat_cut", 4, 1, {3, 5, 9, 6, 0, 1}, {{5, 5, 5, 6}}},
        // After a full row, x wraps: the next pair lands on column 0.
        {"full_row_wraps", 2, 1, {2, 5, 1, 7, 0, 1}, {{7, 5, 0, 0}}},
        {"absolute_cut_and_wraps", 2, 1, {0, 3, 1, 2, 3, 0, 1, 9, 0, 1}, {{9, 2, 0, 0}}},
        // An offset past the right edge: width - x wraps and the run goes
        // on into the next row's bytes.
        {"offset_past_edge", 2, 2, {0, 2, 5, 0, 3, 9, 0, 1}, {{0, 0, 0, 0}, {0, 9, 9, 9}}},
        {"end_of_row_and_offset", 3, 3, {1, 1, 0, 0, 0, 2, 1, 1, 1, 2, 0, 1}, {{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 2, 0, 0}}},
        // Writes beyond the pixel rows are dropped.
        {"run_past_last_row", 2, 1, {0, 2, 3, 0, 200, 1, 0, 0, 0, 2, 0, 99, 4, 4, 0, 1}, {{0, 0, 0, 1}}},
        // Without an end-of-image pair the block's end ends the image.
        {"no_end_pair", 2, 1, {2, 5}, {{5, 5, 0, 0}}},
        {"absolute_cut_by_block_end", 8, 1, {0, 6, 1, 2}, {{1, 2, 0, 0, 0, 0, 0, 0}}},
        {"offset_cut_by_block_end", 4, 1, {1, 3, 0, 2, 1}, {{3, 0, 0, 0}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes out = picture::Run(ExpandCompressedDIB, CompressedDib(c.width, c.height, 8, 1, c.stream));
        ASSERT_FALSE(out.empty());
        EXPECT_EQ(out.size(), TableOffset(8) + c.rows.size() * c.rows[0].size());
        EXPECT_EQ(RowsOf(out), c.rows);
    }
}

TEST(ExpandCompressedDIB, Rle4RowEnds) {
    struct Case {
        const char* name;
        int width;
        int height;
        std::uint32_t compression;
        Bytes stream;
        std::vector<Bytes> rows;
    } cases[] = {
        // The run is cut at the row's end and x stays there: the next pair
        // is lost, unlike RLE8.
        {"repeat_cut_and_next_lost", 3, 1, 2, {4, 0x12, 2, 0x34, 0, 1}, {{0x12, 0x10, 0, 0}}},
        {"absolute_odd_count", 4, 1, 2, {0, 3, 0x12, 0x30, 0, 1}, {{0x12, 0x30, 0, 0}}},
        {"absolute_odd_bytes_skip_pad", 8, 1, 2, {0, 5, 0x12, 0x34, 0x50, 0xFF, 2, 0x77, 0, 1}, {{0x12, 0x34, 0x57, 0x70}}},
        {"offset", 4, 2, 2, {0, 2, 2, 1, 2, 0xAB, 0, 1}, {{0, 0, 0, 0}, {0x00, 0xAB, 0, 0}}},
        // Past the right edge nothing is written.
        {"offset_past_edge_drops", 2, 2, 2, {0, 2, 5, 0, 3, 0x99, 0, 0, 1, 0x40, 0, 1}, {{0, 0, 0, 0}, {0x40, 0, 0, 0}}},
        {"rows_past_the_last_dropped", 2, 1, 2, {0, 0, 2, 0x11, 0, 2, 0, 250, 2, 0x22, 0, 1}, {{0, 0, 0, 0}}},
        {"absolute_cut_by_block_end", 8, 1, 2, {0, 8, 0x12, 0x34}, {{0x12, 0x34, 0, 0}}},
        // Runs that start on an odd column.
        {"repeat_from_odd_column", 8, 1, 2, {1, 0x50, 5, 0xAB, 0, 1}, {{0x5A, 0xBA, 0xBA, 0x00}}},
        {"absolute_from_odd_column", 4, 1, 2, {1, 0x30, 0, 3, 0x12, 0x30, 0, 1}, {{0x31, 0x23, 0, 0}}},
        {"absolute_cut_at_row_end", 5, 1, 2, {2, 0x11, 0, 5, 0x12, 0x34, 0x50, 0xFF, 2, 0x66, 0, 1},
         {{0x11, 0x12, 0x30, 0}}},
        // Compression values above 2 are read as RLE4.
        {"compression_3_is_rle4", 4, 1, 3, {3, 0x5A, 0, 1}, {{0x5A, 0x50, 0, 0}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes out = picture::Run(ExpandCompressedDIB, CompressedDib(c.width, c.height, 4, c.compression, c.stream));
        ASSERT_FALSE(out.empty());
        EXPECT_EQ(picture::Get32(out, 16), 0u);
        EXPECT_EQ(RowsOf(out), c.rows);
    }
}

// A stream of nothing but offsets and long runs far outside the image
// ends at the block's end and touches nothing outside the pixel rows.
TEST(ExpandCompressedDIB, HostileStreamsStayInside) {
    for (int bits : {4, 8}) {
        Bytes stream;
        for (int i = 0; i < 2000; ++i) {
            const unsigned char k = static_cast<unsigned char>(i * 37);
            if (i % 3 == 0) stream.insert(stream.end(), {0, 2, k, static_cast<unsigned char>(k / 3)});
            else if (i % 3 == 1) stream.insert(stream.end(), {255, k});
            else stream.insert(stream.end(), {0, 255});
        }
        Bytes out = picture::Run(ExpandCompressedDIB, CompressedDib(5, 3, bits, bits == 8 ? 1 : 2, stream));
        EXPECT_EQ(out.size(), TableOffset(bits) + 3 * testing_support::Stride(5, bits));
    }
}

TEST(ExpandCompressedDIB, CopiesTheFullTableAndClearsCompression) {
    Bytes src = CompressedDib(2, 1, 8, 1, {2, 7, 0, 1});
    picture::Put32(src, 24, 123);
    Bytes out = picture::Run(ExpandCompressedDIB, src);
    ASSERT_EQ(out.size(), TableOffset(8) + 4);
    Bytes want(src.begin(), src.begin() + static_cast<long>(TableOffset(8)));
    picture::Put32(want, 16, 0);
    picture::Put32(want, 20, 4);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + static_cast<long>(TableOffset(8))), want);
}

TEST(RleBadInput, RefusedWithCodes) {
    Bytes rle8 = CompressedDib(4, 2, 8, 1, {0, 1});
    auto with = [](Bytes b, size_t at, std::uint32_t v) {
        picture::Put32(b, at, v);
        return b;
    };
    auto with16 = [](Bytes b, size_t at, unsigned v) {
        b[at] = static_cast<unsigned char>(v);
        b[at + 1] = static_cast<unsigned char>(v >> 8);
        return b;
    };
    Bytes plain8 = picture::ToDib(picture::Varied(6, 3, 8));
    Bytes plain4 = picture::ToDib(picture::Varied(6, 3, 4));
    struct Case {
        const char* name;
        picture::DibOp op;
        Bytes in;
        int code;
    } cases[] = {
        {"expand_uncompressed", ExpandCompressedDIB, plain8, 8},
        {"expand_size_image_0", ExpandCompressedDIB, with(rle8, 20, 0), 8},
        {"expand_rle8_at_depth_4", ExpandCompressedDIB, with16(rle8, 14, 4), 8},
        {"expand_rle4_at_depth_8", ExpandCompressedDIB, with(rle8, 16, 2), 8},
        {"expand_other_at_depth_24", ExpandCompressedDIB, with16(with(rle8, 16, 3), 14, 24), 8},
        {"expand_negative_height", ExpandCompressedDIB, with(rle8, 8, 0xFFFFFFFEu), 8},
        {"expand_header_cut", ExpandCompressedDIB, Bytes(rle8.begin(), rle8.begin() + 20), 8},
        {"expand_sizes_overflow", ExpandCompressedDIB, with(with(rle8, 4, 0x7FFFFFFF), 8, 0x7FFFFFFF), 1},
        {"compress_1_bit", CompressDIB, picture::ToDib(picture::Varied(6, 3, 1)), 8},
        {"compress_24_bit", CompressDIB, picture::ToDib(picture::Varied(6, 3, 24)), 8},
        {"compress_compressed", CompressDIB, rle8, 8},
        {"compress_rows_cut", CompressDIB, Bytes(plain8.begin(), plain8.end() - 1), 8},
        {"compress_negative_width", CompressDIB, with(plain4, 4, 0xFFFFFFFFu), 8},
        {"compress_huge_height", CompressDIB, with(plain4, 8, 0x7FFFFFFF), 8},
        {"compress_core_header", CompressDIB, Bytes{12, 0, 0, 0, 2, 0, 1, 0, 1, 0, 8, 0}, 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SetImgError(0);
        EXPECT_TRUE(picture::Run(c.op, c.in).empty());
        EXPECT_EQ(ImgError(), c.code);
    }
    for (picture::DibOp op : {CompressDIB, ExpandCompressedDIB}) {
        SetImgError(0);
        EXPECT_EQ(op(nullptr), nullptr);
        EXPECT_EQ(ImgError(), 8);
        HGLOBAL freed = testing_support::BlockFrom(plain8);
        GlobalFree(freed);
        SetImgError(0);
        EXPECT_EQ(op(freed), nullptr);
        EXPECT_EQ(ImgError(), 8);
    }
}

// A table shorter than the depth's (through biClrUsed) is not allowed for:
// the coder reads its pixels at the full table's offset all the same, and
// bytes past the block read as 0.
TEST(CompressDIB, ShortTableStillUsesTheFullOffset) {
    testing_support::DibSpec shape;
    shape.width = 4;
    shape.height = 1;
    shape.bitCount = 4;
    shape.colors = 2;
    shape.clrUsed = 2;
    Bytes src = testing_support::PackedDib(shape, [](int x, int) { return unsigned(x + 1); });
    ASSERT_EQ(src.size(), 40u + 8 + 4);
    Bytes out = picture::Run(CompressDIB, src);
    ASSERT_FALSE(out.empty());
    // Offset 104 is past the 52-byte block: the row reads as zeros.
    EXPECT_EQ(StreamOf(out, 4), (Bytes{4, 0, 0, 0, 0, 1}));
    // The new block copies the full table's worth of bytes: the short
    // table, the source's row, then zeros.
    Bytes want = src;
    picture::Put32(want, 16, 2);
    picture::Put32(want, 20, 6);
    want.resize(104, 0);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 104), want);
}

}  // namespace
