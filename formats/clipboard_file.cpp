// Clipboard files: one rendering turned into a bitmap, and a bitmap
// written as a file with one CF_DIB rendering.
#include "core/dib.h"
#include "core/errors.h"
#include "formats/clipboard_file_layout.h"
#include "formats/file_holder.h"
#include "formats/metafile_layout.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <algorithm>

namespace prism {
namespace {

constexpr long kPictureRecordBytes = 16;

std::int32_t Le32(const unsigned char* p) {
    return static_cast<std::int32_t>(std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
                                     std::uint32_t(p[3]) << 24);
}

// A CF_METAFILEPICT rendering: a picture record (mapping mode and extents)
// and the metafile's records, drawn at the size the mode gives on the
// screen.
HBITMAP LoadPictureRendering(HFILE file, const ClipboardEntry& entry) {
    // A rendering too short for its record fails as a short read.
    if (entry.length < kPictureRecordBytes) {
        LastImgError = kErrIO;
        return nullptr;
    }
    OwnedBlock record(ReadClipboardData(file, entry.offset, kPictureRecordBytes));
    if (!record) return nullptr;
    OwnedBlock bits(ReadClipboardData(file, entry.offset + kPictureRecordBytes, entry.length - kPictureRecordBytes));
    if (!bits) return nullptr;
    HMETAFILE made;
    std::int32_t mm, xExt, yExt;
    {
        BlockLock r(record.get()), b(bits.get());
        if (!r || !b) return nullptr;
        const std::uint32_t bytes = entry.length - kPictureRecordBytes;
        made = MetaRecordsFit(b.bytes(), bytes) ? gdi::SetMetaFileBitsEx(bytes, b.bytes()) : nullptr;
        mm = Le32(r.bytes());
        xExt = Le32(r.bytes() + 4);
        yExt = Le32(r.bytes() + 8);
    }
    gdi::OwnedMetaFile metafile(made);
    double rx, ry;
    {
        gdi::WindowDC screen;
        rx = gdi::GetDeviceCaps(screen.get(), LOGPIXELSX);
        ry = gdi::GetDeviceCaps(screen.get(), LOGPIXELSY);
    }
    int width, height;
    ClipboardFilePictureSize(mm, xExt, yExt, rx, ry, &width, &height);
    return metafile ? DrawMetaFileIntoBitmap(metafile.get(), width, height) : nullptr;
}

// The rendering of one format, the file positioned anywhere.
HANDLE LoadRendering(HFILE file, const ClipboardEntry& entry) {
    switch (entry.format) {
        case CF_TEXT: {
            OwnedBlock text(ReadClipboardData(file, entry.offset, entry.length));
            return text ? LoadASCIIIntoBitmap(text.get()) : nullptr;
        }
        case CF_BITMAP:
            // Handed over as it stands: the bytes are not interpreted.
            return ReadClipboardData(file, entry.offset, entry.length);
        case CF_METAFILEPICT:
            return LoadPictureRendering(file, entry);
        case CF_DIB: {
            OwnedBlock dib(ReadClipboardData(file, entry.offset, entry.length));
            return dib ? ConvertDIBToBitmap(dib.get()) : nullptr;
        }
        default:
            LastImgError = kErrClipboardFormat;
            return nullptr;
    }
}

}  // namespace
}  // namespace prism

using namespace prism;

// LoadClipboardFormat(fileName, format): the rendering of `format` in a
// clipboard file: a bitmap for CF_TEXT (drawn as text), CF_METAFILEPICT
// and CF_DIB, the raw bytes in a new block for CF_BITMAP.  0 on failure:
// code 3 (cannot open), 9 (no clipboard file), 14 (no such rendering, or
// a format other than these four), 4 (short read), 1 (no memory), or the
// code of the converter.
PRISM_API HANDLE WINAPI LoadClipboardFormat(LPCSTR fileName, WORD format) {
    FileHolder file(fileName, plat::kOpenRead);
    if (!file) {
        LastImgError = kErrOpenFile;
        return nullptr;
    }
    ClipboardEntry entry;
    const int code = FindClipboardEntry(file.get(), format, &entry);
    if (code != kErrNone) {
        LastImgError = code;
        return nullptr;
    }
    return LoadRendering(file.get(), entry);
}

// SaveClipboardFormat(fileName, bitmap): writes the bitmap as a clipboard
// file holding one CF_DIB rendering.  1 on success; 0 when the bitmap
// cannot be converted (no code) or the file cannot be made (code 3).
PRISM_API BOOL WINAPI SaveClipboardFormat(LPCSTR fileName, HBITMAP bitmap) {
    OwnedBlock dib(ConvertBitmapToDIB(bitmap, nullptr));
    if (!dib) return 0;
    FileHolder file(fileName, plat::kOpenCreate | plat::kOpenWrite);
    if (!file) {
        LastImgError = kErrOpenFile;
        return 0;
    }
    BlockLock lock(dib.get());
    if (!lock) return 0;
    // Header, table and pixels; the slack behind them is not written.
    const std::uint64_t length = kInfoHeaderSize + DibPaletteSize(lock.get()) +
                                 reinterpret_cast<const BITMAPINFOHEADER*>(lock.get())->biSizeImage;
    unsigned char header[kClipboardDataOffset];
    MakeClipboardFileHeader(header, static_cast<std::uint32_t>(length));
    plat::FileWrite(file.get(), header, kClipboardDataOffset);
    plat::FileWrite(file.get(), lock.get(), static_cast<long>(std::min<std::uint64_t>(length, lock.size())));
    return 1;
}
