// Fuzzes convolution kernel files: 32-bit entries for the grey filter and
// 16-bit entries for the colour filter, at every size.
#include "support.h"

#include <cstring>
#include <vector>

namespace {

HGLOBAL SmallImage(int bits) {
    const int width = 13, height = 9;
    const size_t stride = (static_cast<size_t>(width) * bits + 31) / 32 * 4;
    const size_t table = bits == 8 ? 1024 : 0;
    std::vector<std::uint8_t> block(40 + table + stride * height, 0);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bits);
    h.biSizeImage = static_cast<DWORD>(stride * height);
    std::memcpy(block.data(), &h, sizeof(h));
    for (size_t i = 0; i < table; ++i) block[40 + i] = static_cast<std::uint8_t>(i / 4);
    for (size_t i = 40 + table; i < block.size(); ++i) block[i] = static_cast<std::uint8_t>(i * 37);
    return fuzz::BlockFrom(block.data(), block.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const int sizes[] = {3, 5, 7, 4};
    const int n = sizes[data[0] & 3];
    const BOOL copy = data[0] >> 2 & 1;
    fuzz::MemoryFile kernel(data + 1, size - 1);
    if (kernel.handle() < 0) return 0;

    int error = 0;
    HGLOBAL grey = SmallImage(8);
    HDIB result = Convolve(grey, copy, 2, n, kernel.path().c_str(), nullptr, &error);
    if (result != grey) fuzz::Free(result);
    fuzz::Free(grey);

    HGLOBAL colour = SmallImage(24);
    result = ColorConvolution(colour, copy, data[0] >> 3 & 1, 2, static_cast<short>(n), kernel.path().c_str(),
                              nullptr, &error);
    if (result != colour) fuzz::Free(result);
    fuzz::Free(colour);
    return 0;
}
