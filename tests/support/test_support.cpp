// Helpers shared by the tests.
#include "support/test_support.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace testing_support {

size_t Stride(int width, int bitCount) {
    return (static_cast<size_t>(width) * static_cast<size_t>(bitCount) + 31) / 32 * 4;
}

namespace {
// Writes a pixel at an absolute bit position, the first pixel of a byte in
// its high bits; 24-bit values as blue, green, red.
void PutBits(unsigned char* area, std::uint64_t bitPos, int bits, unsigned v) {
    if (bits == 24) {
        for (int k = 0; k < 3; ++k) area[bitPos / 8 + k] = static_cast<unsigned char>(v >> (8 * k));
        return;
    }
    for (int k = 0; k < bits; ++k) {
        const std::uint64_t b = bitPos + k;
        const unsigned char mask = static_cast<unsigned char>(0x80 >> (b % 8));
        area[b / 8] = static_cast<unsigned char>((v >> (bits - 1 - k)) & 1 ? area[b / 8] | mask : area[b / 8] & ~mask);
    }
}
}  // namespace

Bytes PackedDib(const DibShape& s, const PixelFn& pixel) {
    const int colors = s.colors >= 0 ? s.colors : s.bitCount <= 8 ? 1 << s.bitCount : 0;
    const size_t head = s.coreHeader ? 12 : 40, entry = s.coreHeader ? 3 : 4, stride = Stride(s.width, s.bitCount);
    Bytes b(head + colors * entry + stride * s.height, 0);
    const std::uint32_t w = static_cast<std::uint32_t>(s.width), h = static_cast<std::uint32_t>(s.height);
    const std::uint32_t depth = 1 | static_cast<std::uint32_t>(s.bitCount) << 16;  // planes, then the depth
    const std::uint32_t core[] = {12, (w & 0xFFFF) | h << 16, depth};
    const std::uint32_t info[] = {40, w, h, depth, 0, s.sizeImage, 2835, 2835, s.clrUsed, 0};
    std::memcpy(b.data(), s.coreHeader ? core : info, head);
    for (int i = 0; i < colors; ++i) {
        const unsigned char bgr[] = {static_cast<unsigned char>(i * 3 + 1), static_cast<unsigned char>(i * 5 + 2),
                                     static_cast<unsigned char>(255 - i)};
        std::memcpy(&b[head + i * entry], bgr, 3);
    }
    unsigned char* bits = b.data() + head + colors * entry;
    const unsigned mask = s.bitCount >= 24 ? 0xFFFFFFu : (1u << s.bitCount) - 1;
    for (int y = 0; y < s.height; ++y)  // y from the top: the bottom row is stored first
        for (int x = 0; x < s.width && (s.bitCount == 1 || s.bitCount == 4 || s.bitCount == 8 || s.bitCount == 24); ++x)
            PutBits(bits + stride * (s.height - 1 - y), std::uint64_t(x) * s.bitCount, s.bitCount,
                    (pixel ? pixel(x, y) : static_cast<unsigned>(x * 7 + y * 13 + 5)) & mask);
    return b;
}

Bytes GreyImage(int w, int h, int bits, const PixelFn& pixel) {
    Bytes b = Image(w, h, bits, pixel);
    for (int k = 0, n = bits <= 8 ? 1 << bits : 0; k < n; ++k) std::memset(&b[40 + 4 * k], k * 255 / (n - 1), 3);
    return b;
}

namespace {
// Entries of the colour table: biClrUsed when set (40-byte headers), else by depth.
size_t Colors(const Bytes& dib) {
    const bool info = Get32(dib, 0) == 40;
    const unsigned bits = info ? dib[14] | dib[15] << 8 : dib[10] | dib[11] << 8;
    return info && Get32(dib, 32) ? Get32(dib, 32) : bits <= 8 ? size_t(1) << bits : 0;
}
}  // namespace

Bytes BmpFile(const Bytes& packed, long offBits) {
    Bytes file(14 + packed.size(), 0);
    file[0] = 'B';
    file[1] = 'M';
    Put32(file, 2, static_cast<std::uint32_t>(packed.size() + 14));
    const std::uint32_t size = Get32(packed, 0);
    if (offBits < 0) offBits = static_cast<long>(14 + size + Colors(packed) * (size == 40 ? 4 : 3));
    Put32(file, 10, static_cast<std::uint32_t>(offBits));
    if (!packed.empty()) std::memcpy(file.data() + 14, packed.data(), packed.size());
    return file;
}

std::uint64_t Hash(const Bytes& b) {
    std::uint64_t h = 14695981039346656037ull;
    for (unsigned char c : b) h = (h ^ c) * 1099511628211ull;
    return h;
}

size_t BitsOffset(const Bytes& dib) { return 40 + Colors(dib) * 4; }

Picture Varied(int w, int h, int bits) {
    Picture p(w, h, bits);
    const unsigned mask = bits >= 24 ? 0xFFFFFFu : (1u << bits) - 1;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            std::uint32_t v = static_cast<std::uint32_t>(x * 73856093u) ^ static_cast<std::uint32_t>(y * 19349663u) ^
                              static_cast<std::uint32_t>(bits * 83492791u);
            v ^= v >> 13;
            v *= 0x5bd1e995u;
            p.at(x, y) = (v ^ (v >> 15)) & mask;
        }
    return p;
}

Bytes ToDib(const Picture& p) {
    return Image(p.width, p.height, p.bits, [&p](int x, int y) { return p.at(x, p.height - 1 - y); });
}

Bytes Take(HDIB dib) {
    if (!dib) return Bytes();
    Bytes b = BlockBytes(dib);
    GlobalFree(dib);
    return b;
}

Bytes Call(const std::function<HDIB(HGLOBAL)>& op, const Bytes& in, int locks) {
    HGLOBAL block = BlockFrom(in);
    Bytes result = Take(op(block));
    if (locks >= 0) { EXPECT_EQ(Locked(block), locks > 0) << "locks left on the input"; }
    for (; locks > 0; --locks) GlobalUnlock(block);
    EXPECT_TRUE(BlockBytes(block) == in) << "the input block was changed";
    GlobalFree(block);
    return result;
}

Moved Move(MoveOp op, const Bytes& source, int a, int b) {
    Moved m;
    HGLOBAL src = BlockFrom(source);
    EXPECT_NE(GlobalLock(src), nullptr);
    if (HDIB out = op(src, a, b, &m.error, m.corners)) {
        EXPECT_TRUE(GlobalUnlock(src)) << "a success leaves one lock on the source";
        EXPECT_FALSE(GlobalUnlock(out)) << "the result comes back unlocked";
        m.result = Take(out);
    }
    EXPECT_FALSE(GlobalUnlock(src)) << "no lock left behind";
    GlobalFree(src);
    return m;
}

HGLOBAL BlockFrom(const Bytes& bytes) {
    HGLOBAL block = GlobalAlloc(GHND, bytes.size());
    if (!block) return nullptr;
    void* p = GlobalLock(block);
    if (p && !bytes.empty()) std::memcpy(p, bytes.data(), bytes.size());
    GlobalUnlock(block);
    return block;
}

Bytes BlockBytes(HGLOBAL block) {
    SIZE_T size = GlobalSize(block);
    const unsigned char* p = static_cast<const unsigned char*>(GlobalLock(block));
    if (!p) return {};
    Bytes b(p, p + size);
    GlobalUnlock(block);
    return b;
}

unsigned PixelAt(const Bytes& dib, int x, int y) {
    const bool info = Get32(dib, 0) == 40;
    const int width = info ? Field(dib, 4) : dib[4] | dib[5] << 8, bitCount = dib[info ? 14 : 10];
    const unsigned char* row = dib.data() + (info ? 40 + Colors(dib) * 4 : 12 + Colors(dib) * 3) + Stride(width, bitCount) * y;
    if (bitCount == 24) return row[x * 3] | row[x * 3 + 1] << 8 | row[x * 3 + 2] << 16;
    const unsigned bitPos = unsigned(x) * bitCount;  // 1, 4 and 8 bits: the first pixel in the high bits
    return (row[bitPos / 8] >> (8 - bitCount - bitPos % 8)) & ((1u << bitCount) - 1);
}

ScratchFile::ScratchFile(const std::string& stem) {
    static std::atomic<int> counter{0};
    path_ = "scratch-" + stem + "-" + std::to_string(++counter) + ".tmp";
    std::remove(path_.c_str());
}

ScratchFile::~ScratchFile() { std::remove(path_.c_str()); }


Bytes ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFile(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

MessageRecorder::MessageRecorder() { previous_ = plat::ObserveMessages(&MessageRecorder::Record, this); }
MessageRecorder::~MessageRecorder() { plat::ObserveMessages(previous_, nullptr); }

int MessageRecorder::Record(const char* text, const char* caption, unsigned style, void* self) {
    static_cast<MessageRecorder*>(self)->messages_.push_back({text, caption, style});
    return plat::kIdOk;
}

}  // namespace testing_support
