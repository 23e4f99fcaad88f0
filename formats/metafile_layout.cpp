// Placeable headers, metafile bodies read from a file, and the size rules
// of metafile pictures.
#include "formats/metafile_layout.h"

#include "core/dib.h"
#include "core/errors.h"
#include "formats/file_holder.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace prism {
namespace {

std::uint16_t Le16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] | p[1] << 8); }
std::uint32_t Le32(const unsigned char* p) { return Le16(p) | std::uint32_t(Le16(p + 2)) << 16; }
void Put16(unsigned char* p, std::uint32_t v) {
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}

// Millimetres are taken as 24.5 to the inch on the clipboard; this is the
// double that stands for 1 / 24.5.
constexpr double kPerMillimetre = 0.04081632653061224;

}  // namespace

std::uint16_t PlaceableChecksum(const unsigned char* header) {
    std::uint16_t sum = 0;
    for (int i = 0; i < 10; ++i) sum = static_cast<std::uint16_t>(sum ^ Le16(header + 2 * i));
    return sum;
}

void MakePlaceableHeader(unsigned char out[kPlaceableBytes], std::int32_t width, std::int32_t height,
                         int resX, int resY) {
    std::fill_n(out, kPlaceableBytes, 0);
    const int inch = std::min(1440, TruncateToInt((static_cast<double>(resX) + resY) * 0.5));
    // The inch value comes first; the extents are measured in it.
    const std::int64_t right = resX ? std::int64_t(width) * inch / resX : 0;
    const std::int64_t bottom = resY ? std::int64_t(height) * inch / resY : 0;
    Put16(out, kPlaceableKey & 0xFFFF);
    Put16(out + 2, kPlaceableKey >> 16);
    Put16(out + 10, static_cast<std::uint32_t>(right));
    Put16(out + 12, static_cast<std::uint32_t>(bottom));
    Put16(out + 14, static_cast<std::uint32_t>(inch));
    Put16(out + 20, PlaceableChecksum(out));
}

bool ReadMetaFileBody(const char* fileName, int* width, int* height, int* units, MetaFileBody* body) {
    *body = MetaFileBody{};
    FileHolder in(fileName, plat::kOpenRead);
    if (!in) return false;
    unsigned char head[kPlaceableBytes] = {};
    if (plat::FileRead(in.get(), head, 4) != 4) {
        LastImgError = kErrIO;
        return false;
    }
    plat::FileSeek(in.get(), 0, plat::kSeekSet);
    const bool placeable = Le32(head) == kPlaceableKey;
    if (placeable) {
        // The checksum is not verified: a header with a wrong one still counts.
        plat::FileRead(in.get(), head, kPlaceableBytes);
        *width = static_cast<std::int16_t>(Le16(head + 10)) - static_cast<std::int16_t>(Le16(head + 6));
        *height = static_cast<std::int16_t>(Le16(head + 12)) - static_cast<std::int16_t>(Le16(head + 8));
        *units = Le16(head + 14);
    }
    unsigned char meta[kMetaHeaderBytes] = {};
    plat::FileRead(in.get(), meta, kMetaHeaderBytes);
    // mtSize counts 16-bit words; the block is twice what they need.
    const std::uint64_t words = Le32(meta + 6);
    const long fileBytes = FileSizeOf(in.get());
    if (words * 4 > kMaxBlockBytes) {
        LastImgError = kErrMemory;
        return false;
    }
    // No more than the file holds can be read, so a lying size costs no more
    // memory than the file itself (and at least one byte is asked for).
    const std::uint64_t blockBytes = std::max<std::uint64_t>(1, std::min<std::uint64_t>(words * 4, fileBytes > 0 ? fileBytes : 0));
    OwnedBlock block(AllocBlock(blockBytes));
    BlockLock lock(block.get());
    if (!lock) {
        LastImgError = kErrMemory;
        return false;
    }
    plat::FileSeek(in.get(), placeable ? kPlaceableBytes : 0, plat::kSeekSet);
    const long got = plat::FileRead(in.get(), lock.get(), static_cast<long>(std::min(words * 2, blockBytes)));
    if (got <= 0) {
        LastImgError = kErrIO;
        return false;
    }
    lock.Unlock();
    body->bits = block.Release();
    body->bytes = got;
    return true;
}

bool MetaRecordsFit(const unsigned char* bits, std::uint64_t bytes) {
    if (bytes < kMetaHeaderBytes) return false;
    const std::uint64_t total = std::uint64_t(Le32(bits + 6)) * 2;
    if (total > bytes) return false;
    std::uint64_t at = kMetaHeaderBytes;
    while (at + 6 <= total) {
        const std::uint64_t size = std::uint64_t(Le32(bits + at)) * 2;
        if (size < 6 || size > total - at) return false;
        if (Le16(bits + at + 4) == 0) return true;  // the end-of-file record
        at += size;
    }
    return at == total;
}

int PixelsOfExtent(int extent, double resolution, int units) {
    if (units == 0) return 0;
    return TruncateToInt(extent * resolution / units);
}

void ClipboardFilePictureSize(std::int32_t mm, std::int32_t xExt, std::int32_t yExt, double rx, double ry,
                              int* width, int* height) {
    double w = rx * 5, h = ry * 5;
    switch (mm) {
        case 1: w = xExt, h = yExt; break;
        case 2: w = rx * 0.003937007874015748 * xExt, h = ry * 0.003937007874015748 * yExt; break;
        case 3: w = rx * 0.0003937007874015748 * xExt, h = ry * 0.0003937007874015748 * yExt; break;
        case 4: w = rx * 0.01 * xExt, h = ry * 0.01 * yExt; break;
        case 5: w = rx * 0.001 * xExt, h = ry * 0.001 * yExt; break;
        // Twips are multiplied by 20, not divided.
        case 6: w = xExt * 20.0, h = yExt * 20.0; break;
        case 7:
        case 8:
            if (xExt > 0) {
                w = rx * 0.0003937007874015748 * xExt, h = ry * 0.0003937007874015748 * yExt;
            } else if (mm == 7) {
                w = -static_cast<double>(xExt) * rx, h = -static_cast<double>(yExt) * ry;
            }
            break;
        default: break;
    }
    *width = TruncateToInt(w);
    *height = TruncateToInt(h);
}

void ClipboardPictureSize(std::int32_t mm, std::int32_t xExt, std::int32_t yExt, double resolution,
                          int* width, int* height) {
    double w = 0, h = 0;
    if (xExt != 0) {
        switch (mm) {
            case 1: w = xExt, h = yExt; break;
            case 2: w = xExt * 0.1 * kPerMillimetre * resolution, h = yExt * 0.1 * kPerMillimetre * resolution; break;
            case 3:
            case 7:
            case 8:
                w = xExt * 0.01 * kPerMillimetre * resolution, h = yExt * 0.01 * kPerMillimetre * resolution;
                break;
            case 4: w = xExt * 0.01 * resolution, h = yExt * 0.01 * resolution; break;
            case 5: w = xExt * 0.001 * resolution, h = yExt * 0.001 * resolution; break;
            case 6: w = xExt / 1440.0 * resolution, h = yExt / 1440.0 * resolution; break;
            default: break;
        }
    }
    if (TruncateToInt(w) != 0) *width = TruncateToInt(w);
    if (TruncateToInt(h) != 0) *height = TruncateToInt(h);
}

}  // namespace prism
