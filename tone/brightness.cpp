// A fixed brightness and contrast curve applied to 4, 8 and 24-bit images,
// and the negative made by inverting a colour table.
#include "platform/export.h"
#include "tone/tone_internal.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace tone {

// Brightness first, clipped, then a gain of (100 + contrast)/100 with a fixed
// offset.  Both arguments lie in -100..100.
void BrightnessContrastTable(int brightness, int contrast, unsigned char table[256]) {
    const int b = (brightness * 128) / 100;
    const int o = (contrast * 128) / 100;
    const double g = static_cast<double>(contrast + 100);
    for (int i = 0; i < 256; ++i) {
        int t = i + b;
        if (t >= 255) t = 255;
        if (t <= 0) t = 0;
        double v = static_cast<double>(t) * g * 0.01 - static_cast<double>(o);
        if (v >= 255.0) v = 255.0;
        if (v <= 0.0) v = 0.0;
        table[i] = static_cast<unsigned char>(static_cast<int>(v));
    }
}

}  // namespace tone
}  // namespace prism

using namespace prism;
using namespace prism::tone;

// A new DIB with brightness and contrast (each -100..100) applied: palette
// images through their colour table, 24-bit images byte by byte.  0 with
// LastImgError set on failure; 1-bit images are refused.
PRISM_API HDIB WINAPI ColorBrightnessContrast(HDIB dib, short brightness, short contrast) {
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
    else if (h.biBitCount == 1) code = kErrBitsPerPixel;
    else if ((h.biWidth & 0xFFFF) == 0 || (h.biHeight & 0xFFFF) == 0) code = kErrDibSize;
    else if (brightness < -100 || brightness > 100 || contrast < -100 || contrast > 100) code = kErrParameter;
    if (code) {
        LastImgError = code;
        return nullptr;
    }
    const int depth = h.biBitCount;
    std::uint32_t colors = h.biClrUsed & 0xFFFF;
    if (!h.biClrUsed) colors = depth == 4 ? 16 : depth == 8 ? 256 : 0;
    unsigned char table[256];
    BrightnessContrastTable(brightness, contrast, table);

    const std::uint64_t stride = DibRowBytes(h.biWidth, depth);
    std::uint64_t imageBytes = h.biSizeImage;
    if (!imageBytes) imageBytes = stride * static_cast<std::uint64_t>(h.biHeight < 0 ? 0 : h.biHeight);
    const std::uint64_t pixelOffset = kInfoHeaderSize + static_cast<std::uint64_t>(colors) * 4;
    // Row counts are 16-bit: past 10922 columns width times 3 turns
    // negative and the 24-bit row loop does not run.
    const std::int16_t rows = static_cast<std::int16_t>(h.biHeight & 0xFFFF);
    const std::int16_t rowBytes = static_cast<std::int16_t>((h.biWidth & 0xFFFF) * 3);
    if (depth == 24 && rows > 0 && rowBytes > 0 &&
        !RowsInside(pixelOffset, rows, stride, static_cast<std::uint64_t>(rowBytes), image.size())) {
        LastImgError = kErrDibSize;  // a block too small for its rows
        return nullptr;
    }

    HDIB result = AllocTwice(pixelOffset + imageBytes);
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
    const unsigned char* src = image.bytes();
    const std::uint64_t srcBytes = image.size();
    unsigned char* dst = out.bytes();
    // Header and colour table as they stand; bytes past the source read 0.
    std::uint64_t head = std::min<std::uint64_t>(pixelOffset, srcBytes);
    std::memcpy(dst, src, static_cast<size_t>(head));
    BITMAPINFOHEADER nh = h;
    nh.biSizeImage = static_cast<DWORD>(imageBytes);
    std::memcpy(dst, &nh, sizeof(nh));

    if (depth == 4 || depth == 8) {
        for (std::uint32_t i = 0; i < colors; ++i) {
            unsigned char* e = dst + kInfoHeaderSize + i * 4;
            e[0] = table[e[0]];
            e[1] = table[e[1]];
            e[2] = table[e[2]];
        }
        if (pixelOffset < srcBytes)
            std::memcpy(dst + pixelOffset, src + pixelOffset,
                        static_cast<size_t>(std::min(imageBytes, srcBytes - pixelOffset)));
    } else if (depth == 24) {
        const std::uint64_t dstBytes = out.size();
        for (std::int64_t y = 0; y < rows && rowBytes > 0; ++y) {
            std::uint64_t at = pixelOffset + static_cast<std::uint64_t>(y) * stride;
            if (at + static_cast<std::uint64_t>(rowBytes) > dstBytes) break;  // biSizeImage too small
            const unsigned char* s = src + at;
            unsigned char* d = dst + at;
            for (int x = 0; x < rowBytes; ++x) d[x] = table[s[x]];
        }
    }
    // The source's lock is given back here; the library asks only that the
    // source stays valid and unchanged.
    return result;
}

// Makes a negative by inverting the first biClrUsed colour entries.  1 for
// a 40-byte header, else 0; pixels and LastImgError are never touched.
PRISM_API BOOL WINAPI InvertDIBPalette(HDIB dib) {
    if (!dib) return 0;
    BlockLock image(dib);
    if (!image) return 0;
    BITMAPINFOHEADER h = HeaderOf(image);
    if (h.biSize != kInfoHeaderSize) return 0;
    const std::uint64_t bytes = image.size();
    const std::uint64_t room = bytes > kInfoHeaderSize ? (bytes - kInfoHeaderSize) / 4 : 0;
    const std::uint64_t count = std::min<std::uint64_t>(h.biClrUsed, room);
    for (std::uint64_t i = 0; i < count; ++i) {
        unsigned char* e = image.bytes() + kInfoHeaderSize + i * 4;
        e[0] = static_cast<unsigned char>(255 - e[0]);
        e[1] = static_cast<unsigned char>(255 - e[1]);
        e[2] = static_cast<unsigned char>(255 - e[2]);
    }
    return 1;
}
