// The frame of the right-angle turns and flips of DIBs.
#include "geometry/turn_frame.h"

#include "core/dib.h"
#include "geometry/dib_copy.h"
#include "geometry/turn_simd.h"

#include <cstring>

namespace prism {

// Bytes behind the result rows; the one-column shift of the 270-degree
// turn can write its last pixel there.
constexpr std::uint64_t kSpareBytes = 4;

void MirrorRow8(const unsigned char* s, unsigned char* d, std::uint32_t width) {
    std::uint32_t x = 0;
#if PRISM_X86
    if (Simd().ssse3) x = MirrorRow8Ssse3(s, d, width);
#endif
    std::reverse_copy(s, s + (width - x), d + x);
}

namespace {
struct ReversedBytes {
    unsigned char r[256];
    ReversedBytes() {
        for (unsigned v = 0; v < 256; ++v) {
            unsigned b = 0;
            for (unsigned k = 0; k < 8; ++k) b |= ((v >> k) & 1u) << (7 - k);
            r[v] = static_cast<unsigned char>(b);
        }
    }
};
}  // namespace

void MirrorBitsRow(const unsigned char* s, unsigned char* d, std::uint32_t width) {
    static const ReversedBytes reversed;
    const std::uint32_t bytes = (width + 7) / 8, unused = 8 * bytes - width;
    for (std::uint32_t k = 0; k < bytes; ++k) {
        const unsigned here = reversed.r[s[bytes - 1 - k]];
        const unsigned next = k + 1 < bytes ? reversed.r[s[bytes - 2 - k]] : 0;
        d[k] = static_cast<unsigned char>((here << unused | next >> (8 - unused)) & 0xFFu);
    }
}

void MirrorRow24(const unsigned char* s, unsigned char* d, std::uint32_t width) {
    std::uint32_t x = 0;
#if PRISM_X86
    if (Simd().ssse3) x = MirrorRow24Ssse3(s, d, width);
#endif
    for (; x < width; ++x) Pixel24::Copy(s, width - 1 - x, d, x);
}

HDIB TurnDib(HDIB dib, TurnShape shape, void (*move)(const TurnJob&)) {
    if (!dib) return nullptr;
    BlockLock src(dib);
    DibView view;
    if (!src || ViewDib(src.get(), src.size(), &view) != DibStatus::kOk) return nullptr;
    // Only 40-byte headers are read, and only rows of one plane; the rows
    // must lie in the block.
    if (!view.infoHeader || !view.RowsFit()) return nullptr;
    BITMAPINFOHEADER h;
    std::memcpy(&h, src.get(), sizeof(h));
    if (h.biPlanes != 1) return nullptr;

    const std::int64_t rw = shape == TurnShape::kQuarter ? view.height : view.width;
    const std::int64_t rh = shape == TurnShape::kQuarter ? view.width : view.height;
    std::uint64_t bytes;
    if (!DibBlockBytes(rw, rh, view.bitCount, view.colors, &bytes)) return nullptr;
    OwnedBlock result(AllocBlock(bytes + kSpareBytes));
    BlockLock out(result.get());
    if (!out) return nullptr;

    DibRowCopy(out.bytes(), view.header, static_cast<std::uint32_t>(kInfoHeaderSize + view.paletteBytes));
    const std::uint64_t dstStride = DibRowBytes(rw, view.bitCount);
    if (shape == TurnShape::kQuarter) {
        // The resolution fields stay where they are.
        BITMAPINFOHEADER nh;
        std::memcpy(&nh, out.get(), sizeof(nh));
        nh.biWidth = static_cast<LONG>(rw);
        nh.biHeight = static_cast<LONG>(rh);
        nh.biSizeImage = static_cast<DWORD>(dstStride * static_cast<std::uint64_t>(rh));
        std::memcpy(out.get(), &nh, sizeof(nh));
    }

    TurnJob job{view.bits,
                view.stride,
                out.bytes() + kInfoHeaderSize + view.paletteBytes,
                dstStride,
                static_cast<std::uint32_t>(view.width),
                static_cast<std::uint32_t>(view.height),
                view.bitCount};
    {
        plat::WaitCursor wait;
        move(job);
    }
    return result.Release();
}

}  // namespace prism
