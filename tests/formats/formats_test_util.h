// Helpers of the format tests: the call log the stand-in codec modules
// write, hiding a module for a while, and small files.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace formats_test {

using testing_support::Bytes;

// The stand-ins append "MODULE|what|arg|..." lines to this file in the
// working directory.  Constructing a CallLog starts it afresh.
class CallLog {
public:
    CallLog() { std::remove(kPath); }
    ~CallLog() { std::remove(kPath); }
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::FILE* f = std::fopen(kPath, "rb");
        if (!f) return lines;
        std::string line;
        for (int c; (c = std::fgetc(f)) != EOF;) {
            if (c == '\n') {
                lines.push_back(line);
                line.clear();
            } else {
                line += static_cast<char>(c);
            }
        }
        std::fclose(f);
        return lines;
    }
    void Clear() const { std::remove(kPath); }

private:
    static constexpr const char* kPath = "codec-calls.log";
};

// Pointers as the stand-ins write them.
inline std::string Hex(const void* pointer) {
    if (!pointer) return "null";
    std::uintptr_t value = reinterpret_cast<std::uintptr_t>(pointer);
    std::string text = "0x";
    for (int i = static_cast<int>(2 * sizeof(void*)) - 1; i >= 0; --i)
        text += "0123456789abcdef"[(value >> (4 * i)) & 15];
    return text;
}

// Renames a stand-in module's file away for the life of the object.
class HiddenModule {
public:
    explicit HiddenModule(const std::string& name) : name_(name), hidden_(name + ".hidden") {
        moved_ = std::rename(name_.c_str(), hidden_.c_str()) == 0;
    }
    ~HiddenModule() {
        if (moved_) std::rename(hidden_.c_str(), name_.c_str());
    }
    bool moved() const { return moved_; }

private:
    std::string name_, hidden_;
    bool moved_ = false;
};

// A file under an exact name in the working directory, removed at the end.
class NamedFile {
public:
    NamedFile(const std::string& name, const Bytes& bytes) : name_(name) {
        testing_support::WriteFile(name_, bytes);
    }
    ~NamedFile() { std::remove(name_.c_str()); }
    NamedFile(const NamedFile&) = delete;
    NamedFile& operator=(const NamedFile&) = delete;
    const char* path() const { return name_.c_str(); }

private:
    std::string name_;
};

inline Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }

inline std::string FullPath(const char* path) { return std::filesystem::absolute(path).string(); }

}  // namespace formats_test
