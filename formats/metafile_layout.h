// Metafile files byte by byte: the 22-byte placeable header, the body read
// into a block, and the picture sizes of the clipboard's metafile records.
// Portable: nothing here needs a graphics system.
#pragma once

#include "core/numeric.h"

#include "platform/platform.h"

#include <cstdint>

namespace prism {

constexpr std::uint32_t kPlaceableKey = 0x9AC6CDD7u;
constexpr long kPlaceableBytes = 22;
constexpr long kMetaHeaderBytes = 18;


// The placeable header a writer puts in front of a recording of a picture
// of width by height pixels made on a device of resX by resY dots per
// inch: units per inch (resX + resY) / 2 at most 1440, right and bottom the
// size in those units, and the checksum of the ten words before it.
void MakePlaceableHeader(unsigned char out[kPlaceableBytes], std::int32_t width, std::int32_t height,
                         int resX, int resY);
// XOR of the ten 16-bit words in front of the checksum.
std::uint16_t PlaceableChecksum(const unsigned char* header);

// The body of a metafile file, as the reader hands it to the platform.
struct MetaFileBody {
    HGLOBAL bits = nullptr;  // unlocked block holding `bytes` bytes of records
    long bytes = 0;
};

// Reads a metafile file with or without a placeable header.  With the key
// there, width, height and units are set from it; without, they stay as
// the caller set them.  0 in body->bits on failure: no code when the file
// cannot be opened, code 4 when it is too short or its body reads nothing,
// code 1 when memory is short.
bool ReadMetaFileBody(const char* fileName, int* width, int* height, int* units, MetaFileBody* body);

// Do the records of a metafile body lie inside its `bytes` bytes: the
// size in its header no more than that, and each record (at least 3 words)
// inside that size, up to the end-of-file record?  The platform walks them
// unchecked, so a body that fails this is refused as the platform would
// refuse bits it cannot take.
bool MetaRecordsFit(const unsigned char* bits, std::uint64_t bytes);

// Pixels of `extent` units at `resolution` dots per inch and `units` units
// per inch, truncated; a unit of 0 gives 0.
int PixelsOfExtent(int extent, double resolution, int units);

// Size of a clipboard file's picture record (mapping mode, extents) on a
// display of rx by ry dots per inch: twips are multiplied by 20, and modes
// outside 1..8 or isotropic and anisotropic pictures without a size give 5
// inches.
void ClipboardFilePictureSize(std::int32_t mm, std::int32_t xExt, std::int32_t yExt, double rx, double ry,
                              int* width, int* height);
// Size of the clipboard's own picture record: millimetres are taken as 24.5
// to the inch, and a mode or extent that gives no size keeps the defaults
// already in *width and *height.
void ClipboardPictureSize(std::int32_t mm, std::int32_t xExt, std::int32_t yExt, double resolution,
                          int* width, int* height);

}  // namespace prism
