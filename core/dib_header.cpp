// Headers and default colour tables of DIBs made from device bitmaps.
#include "core/dib_header.h"

#include "core/dib.h"

#include <cstring>

namespace prism {
namespace {

// The 16 colours of a 4-bit image without a palette: blue, green, red.
const unsigned char kVgaColors[16][3] = {
    {0, 0, 0},     {0, 0, 128},   {0, 128, 0},   {0, 128, 128}, {128, 0, 0},   {128, 0, 128},
    {128, 128, 0}, {192, 192, 192}, {128, 128, 128}, {0, 0, 255}, {0, 255, 0}, {0, 255, 255},
    {255, 0, 0},   {255, 0, 255}, {255, 255, 0}, {255, 255, 255},
};

}  // namespace

void InitDibHeader(BITMAPINFOHEADER* header, std::int32_t width, std::int32_t height, int bitCount) {
    std::memset(header, 0, sizeof(*header));
    const int depth = bitCount <= 1 ? 1 : bitCount <= 4 ? 4 : bitCount <= 8 ? 8 : 24;
    header->biSize = kInfoHeaderSize;
    header->biWidth = width;
    header->biHeight = height;
    header->biPlanes = 1;
    header->biBitCount = static_cast<WORD>(depth);
    header->biSizeImage = static_cast<DWORD>(static_cast<std::uint64_t>(height) * DibRowBytes(width, depth));
    if (depth < 24) header->biClrUsed = header->biClrImportant = 1u << depth;
}

void DefaultDibColorTable(BITMAPINFOHEADER* header) {
    unsigned char* q = reinterpret_cast<unsigned char*>(header) + kInfoHeaderSize;
    switch (header->biBitCount) {
        case 1:
            std::memset(q, 0, 4);
            std::memset(q + 4, 255, 3);
            q[7] = 0;
            break;
        case 4:
            for (int i = 0; i < 16; ++i, q += 4) {
                std::memcpy(q, kVgaColors[i], 3);
                q[3] = 0;
            }
            break;
        case 8:
            // The brightest entry is 252, 252, 255: not white.
            for (int i = 0; i < 256; ++i, q += 4) {
                q[0] = static_cast<unsigned char>((i % 4) * 85);
                q[1] = static_cast<unsigned char>(((i / 4) % 8) * 36);
                q[2] = static_cast<unsigned char>((i / 32) * 36);
                q[3] = 0;
            }
            break;
        default:
            break;
    }
}

void FillLogPalette(unsigned char* record, const unsigned char* table, std::uint64_t tableBytes,
                    std::uint32_t count) {
    record[0] = 0x00;  // version 768
    record[1] = 0x03;
    record[2] = static_cast<unsigned char>(count);
    record[3] = static_cast<unsigned char>(count >> 8);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint64_t at = 4 * static_cast<std::uint64_t>(i);
        unsigned char* e = record + 4 + at;
        e[0] = at + 2 < tableBytes ? table[at + 2] : 0;  // red
        e[1] = at + 1 < tableBytes ? table[at + 1] : 0;  // green
        e[2] = at < tableBytes ? table[at] : 0;          // blue
        e[3] = 0;
    }
}

}  // namespace prism
