// Changes of form: palette to true colour, colour to grey, and 1-bit to
// grey with optional smoothing.
#include "platform/export.h"
#include "tone/tone_internal.h"
#include "tone/tone_simd.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace tone {
namespace {

template <int Max, int Divisor>
struct Quotients {
    unsigned char q[Max + 1];
    Quotients() {
        for (int i = 0; i <= Max; ++i) q[i] = static_cast<unsigned char>(i / Divisor);
    }
};

constexpr std::uint64_t kRampOffset = kInfoHeaderSize + 256 * 4;  // 1064

// Grey of blue, green, red: weighted (3 blue + 15 green + 8 red) / 26, or
// the plain mean.
inline unsigned char Grey(unsigned b, unsigned g, unsigned r, bool weighted) {
    return weighted ? DivideBy26Table()[3 * b + 15 * g + 8 * r] : DivideBy3Table()[b + g + r];
}

// Extra bytes behind the image of a 1-bit conversion: the expansion of the
// last row's padding bits lands there.
std::uint64_t MonoTail(std::int64_t width) {
    return static_cast<std::uint64_t>((width * 40 + 155) / 32) * 4;
}

// Smoothing modes lowered by height: 5 by 5 needs at least 6 rows, 3 by 3
// at least 4.
int LowerMode(int mode, std::int64_t height) {
    if (mode == 2 && height < 4) return 0;
    if (mode == 2 && height <= 5) return 1;
    return mode;
}

struct MonoSource {
    const unsigned char* bits;
    std::uint64_t stride;
    std::int64_t width, height;
};

// 1-bit rows into 8-bit rows, plain (mode 0) or smoothed through a ring of
// accumulator rows (modes 1 and 2).  Output row r is the kernel applied to
// source rows r, r-1, ... (row 0 repeated below the image), so the picture
// lags one or two stored rows behind its source.  Returns 0 or a code.
int MonoToGrey(const MonoSource& s, unsigned char* dst, std::uint64_t dstStride, std::uint64_t dstRoom,
               int mode, int invert) {
    const std::int64_t W = s.width, H = s.height;
    if (mode == 0) {
        for (std::int64_t r = 0; r < H; ++r) {
            std::uint64_t at = static_cast<std::uint64_t>(r) * dstStride;
            ExpandMonoRow(s.bits + static_cast<size_t>(r) * s.stride, W, dst + at, invert, dstRoom - at);
        }
        return 0;
    }
    const int K = mode == 1 ? 3 : 5;
    const std::int64_t rowBytes = MonoAccRowBytes(W);
    // The scratch block is sized for everything the sweep writes, margins
    // included (no overrun at widths 8k + 1).
    HGLOBAL scratch = AllocBlock(static_cast<std::uint64_t>(rowBytes) * K, GMEM_MOVEABLE);
    if (!scratch) return kErrMemory;
    BlockLock lock(scratch);
    if (!lock) {
        GlobalFree(scratch);
        return kErrLock;
    }
    // The block's content is undefined at first: start from zero.
    std::memset(lock.get(), 0, static_cast<size_t>(rowBytes) * K);
    unsigned char* ring[5];
    for (int i = 0; i < K; ++i) ring[i] = lock.bytes() + i * rowBytes + kMonoLeft;
    auto src = [&](std::int64_t r) { return s.bits + static_cast<size_t>(r) * s.stride; };
    if (K == 3) {
        SplatMonoRow3(src(0), W, ring[0], ring[0], ring[1], invert);
    } else {
        SplatMonoRow5(src(0), W, ring[0], ring[0], ring[0], ring[0], ring[3], invert);
        SplatMonoRow5(src(0), W, ring[1], ring[1], ring[1], ring[4], ring[2], invert);
        SplatMonoRow5(src(0), W, ring[4], ring[4], ring[4], ring[2], ring[4], invert);
    }
    for (std::int64_t r = 0; r < H; ++r) {
        const int k = static_cast<int>(r % K);
        unsigned char* roles[5];
        for (int i = 0; i < K; ++i) roles[i] = ring[(k + i) % K];
        if (K == 3)
            SplatMonoRow3(src(r), W, roles[0], roles[1], roles[2], invert);
        else
            SplatMonoRow5(src(r), W, roles[0], roles[1], roles[2], roles[3], roles[4], invert);
        // Position p of an accumulator row stands for column p - 4.
        std::memcpy(dst + static_cast<size_t>(r) * dstStride, roles[0] + 4, static_cast<size_t>(W));
    }
    // The scratch block is given back: nothing outside the call uses it.
    lock.Unlock();
    GlobalFree(scratch);
    return 0;
}

}  // namespace

const unsigned char* DivideBy3Table() {
    static const Quotients<765, 3> table;
    return table.q;
}

const unsigned char* DivideBy26Table() {
    static const Quotients<6630, 26> table;
    return table.q;
}

}  // namespace tone
}  // namespace prism

using namespace prism;
using namespace prism::tone;

// Expands an 8-bit palette image to 24 bits.  A new DIB, or 0 with
// LastImgError set (13 for depths 1 and 4, 31 for an image already at 24
// bits).  The source is left locked once per successful call.
PRISM_API HDIB WINAPI Convert8to24(HDIB dib) {
    LastImgError = 0;
    if (!dib) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BlockLock image(dib);
    if (!image) {
        LastImgError = kErrLock;
        return nullptr;
    }
    BITMAPINFOHEADER h = HeaderOf(image);
    int code = 0;
    if (h.biSize != kInfoHeaderSize) code = kErrParameter;
    else if (h.biCompression != 0) code = kErrCompressed;
    else if (h.biBitCount == 1 || h.biBitCount == 4) code = kErrBitsPerPixel;
    else if (h.biBitCount == 24) code = kErrTextless;
    else if ((h.biWidth & 0xFFFF) == 0 || (h.biHeight & 0xFFFF) == 0) code = kErrDibSize;
    // Sizes are 16-bit; a negative one cannot be converted.
    const std::int16_t W = static_cast<std::int16_t>(h.biWidth & 0xFFFF);
    const std::int16_t H = static_cast<std::int16_t>(h.biHeight & 0xFFFF);
    if (!code && (W < 0 || H < 0)) code = kErrDibSize;
    const std::uint64_t colors = h.biClrUsed ? (h.biClrUsed & 0xFFFF) : 256;
    const std::uint64_t offset = kInfoHeaderSize + colors * 4;
    const std::uint16_t srcStride = static_cast<std::uint16_t>(DibRowBytes(h.biWidth, h.biBitCount));
    const std::uint16_t dstStride = static_cast<std::uint16_t>(DibRowBytes(h.biWidth, 24));
    if (!code && !RowsInside(offset, H, srcStride, static_cast<std::uint64_t>(W), image.size()))
        code = kErrDibSize;  // a block too small for its rows
    if (code) {
        LastImgError = code;
        return nullptr;
    }
    const std::uint64_t imageBytes = static_cast<std::uint64_t>(H) * dstStride;
    HDIB result = AllocTwice(imageBytes + kInfoHeaderSize);
    if (!result) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    BlockLock out(result);
    if (!out) {
        GlobalFree(result);
        LastImgError = kErrLock;
        return nullptr;
    }
    BITMAPINFOHEADER nh = h;
    nh.biPlanes = 1;
    nh.biBitCount = 24;
    nh.biSizeImage = static_cast<DWORD>(imageBytes);
    nh.biClrUsed = 0;
    nh.biClrImportant = 0;
    std::memcpy(out.get(), &nh, sizeof(nh));

    // Entry i for every byte value: the index is not limited by the table,
    // so entries past it are whatever follows (bytes past the block read 0).
    const unsigned char* src = image.bytes();
    const std::uint64_t srcBytes = image.size();
    unsigned char palette[256][3];
    for (std::uint64_t i = 0; i < 256; ++i)
        for (std::uint64_t c = 0; c < 3; ++c) {
            std::uint64_t at = kInfoHeaderSize + i * 4 + c;
            palette[i][c] = at < srcBytes ? src[at] : 0;
        }
    unsigned char* pixels = out.bytes() + kInfoHeaderSize;
    const std::uint64_t room = out.size() - kInfoHeaderSize;
    for (std::int64_t y = 0; y < H; ++y) {
        const unsigned char* s = src + offset + static_cast<size_t>(y) * srcStride;
        unsigned char* d = pixels + static_cast<size_t>(y) * dstStride;
        if (W <= 10922) {
            for (std::int64_t x = 0; x < W; ++x, d += 3) {
                const unsigned char* e = palette[s[x]];
                d[0] = e[0];
                d[1] = e[1];
                d[2] = e[2];
            }
        } else {
            // The byte offset within a row is a signed 16-bit counter and
            // wraps from pixel 10923 on; writes that would leave the pixel
            // area are dropped.
            const std::int64_t rowAt = y * static_cast<std::int64_t>(dstStride);
            for (std::int64_t x = 0; x < W; ++x) {
                std::int64_t at = rowAt + static_cast<std::int16_t>(static_cast<std::uint16_t>(x * 3));
                if (at < 0 || static_cast<std::uint64_t>(at) + 3 > room) continue;
                std::memcpy(pixels + at, palette[s[x]], 3);
            }
        }
    }
    image.Release();  // the source stays locked, once per call
    return result;
}

// Turns a 1, 4, 8 or 24-bit image into grey: 8 bits with a 256-step ramp,
// or 4 bits with 16 grey entries for 4-bit input.  `weighted` chooses
// (3 blue + 15 green + 8 red) / 26 over the plain mean; `smoothing` (0, 1,
// 2: none, 3 by 3, 5 by 5) applies to 1-bit input only.  0 with
// LastImgError set on failure.
PRISM_API HDIB WINAPI ConvColorDIBtoGrayscale(HDIB dib, int smoothing, BOOL weighted) {
    LastImgError = 0;
    if (!dib) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BlockLock image(dib);
    if (!image) {
        LastImgError = kErrLock;
        return nullptr;
    }
    BITMAPINFOHEADER h = HeaderOf(image);
    const int depth = h.biBitCount;
    int code = 0;
    if (h.biSize != kInfoHeaderSize) code = kErrParameter;
    else if (h.biCompression != 0) code = kErrCompressed;
    else if (h.biWidth == 0 || h.biHeight == 0) code = kErrDibSize;
    else if (depth == 1 && (smoothing < 0 || smoothing > 2)) code = kErrParameter;
    // Depths outside 1, 4, 8 and 24 have no defined result: refused.
    else if (depth != 1 && depth != 4 && depth != 8 && depth != 24) code = kErrBitsPerPixel;
    const std::int64_t W = h.biWidth, H = h.biHeight;
    if (!code && (W < 0 || H < 0)) code = kErrDibSize;
    const std::uint64_t m = h.biClrUsed ? h.biClrUsed : (depth == 1 ? 2 : depth == 4 ? 16 : depth == 8 ? 256 : 0);
    const std::uint64_t q = depth == 4 ? 16 : 256;
    const std::uint64_t srcOffset = kInfoHeaderSize + m * 4;
    const std::uint64_t srcStride = DibRowBytes(W, depth);
    if (!code && !RowsInside(srcOffset, H, srcStride, srcStride, image.size())) code = kErrDibSize;
    if (code) {
        LastImgError = code;
        return nullptr;
    }
    const int mode = depth == 1 ? LowerMode(smoothing, H) : 0;
    const int outDepth = depth == 4 ? 4 : 8;
    const std::uint64_t outStride = DibRowBytes(W, outDepth);
    const std::uint64_t imageBytes = outStride * static_cast<std::uint64_t>(H);
    const std::uint64_t tail = (depth == 1 || depth == 24) ? MonoTail(W) : 0;
    HDIB result = AllocBlock(imageBytes + q * 4 + kInfoHeaderSize + tail);
    if (!result) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    BlockLock out(result);
    if (!out) {
        GlobalFree(result);
        LastImgError = kErrLock;
        return nullptr;
    }
    BITMAPINFOHEADER nh = {};
    nh.biSize = kInfoHeaderSize;
    nh.biWidth = h.biWidth;
    nh.biHeight = h.biHeight;
    nh.biPlanes = h.biPlanes;
    nh.biBitCount = static_cast<WORD>(outDepth);
    nh.biSizeImage = static_cast<DWORD>(imageBytes);
    nh.biXPelsPerMeter = h.biXPelsPerMeter;
    nh.biYPelsPerMeter = h.biYPelsPerMeter;
    nh.biClrUsed = static_cast<DWORD>(q);
    nh.biClrImportant = h.biClrImportant;
    unsigned char* dst = out.bytes();
    std::memcpy(dst, &nh, sizeof(nh));

    const unsigned char* src = image.bytes();
    const std::uint64_t srcBytes = image.size();
    const bool luminance = weighted != 0;
    if (depth == 1 || depth == 24) {
        WriteGreyRamp(dst + kInfoHeaderSize, dst + out.size());
    } else {
        // Entries from m up to q stay zero; entries past q are not written.
        for (std::uint64_t i = 0; i < std::min(m, q); ++i) {
            unsigned char c[3];
            for (int k = 0; k < 3; ++k) {
                std::uint64_t at = kInfoHeaderSize + i * 4 + k;
                c[k] = at < srcBytes ? src[at] : 0;
            }
            unsigned char g = Grey(c[0], c[1], c[2], luminance);
            unsigned char* e = dst + kInfoHeaderSize + i * 4;
            e[0] = e[1] = e[2] = g;
        }
    }
    unsigned char* pixels = dst + kInfoHeaderSize + q * 4;
    const unsigned char* srcBits = src + srcOffset;
    if (depth == 4 || depth == 8) {
        std::memcpy(pixels, srcBits, static_cast<size_t>(imageBytes));  // indices stay
    } else if (depth == 24) {
        for (std::int64_t y = 0; y < H; ++y) {
            const unsigned char* s = srcBits + static_cast<size_t>(y) * srcStride;
            unsigned char* d = pixels + static_cast<size_t>(y) * outStride;
            std::int64_t x = 0;
#if PRISM_X86
            if (Simd().ssse3) x = GreyRow24Ssse3(s, d, static_cast<std::uint32_t>(W), luminance);
            s += 3 * x;
#endif
            for (; x < W; ++x, s += 3) d[x] = Grey(s[0], s[1], s[2], luminance);
        }
    } else {
        // The colour table of a 1-bit image plays no part: a set bit is bright.
        MonoSource ms{srcBits, srcStride, W, H};
        LastImgError = MonoToGrey(ms, pixels, outStride, imageBytes + tail, mode, 0);
    }
    out.Unlock();
    if (LastImgError) {
        GlobalFree(result);
        return nullptr;
    }
    image.Release();  // the source stays locked, once per call
    return result;
}

// Turns a 1-bit image into 8-bit grey with a 256-step ramp, with no
// smoothing (0), 3 by 3 (1) or 5 by 5 (2).  Which bit value comes out bright
// follows the blue and green bytes of the two colour entries.  0 with
// LastImgError set on failure.
PRISM_API HDIB WINAPI ConvMonoDIBtoGrayscale(HDIB dib, int smoothing) {
    LastImgError = 0;
    if (!dib) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    BlockLock image(dib);
    if (!image) {
        LastImgError = kErrLock;
        return nullptr;
    }
    BITMAPINFOHEADER h = HeaderOf(image);
    int code = 0;
    if (h.biSize != kInfoHeaderSize) code = kErrParameter;
    else if (h.biPlanes != 1 || h.biBitCount != 1 || h.biCompression != 0) code = kErrCompressed;
    else if (h.biWidth == 0 || h.biHeight == 0) code = kErrDibSize;
    else if (smoothing < 0 || smoothing > 2) code = kErrParameter;
    const std::int64_t W = h.biWidth, H = h.biHeight;
    if (!code && (W < 0 || H < 0)) code = kErrDibSize;
    // The pixels start behind two colour entries, whatever biClrUsed says.
    const std::uint64_t srcOffset = kInfoHeaderSize + 8;
    const std::uint64_t srcStride = static_cast<std::uint64_t>((W + 31) / 32 * 4);
    if (!code && !RowsInside(srcOffset, H, srcStride, srcStride, image.size())) code = kErrDibSize;
    if (code) {
        LastImgError = code;
        return nullptr;
    }
    const unsigned char* src = image.bytes();
    // Polarity from the blue and green bytes of entries 0 and 1: with entry
    // 0 black and entry 1 white the flag is 1, and set bits come out dark.
    const std::int32_t b0 = src[40], g0 = src[41], b1 = src[44], g1 = src[45];
    const int invert = g0 * b0 * b0 < g1 * b1 * b1 ? 1 : 0;
    const int mode = LowerMode(smoothing, H);

    const std::uint64_t stride8 = DibRowBytes(W, 8);
    const std::uint64_t imageBytes = stride8 * static_cast<std::uint64_t>(H);
    const std::uint64_t tail = MonoTail(W);
    HDIB result = AllocBlock(kRampOffset + imageBytes + tail);
    if (!result) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    BlockLock out(result);
    if (!out) {
        GlobalFree(result);
        LastImgError = kErrLock;
        return nullptr;
    }
    BITMAPINFOHEADER nh = {};
    nh.biSize = kInfoHeaderSize;
    nh.biWidth = h.biWidth;
    nh.biHeight = h.biHeight;
    nh.biPlanes = 1;
    nh.biBitCount = 8;
    nh.biSizeImage = static_cast<DWORD>(imageBytes);
    nh.biXPelsPerMeter = h.biXPelsPerMeter;
    nh.biYPelsPerMeter = h.biYPelsPerMeter;
    unsigned char* dst = out.bytes();
    std::memcpy(dst, &nh, sizeof(nh));
    WriteGreyRamp(dst + kInfoHeaderSize, dst + kRampOffset);
    MonoSource ms{src + srcOffset, srcStride, W, H};
    LastImgError = MonoToGrey(ms, dst + kRampOffset, stride8, imageBytes + tail, mode, invert);
    out.Unlock();
    if (LastImgError) {
        GlobalFree(result);
        return nullptr;
    }
    image.Release();  // the source stays locked, once per call
    return result;
}
