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

Bytes PackedDib(const DibShape& s, unsigned (*pixel)(int, int)) {
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

Bytes BmpFile(const Bytes& packed, long offBits) {
    Bytes file(14 + packed.size(), 0);
    file[0] = 'B';
    file[1] = 'M';
    Put32(file, 2, static_cast<std::uint32_t>(packed.size() + 14));
    if (offBits < 0) {
        std::uint32_t size = Get32(packed, 0);
        size_t entry = size == 40 ? 4 : 3;
        unsigned bitCount = size == 40 ? packed[14] | packed[15] << 8 : packed[10] | packed[11] << 8;
        size_t colors = size == 40 && Get32(packed, 32) ? Get32(packed, 32) : bitCount <= 8 ? 1u << bitCount : 0;
        offBits = static_cast<long>(14 + size + colors * entry);
    }
    Put32(file, 10, static_cast<std::uint32_t>(offBits));
    if (!packed.empty()) std::memcpy(file.data() + 14, packed.data(), packed.size());
    return file;
}

Bytes Uniform(int width, int height, int bitCount, unsigned value) {
    static unsigned current;  // PackedDib takes a plain function
    current = value;
    return Image(width, height, bitCount, [](int, int) { return current; });
}

std::uint64_t Hash(const Bytes& b) {
    std::uint64_t h = 14695981039346656037ull;
    for (unsigned char c : b) h = (h ^ c) * 1099511628211ull;
    return h;
}

size_t BitsOffset(const Bytes& dib) {
    const unsigned bits = dib[14] | dib[15] << 8;
    const std::uint32_t used = Get32(dib, 32);
    return 40 + (used ? used : bits <= 8 ? (1u << bits) : 0) * 4;
}

Picture Make(int w, int h, int bits, const std::function<unsigned(int, int)>& fn) {
    Picture p(w, h, bits);
    const unsigned mask = bits >= 24 ? 0xFFFFFFu : (1u << bits) - 1;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) p.at(x, y) = fn(x, y) & mask;
    return p;
}

Picture Varied(int w, int h, int bits) {
    return Make(w, h, bits, [bits](int x, int y) {
        std::uint32_t v = static_cast<std::uint32_t>(x * 73856093u) ^ static_cast<std::uint32_t>(y * 19349663u) ^
                          static_cast<std::uint32_t>(bits * 83492791u);
        v ^= v >> 13;
        v *= 0x5bd1e995u;
        return v ^ (v >> 15);
    });
}

void PutBits(unsigned char* area, std::uint64_t bitPos, int bits, unsigned v) {
    if (bits == 24) {
        unsigned char* p = area + bitPos / 8;
        for (int k = 0; k < 3; ++k) p[k] = static_cast<unsigned char>(v >> (8 * k));
        return;
    }
    for (int k = 0; k < bits; ++k) {
        const std::uint64_t b = bitPos + k;
        const unsigned char mask = static_cast<unsigned char>(0x80 >> (b % 8));
        area[b / 8] = static_cast<unsigned char>((v >> (bits - 1 - k)) & 1 ? area[b / 8] | mask : area[b / 8] & ~mask);
    }
}

Bytes ToDib(const Picture& p) {
    Bytes dib = Image(p.width, p.height, p.bits, [](int, int) { return 0u; });
    const size_t stride = Stride(p.width, p.bits);
    unsigned char* bits = dib.data() + BitsOffset(dib);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            PutBits(bits + stride * y, static_cast<std::uint64_t>(x) * p.bits, p.bits, p.at(x, y));
    return dib;
}

Bytes Take(HDIB dib) {
    if (!dib) return Bytes();
    Bytes b = BlockBytes(dib);
    GlobalFree(dib);
    return b;
}

Bytes Apply(const Bytes& in, const std::function<HDIB(HGLOBAL)>& op) {
    HGLOBAL block = BlockFrom(in);
    Bytes result = Take(op(block));
    GlobalFree(block);
    return result;
}

Bytes Call(DibOp op, const Bytes& in) {
    HGLOBAL block = BlockFrom(in);
    Bytes result = Take(op(block));
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
    const size_t colors = info && Get32(dib, 32) ? Get32(dib, 32) : bitCount <= 8 ? 1u << bitCount : 0;
    const unsigned char* row = dib.data() + (info ? 40 + colors * 4 : 12 + colors * 3) + Stride(width, bitCount) * y;
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

void ScratchFile::Write(const Bytes& bytes) const { WriteFile(path_, bytes); }
Bytes ScratchFile::Read() const { return ReadFile(path_); }

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
