// Profile files for POSIX: the INI rules of GetPrivateProfileStringA and
// GetPrivateProfileIntA.  Sections and keys match without regard to case,
// the first match wins, values are trimmed and lose one pair of quotes.
#include "platform/platform.h"

#include <cctype>
#include <cstring>
#include <fstream>
#include <string>

namespace plat {
namespace {

std::string Trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

bool SameNoCase(const std::string& a, const char* b) {
    size_t n = std::strlen(b);
    if (a.size() != n) return false;
    for (size_t i = 0; i < n; ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// Finds the value of a key; false when the file, section or key is missing.
bool Lookup(const char* section, const char* key, const char* fileName, std::string* value) {
    if (!section || !key || !fileName) return false;
    std::ifstream in(fileName, std::ios::binary);
    if (!in) return false;
    std::string want = Trim(section);
    std::string wantKey = Trim(key);
    bool inSection = false;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::string t = Trim(line);
        if (t.empty() || t[0] == ';') continue;
        if (t[0] == '[') {
            size_t close = t.find(']');
            std::string name = Trim(t.substr(1, close == std::string::npos ? std::string::npos : close - 1));
            inSection = SameNoCase(name, want.c_str());
            continue;
        }
        if (!inSection) continue;
        size_t eq = t.find('=');
        std::string k = Trim(eq == std::string::npos ? t : t.substr(0, eq));
        if (!SameNoCase(k, wantKey.c_str())) continue;
        std::string v = eq == std::string::npos ? std::string() : Trim(t.substr(eq + 1));
        if (v.size() >= 2 && (v[0] == '"' || v[0] == '\'') && v.back() == v[0]) v = v.substr(1, v.size() - 2);
        *value = v;
        return true;
    }
    return false;
}

}  // namespace

unsigned ProfileString(const char* section, const char* key, const char* fallback, char* buffer,
                       unsigned size, const char* fileName) {
    if (!buffer || size == 0) return 0;
    std::string value;
    if (!Lookup(section, key, fileName, &value)) value = Trim(fallback ? fallback : "");
    size_t n = value.size() < size - 1 ? value.size() : size - 1;
    std::memcpy(buffer, value.data(), n);
    buffer[n] = 0;
    return static_cast<unsigned>(n);
}

int ProfileInt(const char* section, const char* key, int fallback, const char* fileName) {
    std::string value;
    if (!Lookup(section, key, fileName, &value) || value.empty()) return fallback;
    // Leading sign, then digits in base 10, or 16, 8, 2 after 0x, 0o, 0b;
    // parsing stops at the first character that is no digit.
    const char* p = value.c_str();
    bool negative = false;
    if (*p == '+' || *p == '-') negative = (*p++ == '-');
    unsigned base = 10;
    if (p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) base = 16, p += 2;
    else if (p[0] == '0' && (p[1] == 'o' || p[1] == 'O')) base = 8, p += 2;
    else if (p[0] == '0' && (p[1] == 'b' || p[1] == 'B')) base = 2, p += 2;
    std::uint32_t result = 0;
    for (; *p; ++p) {
        unsigned d;
        if (*p >= '0' && *p <= '9') d = static_cast<unsigned>(*p - '0');
        else if (*p >= 'a' && *p <= 'z') d = static_cast<unsigned>(*p - 'a' + 10);
        else if (*p >= 'A' && *p <= 'Z') d = static_cast<unsigned>(*p - 'A' + 10);
        else break;
        if (d >= base) break;
        result = result * base + d;  // wraps modulo 2^32, as the system's parse does
    }
    if (negative) result = 0u - result;
    return static_cast<int>(result);
}

}  // namespace plat
