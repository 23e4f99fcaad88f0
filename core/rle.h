// Run-length coded DIBs: the pieces of the RLE8 and RLE4 streams shared by
// the coder (CompressDIB) and the decoders (ExpandCompressedDIB).
#pragma once

#include <cstdint>

namespace prism {

// Stream escapes: a pair 0, b with b below 3 is a command.
constexpr unsigned char kRleEndOfRow = 0;
constexpr unsigned char kRleEndOfImage = 1;
constexpr unsigned char kRleOffset = 2;

// The coder's own limits: runs stop at 250 pixels (RLE4: 125 byte pairs),
// and odd absolute runs are padded with 255.
constexpr std::uint32_t kRleMaxRun = 250;
constexpr unsigned char kRlePad = 255;

constexpr std::uint32_t kBiRgb = 0;
constexpr std::uint32_t kBiRle8 = 1;
constexpr std::uint32_t kBiRle4 = 2;

// Both coders keep the pixels (or the stream) at a fixed offset: a 40-byte
// header and a full table for the depth, whatever biClrUsed says.
inline std::uint64_t RleTableOffset(int bitCount) { return 40 + (std::uint64_t(4) << bitCount); }

// Writes a 4-bit value into pixel `index` of a row, keeping the other
// nibble: even pixels take the high nibble.
inline void PutNibble(unsigned char* row, std::uint32_t index, unsigned value) {
    unsigned char& b = row[index / 2];
    if (index & 1)
        b = static_cast<unsigned char>((b & 0xF0) | (value & 0x0F));
    else
        b = static_cast<unsigned char>((b & 0x0F) | (value << 4));
}

// Most bytes one stored row can cost in either stream, its end-of-row pair
// included: no step emits more than 2 bytes a pixel, and the row tail of
// RLE8 can spend 4 bytes on its last pixel.
inline std::uint64_t RleRowWorstCase(std::uint32_t width) { return 2 * std::uint64_t(width) + 4; }

}  // namespace prism
