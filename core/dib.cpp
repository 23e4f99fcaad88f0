// Header arithmetic, checked allocation and the validated view of a DIB.
#include "core/dib.h"

#include <cstring>

namespace prism {
namespace {

template <typename T>
T Field(const void* base, size_t offset) {
    T v;
    std::memcpy(&v, static_cast<const unsigned char*>(base) + offset, sizeof(T));
    return v;
}

std::uint32_t ColorsForDepth(int bitCount) {
    switch (bitCount) {
        case 1: return 2;
        case 4: return 16;
        case 8: return 256;
        default: return 0;
    }
}

}  // namespace

std::uint32_t DibColorCount(const void* header) {
    if (Field<std::uint32_t>(header, 0) == kInfoHeaderSize) {
        std::uint32_t used = Field<std::uint32_t>(header, 32);
        if (used != 0) return used;
        return ColorsForDepth(Field<std::uint16_t>(header, 14));
    }
    return ColorsForDepth(Field<std::uint16_t>(header, 10));
}

std::uint64_t DibPaletteSize(const void* header) {
    std::uint64_t entry = Field<std::uint32_t>(header, 0) == kInfoHeaderSize ? 4 : 3;
    return entry * DibColorCount(header);
}

unsigned char* DibBits(void* header) {
    return static_cast<unsigned char*>(header) + Field<std::uint32_t>(header, 0) + DibPaletteSize(header);
}

std::uint64_t DibRowBytes(std::int64_t width, int bitCount) {
    if (width <= 0 || bitCount <= 0) return 0;
    return (static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(bitCount) + 31) / 32 * 4;
}

long FileSizeOf(HFILE file) {
    long here = plat::FileSeek(file, 0, plat::kSeekCur);
    long end = plat::FileSeek(file, 0, plat::kSeekEnd);
    plat::FileSeek(file, here, plat::kSeekSet);
    return end;
}

bool DibBlockBytes(std::int64_t width, std::int64_t height, int bitCount, std::uint64_t colors,
                   std::uint64_t* bytes) {
    if (width < 0 || height < 0 || bitCount < 0 || colors > kMaxBlockBytes / 4) return false;
    if (width > 0xFFFFFFFFll || height > 0xFFFFFFFFll) return false;
    std::uint64_t stride = DibRowBytes(width, bitCount);
    if (stride > kMaxBlockBytes) return false;
    if (height != 0 && stride > kMaxBlockBytes / static_cast<std::uint64_t>(height)) return false;
    std::uint64_t total = kInfoHeaderSize + colors * 4 + stride * static_cast<std::uint64_t>(height);
    if (total > kMaxBlockBytes) return false;
    *bytes = total;
    return true;
}

HGLOBAL AllocBlock(std::uint64_t bytes, UINT flags) {
    if (bytes > kMaxBlockBytes || bytes > static_cast<std::uint64_t>(SIZE_MAX)) return nullptr;
    return GlobalAlloc(flags, static_cast<SIZE_T>(bytes));
}

HDIB NewDib(std::int64_t width, std::int64_t height, int bitCount, std::uint32_t colors) {
    std::uint64_t bytes;
    if (!DibBlockBytes(width, height, bitCount, colors, &bytes)) return nullptr;
    HDIB dib = AllocBlock(bytes);
    if (!dib) return nullptr;
    BlockLock lock(dib);
    if (!lock) {
        GlobalFree(dib);
        return nullptr;
    }
    BITMAPINFOHEADER h = {};
    h.biSize = kInfoHeaderSize;
    h.biWidth = static_cast<LONG>(width);
    h.biHeight = static_cast<LONG>(height);
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bitCount);
    h.biSizeImage = static_cast<DWORD>(DibRowBytes(width, bitCount) * static_cast<std::uint64_t>(height));
    h.biClrUsed = colors;
    std::memcpy(lock.get(), &h, sizeof(h));
    return dib;
}

bool RowsInsideBlock(const BITMAPINFOHEADER& header, std::uint64_t blockBytes) {
    const std::uint64_t colors = header.biClrUsed ? header.biClrUsed : ColorsForDepth(header.biBitCount);
    const std::uint64_t rows = header.biHeight > 0 ? static_cast<std::uint64_t>(header.biHeight) : 0;
    const std::uint64_t stride = header.biWidth > 0 ? DibRowBytes(header.biWidth, header.biBitCount) : 0;
    if (stride && rows > kMaxBlockBytes / stride) return false;
    return kInfoHeaderSize + colors * 4 + rows * stride <= blockBytes;
}

bool PixelsForDevice(const DibView& v) {
    if (v.compression == 0) return v.RowsFit();
    if (v.compression != 1 && v.compression != 2) return false;
    return Field<std::uint32_t>(v.header, 20) <= v.pixelBytes;
}

void CopyHeaderBytes(const void* locked, std::uint64_t blockBytes, BITMAPINFOHEADER* out) {
    std::memset(out, 0, sizeof(*out));
    size_t n = blockBytes < sizeof(*out) ? static_cast<size_t>(blockBytes) : sizeof(*out);
    if (locked && n) std::memcpy(out, locked, n);
}

DibStatus ViewDib(void* locked, std::uint64_t blockBytes, DibView* view) {
    *view = DibView();
    if (!locked || blockBytes < 4) return DibStatus::kTooSmall;
    unsigned char* p = static_cast<unsigned char*>(locked);
    DibView v;
    v.header = p;
    v.blockBytes = blockBytes;
    v.headerBytes = Field<std::uint32_t>(p, 0);
    v.infoHeader = v.headerBytes == kInfoHeaderSize;
    // Any size word but 40 is a core header; it needs at least the 12 bytes
    // the core layout reads, and the colour table stands behind the size word.
    std::uint64_t fieldsNeeded = v.infoHeader ? kInfoHeaderSize : kCoreHeaderSize;
    if (blockBytes < fieldsNeeded || blockBytes < v.headerBytes) return DibStatus::kTooSmall;
    if (v.infoHeader) {
        v.width = Field<std::int32_t>(p, 4);
        v.height = Field<std::int32_t>(p, 8);
        v.bitCount = Field<std::uint16_t>(p, 14);
        v.compression = Field<std::uint32_t>(p, 16);
    } else {
        v.width = Field<std::uint16_t>(p, 4);
        v.height = Field<std::uint16_t>(p, 6);
        v.bitCount = Field<std::uint16_t>(p, 10);
    }
    v.colors = DibColorCount(p);
    v.paletteBytes = DibPaletteSize(p);
    if (v.headerBytes + v.paletteBytes > blockBytes) return DibStatus::kTooSmall;
    if (v.width < 0 || v.height < 0) return DibStatus::kBadSize;
    v.stride = DibRowBytes(v.width, v.bitCount);
    if (v.stride > kMaxBlockBytes) return DibStatus::kBadSize;
    v.palette = p + v.headerBytes;
    v.bits = v.palette + v.paletteBytes;
    v.pixelBytes = blockBytes - v.headerBytes - v.paletteBytes;
    *view = v;
    return DibStatus::kOk;
}

}  // namespace prism
