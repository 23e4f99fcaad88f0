// Helpers shared by the tests: images built byte by byte (independently of
// the library's own helpers), pictures as pixel grids, calls that hand back
// a result's bytes, scratch files, and observers for message boxes.
#pragma once

#include "prism32.h"
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace testing_support {

using Bytes = std::vector<unsigned char>;

// Stride of a stored row.
size_t Stride(int width, int bitCount);

inline std::uint32_t Get32(const Bytes& b, size_t at) {
    std::uint32_t v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}
inline void Put32(Bytes& b, size_t at, std::uint32_t v) { std::memcpy(b.data() + at, &v, 4); }
// A copy with the 32-bit field at `at` set to v; a copy cut to n bytes.
inline Bytes With(Bytes b, size_t at, std::uint32_t v) { return Put32(b, at, v), b; }
inline Bytes Cut(Bytes b, size_t n) { return b.resize(n), b; }
// A copy less its last n bytes.
inline Bytes Short(Bytes b, size_t n) { return b.resize(b.size() - n), b; }
// The bytes of a, then those of b.
inline Bytes operator+(Bytes a, const Bytes& b) { return a.insert(a.end(), b.begin(), b.end()), a; }
// A signed 32-bit header field: 4 width, 8 height, 20 biSizeImage, 32 biClrUsed.
inline int Field(const Bytes& b, size_t at) { return static_cast<std::int32_t>(Get32(b, at)); }
// FNV-1a over all bytes: pins a whole result in one number.
std::uint64_t Hash(const Bytes& b);

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

// Packed DIB bytes: a table of distinct colours (entry i is blue 3i+1,
// green 5i+2, red 255-i) and pixels from `pixel` (x, y counted from the
// top) or a fixed pattern when no function is given.
using PixelFn = std::function<unsigned(int x, int y)>;
Bytes PackedDib(const DibShape& shape, const PixelFn& pixel = nullptr);
inline Bytes Image(int w, int h, int bits, const PixelFn& pixel = nullptr, int colors = -1, std::uint32_t clrUsed = 0) {
    return PackedDib({w, h, bits, colors, clrUsed}, pixel);
}
// With a grey table: entry k = k * 255 / (n - 1).
Bytes GreyImage(int w, int h, int bits, const PixelFn& pixel);
// A varied pattern: an index at 8 bits and below, three mixed channels at 24.
inline unsigned Pattern(int x, int y) {
    const unsigned v = static_cast<unsigned>(x * 7 + y * 11 + (x * y) % 5);
    return v | (v * 29u + 3) << 8 | (v * 53u + 7) << 16;
}
// Every pixel of one value.
inline Bytes Uniform(int width, int height, int bitCount, unsigned value) {
    return Image(width, height, bitCount, [=](int, int) { return value; });
}
// A BMP file: 14-byte file header in front of the packed DIB.  offBits
// of -1 means the usual offset behind the colour table.
Bytes BmpFile(const Bytes& packed, long offBits = -1);
// Offset of the first pixel byte of a 40-byte-header DIB.
size_t BitsOffset(const Bytes& dib);

// Pixel value at (x, y), y counted from the bottom as stored.  For 24-bit
// images the value is 0xRRGGBB.
unsigned PixelAt(const Bytes& packedDib, int x, int y);

// A picture as a plain pixel grid, turned into DIB bytes without the
// library's help.
struct Picture {
    int width = 0, height = 0, bits = 8;
    std::vector<unsigned> px;  // row y (stored order, bottom first) at y * width
    Picture() = default;
    Picture(int w, int h, int b) : width(w), height(h), bits(b), px(static_cast<size_t>(w) * h, 0) {}
    unsigned& at(int x, int y) { return px[static_cast<size_t>(y) * width + x]; }
    unsigned at(int x, int y) const { return px[static_cast<size_t>(y) * width + x]; }
};
// A fixed, varied picture: a small mixing function, different per depth.
Picture Varied(int w, int h, int bits);
// DIB bytes of a picture (40-byte header, table by depth, zero padding).
Bytes ToDib(const Picture& p);

// Copies bytes into a new movable block (flags 66).
HGLOBAL BlockFrom(const Bytes& bytes);
// The whole contents of a block.
Bytes BlockBytes(HGLOBAL block);
// The bytes of a result block, freed; empty for no result.
Bytes Take(HDIB dib);

// Whether a block stands locked: a lock taken and given back tells.
inline bool Locked(HGLOBAL block) { return GlobalLock(block), GlobalUnlock(block) != 0; }

// Runs an export on bytes and gives back the result's bytes (empty for a
// 0 result); the input block is checked to be unchanged and freed.  With
// `locks` 0 the export must leave the input unlocked; with more, locked,
// and that many locks are taken off before it is freed.
using DibOp = HDIB(WINAPI*)(HDIB);
Bytes Call(const std::function<HDIB(HGLOBAL)>& op, const Bytes& in, int locks = -1);

// RotateDIB and SkewDIB: the result's bytes, the error word (-7 if never
// written) and the corners.  The source is locked once before the call: a
// success must leave one more lock, a failure none, the result none.
struct Moved {
    Bytes result;
    int error = -7;
    int corners[8] = {};
};
using MoveOp = HDIB(WINAPI*)(HDIB, int, int, int*, int*);
Moved Move(MoveOp op, const Bytes& source, int a, int b);

// Runs filter(dib, copy, &error) on a copy and in place: both must agree,
// and a copy or a refusal leaves the source alone.
template <class Filter>
Bytes CopyAndInPlace(const Bytes& src, Filter filter, int* errorOut) {
    HDIB dib = BlockFrom(src);
    int error = -1, inPlaceError = -1;
    Bytes copy = Take(filter(dib, 1, &error));
    EXPECT_EQ(BlockBytes(dib), src);
    EXPECT_EQ(filter(dib, 0, &inPlaceError), copy.empty() ? nullptr : dib);
    EXPECT_EQ(inPlaceError, error);
    EXPECT_EQ(BlockBytes(dib), copy.empty() ? src : copy);
    GlobalFree(dib);
    if (errorOut) *errorOut = error;
    return copy;
}

Bytes ReadFile(const std::string& path);
void WriteFile(const std::string& path, const Bytes& bytes);

// A file in the test's working directory, removed at the end of the scope.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& stem);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    const char* path() const { return path_.c_str(); }
    void Write(const Bytes& bytes) const { WriteFile(path_, bytes); }
    Bytes Read() const { return ReadFile(path_); }

private:
    std::string path_;
};


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
