// Shared helpers of the prism program.
#include "cli.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace cli {

namespace {
std::vector<Command>& Table() {
    static std::vector<Command> table;
    return table;
}
}  // namespace

bool Register(const Command& command) {
    Table().push_back(command);
    return true;
}

const std::vector<Command>& Commands() { return Table(); }

namespace {
std::string& CurrentFileSlot() {
    static std::string path;
    return path;
}
}  // namespace

const std::string& CurrentFile() { return CurrentFileSlot(); }
void SetCurrentFile(const std::string& path) { CurrentFileSlot() = path; }

int Fail(const std::string& message) {
    const std::string& file = CurrentFile();
    if (!file.empty() && message.find(file) == std::string::npos)
        std::fprintf(stderr, "prism: %s: %s\n", file.c_str(), message.c_str());
    else
        std::fprintf(stderr, "prism: %s\n", message.c_str());
    return kFailed;
}

int Usage(const Command& command) {
    std::fprintf(stderr, "usage: prism %s %s\n", command.name, command.usage);
    return kUsage;
}

int Usage(const char* name) {
    for (const Command& c : Commands())
        if (std::strcmp(c.name, name) == 0) return Usage(c);
    return kUsage;
}

std::string LibraryError() {
    char text[64] = {};
    ImgErrorString(text, ImgError());
    if (!text[0]) return "error " + std::to_string(ImgError());
    return text;
}

HDIB LoadImageFile(const std::string& path) {
    SetCurrentFile(path);
    SetImgError(0);
    HDIB dib = LoadDIBFromFile(path.c_str());
    if (!dib) Fail(path + ": " + LibraryError());
    return dib;
}

bool SaveImageFile(const std::string& path, HDIB dib) {
    if (SaveDIB(path.c_str(), dib)) return true;
    Fail(path + ": " + LibraryError());
    return false;
}

bool ParseInt(const std::string& text, int* value) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    long v = std::strtol(text.c_str(), &end, 10);
    if (errno || *end || v < INT_MIN || v > INT_MAX) return false;
    *value = static_cast<int>(v);
    return true;
}

std::string Describe(HDIB dib) {
    if (!dib) return "no image";
    const void* p = GlobalLock(dib);
    if (!p) return "unreadable image";
    SIZE_T size = GlobalSize(dib);
    BITMAPINFOHEADER h = {};
    std::memcpy(&h, p, size < sizeof(h) ? size : sizeof(h));
    GlobalUnlock(dib);
    unsigned colors = h.biClrUsed;
    if (!colors && h.biBitCount <= 8) colors = 1u << h.biBitCount;
    const char* compression = h.biCompression == 0   ? "none"
                              : h.biCompression == 1 ? "RLE8"
                              : h.biCompression == 2 ? "RLE4"
                                                     : "other";
    char table[32] = "no colour table";
    if (colors) std::snprintf(table, sizeof(table), "%u colour%s", colors, colors == 1 ? "" : "s");
    char line[160];
    std::snprintf(line, sizeof(line), "%ld x %ld, %u bit%s, %s, compression %s", static_cast<long>(h.biWidth),
                  static_cast<long>(h.biHeight), h.biBitCount, h.biBitCount == 1 ? "" : "s", table, compression);
    return line;
}

}  // namespace cli
