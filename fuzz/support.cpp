// Helpers for the fuzz targets.
#include "support.h"

#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

MemoryFile::MemoryFile(const std::uint8_t* data, size_t size) {
    fd_ = ::memfd_create("prism-fuzz", MFD_CLOEXEC);
    if (fd_ < 0) return;
    path_ = "/proc/self/fd/" + std::to_string(fd_);
    Rewrite(data, size);
}

void MemoryFile::Rewrite(const void* data, size_t size) {
    if (fd_ < 0) return;
    if (::ftruncate(fd_, 0) != 0) return;
    ::lseek(fd_, 0, SEEK_SET);
    const char* p = static_cast<const char*>(data);
    size_t done = 0;
    while (done < size) {
        ssize_t n = ::write(fd_, p + done, size - done);
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
    ::lseek(fd_, 0, SEEK_SET);
}

MemoryFile::~MemoryFile() {
    if (fd_ >= 0) ::close(fd_);
}

std::uint64_t ClaimedPixelBytes(const std::uint8_t* data, size_t size) {
    size_t at = size >= 2 && data[0] == 'B' && data[1] == 'M' ? 14 : 0;
    if (size < at + 40) return 0;
    std::uint32_t headerSize, sizeImage = 0;
    std::int32_t width, height;
    std::uint16_t bits;
    std::memcpy(&headerSize, data + at, 4);
    if (headerSize == 40) {
        std::memcpy(&width, data + at + 4, 4);
        std::memcpy(&height, data + at + 8, 4);
        std::memcpy(&bits, data + at + 14, 2);
        std::memcpy(&sizeImage, data + at + 20, 4);
    } else {
        std::uint16_t w16, h16;
        std::memcpy(&w16, data + at + 4, 2);
        std::memcpy(&h16, data + at + 6, 2);
        std::memcpy(&bits, data + at + 10, 2);
        width = w16;
        height = h16;
    }
    if (sizeImage) return sizeImage;
    if (width < 0 || height < 0) return 0;
    return (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4 * static_cast<std::uint64_t>(height);
}

HGLOBAL BlockFrom(const void* data, size_t size) {
    HGLOBAL block = GlobalAlloc(GHND, size);
    if (!block) return nullptr;
    void* p = GlobalLock(block);
    if (p && size) std::memcpy(p, data, size);
    GlobalUnlock(block);
    return block;
}

void Free(HGLOBAL block) {
    if (block) GlobalFree(block);
}

}  // namespace fuzz
