// BMP files and bare packed DIBs: reading the header and colour table,
// loading the whole image, writing a block out.
#include "core/dib_file.h"

#include "core/dib.h"
#include "core/errors.h"
#include "platform/export.h"

#include <cstring>

namespace prism {
namespace {

constexpr std::uint16_t kBmpMagic = 0x4D42;  // "BM"
constexpr long kFileHeaderBytes = 14;
// Colour tables larger than this are no image's; a header that claims one
// is refused as an invalid file rather than allocated.
constexpr std::uint32_t kMaxTableEntries = 65536;

std::uint32_t Le32(const unsigned char* p) {
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}
void PutLe16(unsigned char* p, std::uint16_t v) {
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}
void PutLe32(unsigned char* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

// Reads up to `count` bytes in pieces small enough for the file calls.
std::uint64_t ReadLarge(HFILE file, unsigned char* to, std::uint64_t count) {
    constexpr std::uint64_t kPiece = 1u << 30;
    std::uint64_t done = 0;
    while (done < count) {
        std::uint64_t want = count - done < kPiece ? count - done : kPiece;
        long got = plat::FileRead(file, to + done, static_cast<long>(want));
        if (got <= 0) break;
        done += static_cast<std::uint64_t>(got);
        if (static_cast<std::uint64_t>(got) < want) break;
    }
    return done;
}

bool WriteLarge(HFILE file, const unsigned char* from, std::uint64_t count, long* lastResult) {
    constexpr std::uint64_t kPiece = 1u << 30;
    std::uint64_t done = 0;
    *lastResult = 0;
    while (done < count) {
        std::uint64_t want = count - done < kPiece ? count - done : kPiece;
        *lastResult = plat::FileWrite(file, from + done, static_cast<long>(want));
        // Only a result of 0 counts as a failure; -1 passes.
        if (*lastResult == 0) return false;
        if (*lastResult < 0) return true;
        done += want;
    }
    return true;
}

}  // namespace

int ReadDibHeaderFields(HDIB dib, BITMAPINFOHEADER* fields) {
    if (!dib) return 0;
    BlockLock lock(dib);
    std::uint64_t size = lock.size();
    CopyHeaderBytes(lock.get(), size, fields);
    if (lock && size >= kCoreHeaderSize && fields->biSize != kInfoHeaderSize) {
        // A host's core header: spread its fields into the 40-byte form.
        const unsigned char* p = lock.bytes();
        BITMAPINFOHEADER h = {};
        h.biSize = fields->biSize;
        h.biWidth = p[4] | p[5] << 8;
        h.biHeight = p[6] | p[7] << 8;
        h.biPlanes = static_cast<WORD>(p[8] | p[9] << 8);
        h.biBitCount = static_cast<WORD>(p[10] | p[11] << 8);
        *fields = h;
    }
    if (fields->biSizeImage == 0)
        fields->biSizeImage = static_cast<DWORD>(
            static_cast<std::uint64_t>(fields->biHeight > 0 ? fields->biHeight : 0) *
            DibRowBytes(fields->biWidth, fields->biBitCount));
    if (fields->biClrUsed == 0) {
        BITMAPINFOHEADER asInfo = *fields;
        asInfo.biSize = kInfoHeaderSize;
        fields->biClrUsed = DibColorCount(&asInfo);
    }
    return 1;
}

}  // namespace prism

using namespace prism;

// Reads a file header (if the stream has one), the DIB header and the colour
// table from the file's current position, which counts as the start of
// everything.  The result always carries a 40-byte header and 4-byte table
// entries; the file is left at the first pixel byte.
PRISM_API HDIB WINAPI ReadDIBInfo(HFILE file) {
    if (file == plat::kBadFile) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    const long start = plat::FileSeek(file, 0, plat::kSeekCur);

    unsigned char fileHeader[kFileHeaderBytes];
    if (plat::FileRead(file, fileHeader, kFileHeaderBytes) != kFileHeaderBytes) {
        LastImgError = kErrIO;
        return nullptr;
    }
    std::uint32_t offBits = Le32(fileHeader + 10);
    if ((fileHeader[0] | fileHeader[1] << 8) != kBmpMagic) {
        // A bare packed DIB: no file header, pixels behind the colour table.
        offBits = 0;
        plat::FileSeek(file, start, plat::kSeekSet);
    }

    // Forty bytes are read whatever the header's kind, so a stream shorter
    // than that behind the file header fails even with a small core header.
    BITMAPINFOHEADER h;
    if (plat::FileRead(file, &h, sizeof(h)) != static_cast<long>(sizeof(h))) {
        LastImgError = kErrIO;
        return nullptr;
    }
    const std::uint32_t colors = DibColorCount(&h);
    const bool core = h.biSize == kCoreHeaderSize;
    if (core) {
        BITMAPCOREHEADER c;
        std::memcpy(&c, &h, sizeof(c));
        h.biWidth = c.bcWidth;
        h.biHeight = c.bcHeight;
        h.biPlanes = c.bcPlanes;
        h.biBitCount = c.bcBitCount;
        h.biCompression = 0;
        h.biSizeImage = 0;
        h.biXPelsPerMeter = 0;
        h.biYPelsPerMeter = 0;
        h.biClrUsed = colors;
        h.biClrImportant = colors;
        h.biSize = kInfoHeaderSize;
        plat::FileSeek(file, -28, plat::kSeekCur);  // back to just behind the 12 bytes
    } else if (h.biSize != kInfoHeaderSize) {
        LastImgError = kErrFileFormat;
        return nullptr;
    }

    // Rows are stored bottom first; negative sizes (top-down images) and
    // sizes whose pixel area leaves the 32-bit range are refused here so no
    // later step computes with a wrapped size.
    if (h.biWidth < 0 || h.biHeight < 0 || colors > kMaxTableEntries) {
        LastImgError = kErrFileFormat;
        return nullptr;
    }
    if (h.biSizeImage == 0) {
        std::uint64_t image = static_cast<std::uint64_t>(h.biHeight) * DibRowBytes(h.biWidth, h.biBitCount);
        if (image > kMaxBlockBytes) {
            LastImgError = kErrFileFormat;
            return nullptr;
        }
        h.biSizeImage = static_cast<DWORD>(image);
    }
    if (h.biClrUsed == 0) h.biClrUsed = DibColorCount(&h);

    // Out of memory is reported by the result alone; the older code stands.
    HDIB dib = AllocBlock(kInfoHeaderSize + std::uint64_t(colors) * 4);
    if (!dib) return nullptr;
    BlockLock lock(dib);
    if (!lock) {
        GlobalFree(dib);
        return nullptr;
    }
    unsigned char* p = lock.bytes();
    std::memcpy(p, &h, sizeof(h));
    if (colors > 0) {
        unsigned char* table = p + kInfoHeaderSize;
        // Short reads of the table are not failures: the block stays zeroed
        // where the file ended.
        if (!core) {
            ReadLarge(file, table, std::uint64_t(colors) * 4);
        } else {
            ReadLarge(file, table, std::uint64_t(colors) * 3);
            for (std::uint32_t i = colors; i-- > 0;) {
                unsigned char b = table[i * 3], g = table[i * 3 + 1], r = table[i * 3 + 2];
                table[i * 4] = b;
                table[i * 4 + 1] = g;
                table[i * 4 + 2] = r;
                table[i * 4 + 3] = 0;
            }
        }
    }
    if (offBits != 0) plat::FileSeek(file, start + static_cast<long>(offBits), plat::kSeekSet);
    return dib;
}

// Loads a BMP or a bare packed DIB.  The block grows once from the header
// block to its final size and the pixels arrive in one read.
PRISM_API HDIB WINAPI LoadDIBFromFile(LPCSTR fileName) {
    HFILE file = plat::FileOpen(fileName, plat::kOpenRead);
    if (file == plat::kBadFile) {
        LastImgError = kErrOpenFile;
        return nullptr;
    }
    HDIB dib = ReadDIBInfo(file);
    if (!dib) {
        plat::FileClose(file);
        return nullptr;
    }
    BITMAPINFOHEADER h;
    ReadDibHeaderFields(dib, &h);
    std::uint64_t tableBytes = std::uint64_t(h.biClrUsed) * 4;
    std::uint64_t total = kInfoHeaderSize + tableBytes + h.biSizeImage;
    HDIB grown = nullptr;
    if (total <= kMaxBlockBytes && total <= static_cast<std::uint64_t>(SIZE_MAX))
        grown = GlobalReAlloc(dib, static_cast<SIZE_T>(total), 0);
    if (!grown) {
        GlobalFree(dib);
        plat::FileClose(file);
        return nullptr;
    }
    dib = grown;
    {
        BlockLock lock(dib);
        if (lock) {
            unsigned char* bits = lock.bytes() + kInfoHeaderSize + tableBytes;
            // A short file is not a failure: the rows it lacks are left as
            // zeros rather than whatever the grown block held.
            std::uint64_t got = ReadLarge(file, bits, h.biSizeImage);
            if (got < h.biSizeImage) std::memset(bits + got, 0, static_cast<size_t>(h.biSizeImage - got));
        }
    }
    plat::FileClose(file);
    return dib;
}

// Writes the block as it stands, behind a file header: no field is
// normalised and slack at the block's end goes out too.
PRISM_API BOOL WINAPI SaveDIB(LPCSTR fileName, HDIB dib) {
    if (!dib) {
        LastImgError = kErrParameter;
        return 0;
    }
    // A block that cannot be locked is refused before any file is made.
    BlockLock lock(dib);
    if (!lock) return 0;
    // A file that is there already is written over in place and cut at
    // the end of what was written: emptying it first would have the system
    // free its cached pages and take new ones for the same bytes.
    const bool inPlace = plat::FileExists(fileName);
    HFILE file = inPlace ? plat::FileOpen(fileName, plat::kOpenReadWrite) : plat::kBadFile;
    if (file == plat::kBadFile) file = plat::FileOpen(fileName, plat::kOpenCreate | plat::kOpenReadWrite);
    if (file == plat::kBadFile) {
        LastImgError = kErrOpenFile;
        return 0;
    }
    plat::WaitCursor cursor;
    const std::uint64_t size = lock.size();
    // Header bytes past a too-small block read as 0.
    unsigned char header[kInfoHeaderSize] = {};
    std::memcpy(header, lock.get(), size < sizeof(header) ? static_cast<size_t>(size) : sizeof(header));
    std::uint64_t offBits = kFileHeaderBytes + Le32(header) + DibPaletteSize(header);

    unsigned char fileHeader[kFileHeaderBytes];
    PutLe16(fileHeader, kBmpMagic);
    PutLe32(fileHeader + 2, static_cast<std::uint32_t>(size + kFileHeaderBytes));
    PutLe16(fileHeader + 6, 0);
    PutLe16(fileHeader + 8, 0);
    PutLe32(fileHeader + 10, static_cast<std::uint32_t>(offBits));

    BOOL ok = 1;
    long result = plat::FileWrite(file, fileHeader, kFileHeaderBytes);
    if (result == 0) {
        LastImgError = kErrIO;
        ok = 0;
    } else if (!WriteLarge(file, lock.bytes(), size, &result)) {
        LastImgError = kErrIO;
        ok = 0;
    }
    // Bytes of the old file past the new end go, whatever was written.
    if (inPlace && plat::FileWrite(file, fileHeader, 0) != 0 && ok) {
        LastImgError = kErrIO;
        ok = 0;
    }
    plat::FileClose(file);
    return ok;
}
