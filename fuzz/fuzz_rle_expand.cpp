// Fuzzes the run-length decoders: the first bytes choose the header (depth,
// compression, size), the rest is the stream.
#include "support.h"

#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size < 4) return 0;
    const int bits = data[0] & 1 ? 8 : 4;
    const std::uint32_t compression = data[0] >> 1 & 3;  // 0..3: the decoders' own choice
    const std::int32_t width = 1 + data[1] % 200;
    const std::int32_t height = 1 + data[2] % 64;
    const std::uint8_t* stream = data + 3;
    const size_t streamBytes = size - 3;

    const size_t table = size_t(4) << bits;
    std::vector<std::uint8_t> block(40 + table + streamBytes, 0);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bits);
    h.biCompression = compression;
    h.biSizeImage = static_cast<DWORD>(streamBytes);
    std::memcpy(block.data(), &h, sizeof(h));
    for (size_t i = 0; i < table; ++i) block[40 + i] = static_cast<std::uint8_t>(i);
    std::memcpy(block.data() + 40 + table, stream, streamBytes);

    HGLOBAL dib = fuzz::BlockFrom(block.data(), block.size());
    fuzz::Free(ExpandCompressedDIB(dib));
    fuzz::Free(dib);
    return 0;
}
