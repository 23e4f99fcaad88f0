// Files by handle for POSIX: descriptors with the semantics of OpenFile,
// _lread, _lwrite, _llseek and _lclose.
#include "platform/platform.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plat {

HFILE FileOpen(const char* name, unsigned style) {
    if (!name || !*name) return kBadFile;
    if (style & kOpenExist) return FileExists(name) ? 0 : kBadFile;
    int flags;
    switch (style & 3) {
        case kOpenWrite: flags = O_WRONLY; break;
        case kOpenReadWrite: flags = O_RDWR; break;
        default: flags = O_RDONLY; break;
    }
    if (style & kOpenCreate) flags |= O_CREAT | O_TRUNC;
    int fd;
    do {
        fd = ::open(name, flags | O_CLOEXEC, 0644);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) return kBadFile;
    struct stat st;
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        ::close(fd);
        return kBadFile;
    }
    return fd;
}

long FileRead(HFILE file, void* buffer, long count) {
    if (file < 0 || count < 0) return -1;
    char* p = static_cast<char*>(buffer);
    long total = 0;
    // Read until the count is met or the file ends, as _hread does.
    while (total < count) {
        ssize_t n = ::read(file, p + total, static_cast<size_t>(count - total));
        if (n < 0) {
            if (errno == EINTR) continue;
            return total ? total : -1;
        }
        if (n == 0) break;
        total += n;
    }
    return total;
}

long FileWrite(HFILE file, const void* buffer, long count) {
    if (file < 0 || count < 0) return -1;
    if (count == 0) {
        // _lwrite with no bytes cuts the file at the current position.
        off_t here = ::lseek(file, 0, SEEK_CUR);
        if (here < 0 || ::ftruncate(file, here) != 0) return -1;
        return 0;
    }
    const char* p = static_cast<const char*>(buffer);
    long total = 0;
    while (total < count) {
        ssize_t n = ::write(file, p + total, static_cast<size_t>(count - total));
        if (n < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        total += n;
    }
    return total;
}

long FileSeek(HFILE file, long offset, int origin) {
    if (file < 0) return -1;
    int whence = origin == kSeekCur ? SEEK_CUR : origin == kSeekEnd ? SEEK_END : SEEK_SET;
    off_t pos = ::lseek(file, offset, whence);
    if (pos < 0 || pos > LONG_MAX) return -1;
    return static_cast<long>(pos);
}

int FileClose(HFILE file) {
    if (file < 0) return -1;
    return ::close(file) == 0 ? 0 : -1;
}

bool FileExists(const char* name) {
    struct stat st;
    return name && *name && ::stat(name, &st) == 0 && S_ISREG(st.st_mode);
}

}  // namespace plat
