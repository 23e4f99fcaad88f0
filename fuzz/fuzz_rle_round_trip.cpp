// Compress then expand gives the source back where the coder promises it:
// at 4 bits always; at 8 bits when each row starts and ends with 0, since
// a row's tail takes in the byte behind its last pixel.
#include "support.h"

#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const int bits = data[0] & 1 ? 8 : 4;
    const std::int32_t width = 1 + data[1] % 300;
    const std::int32_t height = 1 + data[2] % 16;
    const size_t stride = (static_cast<size_t>(width) * bits + 31) / 32 * 4;
    const size_t table = size_t(4) << bits;
    std::vector<std::uint8_t> block(40 + table + stride * height, 0);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bits);
    h.biSizeImage = static_cast<DWORD>(stride * height);
    std::memcpy(block.data(), &h, sizeof(h));
    std::uint8_t* pixels = block.data() + 40 + table;
    const size_t pixelBytes = (static_cast<size_t>(width) * bits + 7) / 8;
    size_t at = 3;
    for (std::int32_t y = 0; y < height; ++y) {
        std::uint8_t* row = pixels + stride * y;
        for (size_t i = 0; i < pixelBytes; ++i) row[i] = at < size ? data[at++] : 0;
        if (bits == 4 && width % 2) row[pixelBytes - 1] &= 0xF0;  // the padding nibble is no pixel
        if (bits == 8) row[0] = row[width - 1] = 0;
    }

    HGLOBAL source = fuzz::BlockFrom(block.data(), block.size());
    HDIB packed = CompressDIB(source);
    if (!packed) std::abort();  // a valid image always compresses
    HDIB back = ExpandCompressedDIB(packed);
    if (!back) std::abort();
    const std::uint8_t* out = static_cast<const std::uint8_t*>(GlobalLock(back));
    if (GlobalSize(back) != block.size() || std::memcmp(out + 40 + table, pixels, stride * height) != 0)
        std::abort();  // the pixels did not come back
    GlobalUnlock(back);
    fuzz::Free(back);
    fuzz::Free(packed);
    fuzz::Free(source);
    return 0;
}
