// An open file for the length of a scope.
#pragma once

#include "platform/platform.h"

namespace prism {

// Opens with an OpenFile style and closes on every way out.
class FileHolder {
public:
    FileHolder(const char* name, unsigned style) : file_(plat::FileOpen(name, style)) {}
    ~FileHolder() { Close(); }
    FileHolder(const FileHolder&) = delete;
    FileHolder& operator=(const FileHolder&) = delete;
    explicit operator bool() const { return file_ != plat::kBadFile; }
    HFILE get() const { return file_; }
    void Close() {
        if (file_ != plat::kBadFile) plat::FileClose(file_);
        file_ = plat::kBadFile;
    }

private:
    HFILE file_;
};

}  // namespace prism
