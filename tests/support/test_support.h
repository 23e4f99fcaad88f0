// Helpers shared by the tests: images built byte by byte (independently of
// the library's own helpers), scratch files, and observers for message
// boxes.
#pragma once

#include "prism32.h"
#include "platform/platform.h"

#include <cstdint>
#include <string>
#include <vector>

namespace testing_support {

using Bytes = std::vector<unsigned char>;

// Stride of a stored row.
size_t Stride(int width, int bitCount);

// A DIB held in plain memory: header, colour table, rows bottom first.
struct DibShape {
    int width = 1;
    int height = 1;
    int bitCount = 8;
    int colors = -1;           // table entries; -1: by depth (0 at 24 bits)
    std::uint32_t clrUsed = 0; // value written to biClrUsed
    std::uint32_t sizeImage = 0;
    bool coreHeader = false;   // 12-byte header with 3-byte table entries
};

// Packed DIB bytes: a table of distinct colours and pixels from `pixel`
// (x, y counted from the top) or a fixed pattern when no function is given.
Bytes PackedDib(const DibShape& shape, unsigned (*pixel)(int x, int y) = nullptr);
// A BMP file: 14-byte file header in front of the packed DIB.  offBits
// of -1 means the usual offset behind the colour table.
Bytes BmpFile(const Bytes& packed, long offBits = -1);

// Copies bytes into a new movable block (flags 66).
HGLOBAL BlockFrom(const Bytes& bytes);
// The whole contents of a block.
Bytes BlockBytes(HGLOBAL block);

// Pixel value at (x, y), y counted from the bottom as stored.  For 24-bit
// images the value is 0xRRGGBB.
unsigned PixelAt(const Bytes& packedDib, int x, int y);

// A file in the test's working directory, removed at the end of the scope.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& stem);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    const char* path() const { return path_.c_str(); }
    void Write(const Bytes& bytes) const;
    Bytes Read() const;

private:
    std::string path_;
};

Bytes ReadFile(const std::string& path);
void WriteFile(const std::string& path, const Bytes& bytes);

// Records every message box for the life of the object; nothing is shown.
class MessageRecorder {
public:
    struct Message {
        std::string text;
        std::string caption;
        unsigned style;
    };
    MessageRecorder();
    ~MessageRecorder();
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;
    const std::vector<Message>& messages() const { return messages_; }

private:
    static int Record(const char* text, const char* caption, unsigned style, void* self);
    std::vector<Message> messages_;
    plat::MessageObserver previous_;
};

}  // namespace testing_support
