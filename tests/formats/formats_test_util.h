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

inline Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }

// The stand-ins' "MODULE|what|arg|..." lines; made afresh per CallLog.
struct CallLog {
    CallLog() { std::remove(kPath); }
    ~CallLog() { std::remove(kPath); }
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::ifstream in(kPath, std::ios::binary);
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    static constexpr const char* kPath = "codec-calls.log";
};

// Pointers as the stand-ins write them: 0x and all their hex digits.
inline std::string Hex(const void* pointer) {
    char text[2 * sizeof(void*) + 3];
    std::snprintf(text, sizeof text, "0x%0*llx", int(2 * sizeof(void*)), static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
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
    explicit HiddenModule(const std::string& m) : name(m), moved(std::rename(m.c_str(), (m + ".hidden").c_str()) == 0) {}
    ~HiddenModule() { moved && std::rename((name + ".hidden").c_str(), name.c_str()); }
    const std::string name;
    const bool moved;
};

}  // namespace formats_test
