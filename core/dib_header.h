// Headers and colour tables of DIBs made from device bitmaps, and the
// logical-palette record made from a colour table.
#pragma once

#include "platform/platform.h"

#include <cstdint>

namespace prism {

// A cleared 40-byte header for an image of that size, at the next depth
// the library keeps (1, 4, 8 or 24), with biSizeImage and, below 24 bits,
// biClrUsed and biClrImportant of 2 to the depth.
void InitDibHeader(BITMAPINFOHEADER* header, std::int32_t width, std::int32_t height, int bitCount);

// Writes the default colour table of header->biBitCount right behind the
// 40-byte header: black and white, the 16 colours of the VGA, or a 3-3-2
// cube.  Other depths have no table and nothing is written.
void DefaultDibColorTable(BITMAPINFOHEADER* header);

// Bytes of a logical-palette record of `count` entries.
constexpr std::uint64_t LogPaletteBytes(std::uint32_t count) { return 8 + 4 * static_cast<std::uint64_t>(count); }

// Fills a logical-palette record (version 768, a 16-bit count, then red,
// green, blue and flags 0 per entry) from a colour table of 4-byte entries
// stored blue, green, red.  Table bytes at or past `tableBytes` read as 0.
void FillLogPalette(unsigned char* record, const unsigned char* table, std::uint64_t tableBytes,
                    std::uint32_t count);

}  // namespace prism
