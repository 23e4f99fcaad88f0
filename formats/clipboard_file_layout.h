// Clipboard files byte by byte: the file header, the directory of 89-byte
// format entries, reading one rendering's data, and the header a writer
// puts in front of a packed DIB.  Portable.
#pragma once

#include "platform/platform.h"

#include <cstdint>

namespace prism {

constexpr std::uint16_t kClipboardFileId = 0xC350;  // 50000
constexpr long kClipboardEntryBytes = 89;
// File header and one entry: where a written file's data starts.
constexpr long kClipboardDataOffset = 4 + kClipboardEntryBytes;

struct ClipboardEntry {
    std::uint16_t format = 0;
    std::uint32_t length = 0;
    std::uint32_t offset = 0;
};

// Walks the directory of an open clipboard file for the first entry of
// `format`.  Returns 0 with *entry filled, or the code of the failure: 9
// for a wrong identifier, 14 for no entries or none of that format.  A
// directory that ends early ends the walk.
int FindClipboardEntry(HFILE file, std::uint16_t format, ClipboardEntry* entry);

// Reads `bytes` bytes of the entry's data, from its offset, into a new
// unlocked block.  0 with code 1 when no block can be had, code 4 on a short
// read.
HGLOBAL ReadClipboardData(HFILE file, std::uint32_t offset, std::uint32_t bytes);

// The 93 bytes in front of a written DIB: identifier, one entry of format
// 8 (CF_DIB) holding `length` bytes at offset 93, its name bytes zero.
void MakeClipboardFileHeader(unsigned char out[kClipboardDataOffset], std::uint32_t length);

}  // namespace prism
