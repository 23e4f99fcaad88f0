// Run-length coding: pinned streams for small images, round trips where
// the coder promises them, the decoders' row-end rules, damaged streams,
// and refused inputs.
#include "support/test_support.h"

using namespace testing_support;
using Rows = std::vector<Bytes>;

namespace {

size_t TableOffset(int bits) { return 40 + (size_t(4) << bits); }

// An uncompressed DIB from raw stored rows (padding included), bottom first.
Bytes RawDib(int width, int bits, const Rows& rows) {
    Bytes dib = PackedDib({width, static_cast<int>(rows.size()), bits});
    dib.resize(TableOffset(bits));
    for (const Bytes& row : rows) dib.insert(dib.end(), row.begin(), row.end());
    return dib;
}

// The header and full table of `dib` (a short table padded with zeros)
// with the compression and size of `body`, then body.
Bytes Recoded(const Bytes& dib, int bits, std::uint32_t compression, const Bytes& body) {
    Bytes b(dib.begin(), dib.begin() + static_cast<long>(std::min(dib.size(), TableOffset(bits))));
    b.resize(TableOffset(bits), 0);
    Put32(b, 16, compression);
    Put32(b, 20, static_cast<std::uint32_t>(body.size()));
    b.insert(b.end(), body.begin(), body.end());
    return b;
}

// A compressed DIB holding `stream` behind a full table, with a header
// field (24) to be copied as it stands.
Bytes CompressedDib(int width, int height, int bits, std::uint32_t compression, const Bytes& stream) {
    return With(With(Recoded(RawDib(width, bits, {}), bits, compression, stream), 8, std::uint32_t(height)), 24, 123);
}

TEST(CompressDIB, PinnedStreams) {
    struct Case { const char* name; int width; int bits; Rows rows; Bytes stream; } cases[] = {
        {"runs_stop_at_250", 600, 8, {Bytes(600, 9)}, {250, 9, 250, 9, 100, 9, 0, 0, 0, 1}},
        {"rle4_runs_stop_at_250", 600, 4, {Bytes(300, 0x55)}, {250, 0x55, 250, 0x55, 100, 0x55, 0, 0, 0, 1}},
        {"odd_absolute_padded_with_255", 3, 8, {{1, 2, 3, 0}}, {0, 3, 1, 2, 3, 255, 0, 0, 0, 1}},
        {"rle4_odd_absolute_padded", 10, 4, {{1, 2, 3, 5, 5, 0, 0, 0}}, {0, 6, 1, 2, 3, 255, 4, 5, 0, 0, 0, 1}},
        {"rle4_absolute_takes_the_whole_row", 8, 4, {{0x12, 0x34, 0x56, 0x78}}, {0, 8, 0x12, 0x34, 0x56, 0x78, 0, 0, 0, 1}},
        {"abs_stops_at_pair", 8, 8, {{1, 2, 3, 4, 5, 6, 7, 7}}, {0, 6, 1, 2, 3, 4, 5, 6, 2, 7, 0, 0, 0, 1}},
        {"single_before_a_run", 5, 8, {{4, 6, 6, 6, 6, 0, 0, 0}}, {1, 4, 4, 6, 0, 0, 0, 1}},
        // Row tail: the byte behind the last pixel is coded as a further pixel.
        {"tail_takes_padding", 1, 8, {{7, 0, 0, 0}}, {1, 7, 1, 0, 0, 0, 0, 1}},
        // Look-ahead at a row end without padding reads the next row ...
        {"peek_next_row", 4, 8, {{1, 2, 3, 4}, {4, 4, 9, 9}}, {0, 3, 1, 2, 3, 255, 2, 4, 0, 0, 2, 4, 2, 9, 0, 0, 0, 1}},
        // ... and past the block's end sees 0.
        {"lookahead_past_block_sees_zero", 4, 8, {{7, 8, 9, 0}}, {0, 3, 7, 8, 9, 255, 2, 0, 0, 0, 0, 1}},
        {"rle4_tail", 5, 4, {{0x11, 0x11, 0x20, 0}}, {4, 0x11, 1, 0x20, 0, 0, 0, 1}},
        // Odd width: a step that would take 4 of the last 3 pixels keeps its
        // size and ends the row (look-ahead into the next row, or past the
        // block's end).
        {"rle4_odd_width_stops_at_row_end", 7, 4, {{0x11, 0x11, 0x23, 0x45}, {0x67, 0x89, 0x89, 0x90}},
         {4, 0x11, 0, 4, 0x23, 0x45, 0, 0, 2, 0x67, 4, 0x89, 1, 0x90, 0, 0, 0, 1}},
        {"rle4_odd_width_last_row", 7, 4, {{0x11, 0x11, 0x23, 0x45}}, {4, 0x11, 2, 0x23, 2, 0x45, 0, 0, 0, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes src = RawDib(c.width, c.bits, c.rows);
        SetImgError(5);
        Bytes out = Call(CompressDIB, src);
        EXPECT_EQ(ImgError(), 0);
        // Header and table as they were but for compression and size, then the stream.
        EXPECT_EQ(out, Recoded(src, c.bits, c.bits == 8 ? 1 : 2, c.stream));
    }
}

// Round trips: RLE4 at every width; RLE8 where no row tail takes in a
// differing byte, which holds when each row starts and ends with 0.
TEST(RunLength, ExpandGivesTheSourceBack) {
    for (int bits : {4, 8})
        for (int width : {1, 2, 3, 7, 33, 255, 256, 301, 503})
            for (int pattern = 0; pattern < 3; ++pattern) {
                // Mostly distinct; short runs; a long run, then noise.
                Bytes src = Image(width, 3, bits, [&](int x, int y) -> unsigned {
                    const int v[] = {(x * 7 + y * 3) % 11, (x / 5 + y) % 3 * 4, x < width / 2 ? 3 : x * 13 % 16};
                    return bits == 8 && (x == 0 || x == width - 1) ? 0 : v[pattern];
                });
                Bytes out = Call(ExpandCompressedDIB, Call(CompressDIB, src));
                Put32(src, 20, static_cast<std::uint32_t>(Stride(width, bits) * 3));
                EXPECT_EQ(out, src) << bits << " bits, width " << width << ", pattern " << pattern;
            }
}

// Expected stored rows (their count is the height); compression 0: by depth.
struct ExpandCase { const char* name; int bits; int width; Bytes stream; Rows rows; std::uint32_t compression = 0; };

TEST(ExpandCompressedDIB, RowEndsAndDamagedStreams) {
    const ExpandCase cases[] = {
        // A repeat is cut at the row's end; RLE8 then wraps x to column 0,
        // RLE4 leaves x there and loses the next pair.
        {"rle8_repeat_cut", 8, 4, {3, 5, 9, 6, 0, 1}, {{5, 5, 5, 6}}},
        {"rle8_full_row_wraps", 8, 2, {2, 5, 1, 7, 0, 1}, {{7, 5, 0, 0}}},
        {"rle8_absolute_cut_and_wraps", 8, 2, {0, 3, 1, 2, 3, 0, 1, 9, 0, 1}, {{9, 2, 0, 0}}},
        {"rle4_repeat_cut_and_next_lost", 4, 3, {4, 0x12, 2, 0x34, 0, 1}, {{0x12, 0x10, 0, 0}}},
        {"rle4_abs_cut", 4, 5, {2, 0x11, 0, 5, 0x12, 0x34, 0x50, 0xFF, 2, 0x66, 0, 1}, {{0x11, 0x12, 0x30, 0}}},
        // Past the right edge RLE8 goes on into the next row's bytes, RLE4
        // writes nothing.
        {"rle8_offset_past_edge", 8, 2, {0, 2, 5, 0, 3, 9, 0, 1}, {{0, 0, 0, 0}, {0, 9, 9, 9}}},
        {"rle8_eol_offset", 8, 3, {1, 1, 0, 0, 0, 2, 1, 1, 1, 2, 0, 1}, {{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 2, 0, 0}}},
        {"rle4_past_edge_drops", 4, 2, {0, 2, 5, 0, 3, 0x99, 0, 0, 1, 0x40, 0, 1}, {{0, 0, 0, 0}, {0x40, 0, 0, 0}}},
        {"rle4_offset", 4, 4, {0, 2, 2, 1, 2, 0xAB, 0, 1}, {{0, 0, 0, 0}, {0x00, 0xAB, 0, 0}}},
        {"rle4_abs_skips_pad", 4, 8, {0, 5, 0x12, 0x34, 0x50, 0xFF, 2, 0x77, 0, 1}, {{0x12, 0x34, 0x57, 0x70}}},
        {"rle4_repeat_from_odd_column", 4, 8, {1, 0x50, 5, 0xAB, 0, 1}, {{0x5A, 0xBA, 0xBA, 0x00}}},
        {"rle4_absolute_from_odd_column", 4, 4, {1, 0x30, 0, 3, 0x12, 0x30, 0, 1}, {{0x31, 0x23, 0, 0}}},
        {"compression_3_is_rle4", 4, 4, {3, 0x5A, 0, 1}, {{0x5A, 0x50, 0, 0}}, 3},
        // Damaged streams: writes beyond the pixel rows are dropped and the
        // block's end ends the stream, whatever a pair asks for.
        {"rle8_run_past_last_row", 8, 2, {0, 2, 3, 0, 200, 1, 0, 0, 0, 2, 0, 99, 4, 4, 0, 1}, {{0, 0, 0, 1}}},
        {"rle4_rows_past_the_last", 4, 2, {0, 0, 2, 0x11, 0, 2, 0, 250, 2, 0x22, 0, 1}, {{0, 0, 0, 0}}},
        {"rle8_no_end_pair", 8, 2, {2, 5}, {{5, 5, 0, 0}}},
        {"rle8_absolute_cut_by_block_end", 8, 8, {0, 6, 1, 2}, {{1, 2, 0, 0, 0, 0, 0, 0}}},
        {"rle4_absolute_cut_by_block_end", 4, 8, {0, 8, 0x12, 0x34}, {{0x12, 0x34, 0, 0}}},
        {"rle8_offset_cut_by_block_end", 8, 4, {1, 3, 0, 2, 1}, {{3, 0, 0, 0}}},
    };
    // The whole result: header and full table as they were but for
    // compression 0 and the rows' size, then the rows.
    for (const ExpandCase& c : cases) {
        SCOPED_TRACE(c.name);
        const std::uint32_t compression = c.compression ? c.compression : c.bits == 8 ? 1 : 2;
        Bytes src = CompressedDib(c.width, static_cast<int>(c.rows.size()), c.bits, compression, c.stream);
        Bytes rows;
        for (const Bytes& row : c.rows) rows.insert(rows.end(), row.begin(), row.end());
        EXPECT_EQ(Call(ExpandCompressedDIB, src), Recoded(src, c.bits, 0, rows));
    }
}

TEST(RleBadInput, RefusedWithCodes) {
    Bytes rle8 = CompressedDib(4, 2, 8, 1, {0, 1});
    auto depth = [](Bytes b, unsigned bits) { return b[14] = static_cast<unsigned char>(bits), b; };
    Bytes plain8 = ToDib(Varied(6, 3, 8));
    Bytes plain4 = ToDib(Varied(6, 3, 4));
    struct Case { const char* name; DibOp op; Bytes in; int code; } cases[] = {
        {"expand_uncompressed", ExpandCompressedDIB, plain8, 8},
        {"expand_size_image_0", ExpandCompressedDIB, With(rle8, 20, 0), 8},
        {"expand_rle8_at_depth_4", ExpandCompressedDIB, depth(rle8, 4), 8},
        {"expand_rle4_at_depth_8", ExpandCompressedDIB, With(rle8, 16, 2), 8},
        {"expand_other_at_depth_24", ExpandCompressedDIB, depth(With(rle8, 16, 3), 24), 8},
        {"expand_negative_height", ExpandCompressedDIB, With(rle8, 8, 0xFFFFFFFEu), 8},
        {"expand_header_cut", ExpandCompressedDIB, Bytes(rle8.begin(), rle8.begin() + 20), 8},
        {"expand_sizes_overflow", ExpandCompressedDIB, With(With(rle8, 4, 0x7FFFFFFF), 8, 0x7FFFFFFF), 1},
        {"compress_1_bit", CompressDIB, ToDib(Varied(6, 3, 1)), 8},
        {"compress_24_bit", CompressDIB, ToDib(Varied(6, 3, 24)), 8},
        {"compress_compressed", CompressDIB, rle8, 8},
        {"compress_rows_cut", CompressDIB, Bytes(plain8.begin(), plain8.end() - 1), 8},
        {"compress_negative_width", CompressDIB, With(plain4, 4, 0xFFFFFFFFu), 8},
        {"compress_huge_height", CompressDIB, With(plain4, 8, 0x7FFFFFFF), 8},
        {"compress_core_header", CompressDIB, Bytes{12, 0, 0, 0, 2, 0, 1, 0, 1, 0, 8, 0}, 8},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        SetImgError(0);
        EXPECT_TRUE(Call(c.op, c.in).empty());
        EXPECT_EQ(ImgError(), c.code);
    }
    HGLOBAL freed = BlockFrom(plain8);
    GlobalFree(freed);
    for (DibOp op : {CompressDIB, ExpandCompressedDIB})
        for (HGLOBAL bad : {HGLOBAL(nullptr), freed}) {
            SetImgError(0);
            EXPECT_EQ(op(bad), nullptr);
            EXPECT_EQ(ImgError(), 8);
        }
}

// A table shorter than the depth's (through biClrUsed) is not allowed for:
// the coder reads pixels at the full table's offset, past this 52-byte
// block, as zeros, and copies a full table's worth of bytes.
TEST(CompressDIB, ShortTableStillUsesTheFullOffset) {
    // 4 wide, 1 high, 4 bits, 2 table entries, biClrUsed 2.
    Bytes src = PackedDib({4, 1, 4, 2, 2}, [](int x, int) { return unsigned(x + 1); });
    ASSERT_EQ(src.size(), 40u + 8 + 4);
    EXPECT_EQ(Call(CompressDIB, src), Recoded(src, 4, 2, {4, 0, 0, 0, 0, 1}));
}

}  // namespace
