// Helpers for the fuzz targets.
#include "support.h"

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

void Free(HGLOBAL block) {
    if (block) GlobalFree(block);
}

}  // namespace fuzz
