// Helpers of the format tests: the call log the stand-in codec modules
// write, hiding a module for a while, and files under exact names.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace formats_test {

using testing_support::Bytes;

// The stand-ins' "MODULE|what|arg|..." lines; made afresh per CallLog.
class CallLog {
public:
    CallLog() { Clear(); }
    ~CallLog() { Clear(); }
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::ifstream in(kPath, std::ios::binary);
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    void Clear() const { std::remove(kPath); }

private:
    static constexpr const char* kPath = "codec-calls.log";
};

// Pointers as the stand-ins write them.
inline std::string Hex(const void* pointer) {
    if (!pointer) return "null";
    std::string text = "0x";
    for (int i = static_cast<int>(2 * sizeof(void*)) - 1; i >= 0; --i)
        text += "0123456789abcdef"[(reinterpret_cast<std::uintptr_t>(pointer) >> (4 * i)) & 15];
    return text;
}

// A file under an exact name in the working directory, removed at the end.
struct NamedFile {
    NamedFile(const std::string& file, const Bytes& bytes) : name(file) { testing_support::WriteFile(name, bytes); }
    ~NamedFile() { std::remove(name.c_str()); }
    const char* path() const { return name.c_str(); }
    const std::string name;
};

// Renames a stand-in module's file away for the life of the object.
struct HiddenModule {
    explicit HiddenModule(const std::string& module)
        : name(module), moved(std::rename(name.c_str(), (name + ".hidden").c_str()) == 0) {}
    ~HiddenModule() {
        if (moved) std::rename((name + ".hidden").c_str(), name.c_str());
    }
    const std::string name;
    const bool moved;
};

inline Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }

}  // namespace formats_test
