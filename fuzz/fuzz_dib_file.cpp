// Fuzzes the BMP and packed-DIB reader: the header reader from a fuzzed
// start position, and the whole load followed by a save.
#include "support.h"

#include <cstring>
#include <unistd.h>

namespace {

// Headers that claim more than this many pixel bytes only measure the
// allocator; they are passed over here (the reader itself handles them).
constexpr std::uint64_t kMaxClaim = 64u << 20;

std::uint64_t ClaimedPixelBytes(const std::uint8_t* data, size_t size) {
    size_t at = size >= 2 && data[0] == 'B' && data[1] == 'M' ? 14 : 0;
    if (size < at + 40) return 0;
    std::uint32_t headerSize, sizeImage = 0;
    std::int32_t width, height;
    std::uint16_t bits;
    std::memcpy(&headerSize, data + at, 4);
    if (headerSize == 40) {
        std::memcpy(&width, data + at + 4, 4);
        std::memcpy(&height, data + at + 8, 4);
        std::memcpy(&bits, data + at + 14, 2);
        std::memcpy(&sizeImage, data + at + 20, 4);
    } else {
        std::uint16_t w16, h16;
        std::memcpy(&w16, data + at + 4, 2);
        std::memcpy(&h16, data + at + 6, 2);
        std::memcpy(&bits, data + at + 10, 2);
        width = w16;
        height = h16;
    }
    if (sizeImage) return sizeImage;
    if (width < 0 || height < 0) return 0;
    return (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4 * static_cast<std::uint64_t>(height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::MemoryFile file(data, size);
    if (file.handle() < 0) return 0;

    // The header reader, starting anywhere in the first few bytes.
    if (size > 0) ::lseek(file.handle(), data[0] % 4, SEEK_SET);
    fuzz::Free(ReadDIBInfo(file.handle()));

    if (ClaimedPixelBytes(data, size) > kMaxClaim) return 0;
    HDIB dib = LoadDIBFromFile(file.path().c_str());
    if (dib) {
        SaveDIB("/dev/null", dib);
        fuzz::Free(dib);
    }
    return 0;
}
