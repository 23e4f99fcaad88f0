// Helpers for the fuzz targets: fuzzed bytes as an open file or a path.
#pragma once

#include "prism32.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

// An anonymous in-memory file holding the bytes, open for reading at 0.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, size_t size);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    HFILE handle() const { return fd_; }
    // Replaces the contents and goes back to the start.
    void Rewrite(const void* data, size_t size);
    // A path that opens the same bytes again.
    const std::string& path() const { return path_; }

private:
    int fd_ = -1;
    std::string path_;
};

// Headers that claim more than this many pixel bytes only measure the
// allocator; the targets pass such inputs over (the reader handles them).
constexpr std::uint64_t kMaxClaim = 64u << 20;
// Pixel bytes a BMP or packed DIB's header claims (0 when it is none).
std::uint64_t ClaimedPixelBytes(const std::uint8_t* data, size_t size);

// A new movable block holding the bytes (0 when none can be made).
HGLOBAL BlockFrom(const void* data, size_t size);

// Frees a block if it is one.
void Free(HGLOBAL block);

}  // namespace fuzz
