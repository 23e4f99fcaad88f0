// Metafiles played into device bitmaps: from a handle, and from a file
// with or without a placeable header.
#include "core/errors.h"
#include "formats/device_formats.h"
#include "formats/metafile_layout.h"
#include "core/dib.h"
#include "platform/export.h"
#include "platform/gdi.h"

namespace prism {
namespace {

// Larger bitmaps are not asked for: the halving goes on below this many
// bytes of pixels, so a lying picture size costs no more than this.
constexpr std::uint64_t kMaxBitmapBytes = std::uint64_t(1) << 28;

HBITMAP TryBitmap(int width, int height, int planes, int bitsPerPixel) {
    if (width <= 0 || height <= 0) return nullptr;  // a size of 0 or below makes no bitmap
    const std::uint64_t bytes = DibRowBytes(width, planes * bitsPerPixel) * static_cast<std::uint64_t>(height);
    if (bytes > kMaxBitmapBytes) return nullptr;
    return gdi::CreateBitmap(width, height, static_cast<UINT>(planes), static_cast<UINT>(bitsPerPixel), nullptr);
}

}  // namespace

HMETAFILE ReadMetaFile(const char* fileName, int* width, int* height, int* units) {
    MetaFileBody body;
    if (!ReadMetaFileBody(fileName, width, height, units, &body)) return nullptr;
    // The platform copies the records, so the block goes once they are in.
    OwnedBlock block(body.bits);
    BlockLock lock(block.get());
    HMETAFILE metafile = lock && MetaRecordsFit(lock.bytes(), static_cast<std::uint64_t>(body.bytes))
                             ? gdi::SetMetaFileBitsEx(static_cast<UINT>(body.bytes), lock.bytes())
                             : nullptr;
    if (!metafile) LastImgError = kErrCreateMetafile;
    return metafile;
}

}  // namespace prism

using namespace prism;

// DrawMetaFileIntoBitmap(metafile, width, height): a new bitmap of the
// display's form, white, with the metafile played into it at that size.
// When so large a bitmap cannot be made, both sides are halved until one
// can, while both are above 1; the picture is still played at the size
// asked for.  Code 1 when there is none; the metafile stays the caller's.
PRISM_API HBITMAP WINAPI DrawMetaFileIntoBitmap(HMETAFILE metafile, int width, int height) {
    gdi::WindowDC active(gdi::GetActiveWindow());
    const int planes = gdi::GetDeviceCaps(active.get(), PLANES);
    const int bitsPerPixel = gdi::GetDeviceCaps(active.get(), BITSPIXEL);
    int w = width, h = height;
    HBITMAP bitmap = TryBitmap(w, h, planes, bitsPerPixel);
    while (!bitmap && w > 1 && h > 1) {
        w /= 2;
        h /= 2;
        bitmap = TryBitmap(w, h, planes, bitsPerPixel);
    }
    gdi::MemoryDC memory(active.get());
    if (!bitmap) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    if (memory) {
        gdi::Selection brush(memory.get(), gdi::GetStockObject(WHITE_BRUSH));
        gdi::Selection selected(memory.get(), bitmap);
        gdi::PatBlt(memory.get(), 0, 0, w, h, PATCOPY);
        gdi::SetMapMode(memory.get(), MM_ANISOTROPIC);
        gdi::SetWindowExtEx(memory.get(), w, h, nullptr);
        gdi::SetViewportExtEx(memory.get(), width, height, nullptr);
        gdi::PlayMetaFile(memory.get(), metafile);
    }
    return bitmap;
}

// LoadMetaFileIntoBitmap(fileName): the picture of a metafile file as a
// bitmap, its size from the placeable header at the active window's
// resolution; a file without the header counts as 5 by 5 inches.  0 on
// failure, with the reader's code (none when the file cannot be opened).
PRISM_API HBITMAP WINAPI LoadMetaFileIntoBitmap(LPCSTR fileName) {
    plat::WaitCursor wait;
    double resX, resY;
    {
        gdi::WindowDC active(gdi::GetActiveWindow());
        resX = gdi::GetDeviceCaps(active.get(), LOGPIXELSX);
        resY = gdi::GetDeviceCaps(active.get(), LOGPIXELSY);
    }
    int width = 5, height = 5, units = 1;
    // Deleted once drawn: nothing uses the metafile afterwards.
    gdi::OwnedMetaFile metafile(ReadMetaFile(fileName, &width, &height, &units));
    if (!metafile) return nullptr;
    return DrawMetaFileIntoBitmap(metafile.get(), PixelsOfExtent(width, resX, units),
                                  PixelsOfExtent(height, resY, units));
}
