// Device bitmaps to DIBs and back, a monochrome conversion, a plain copy,
// and the device-bitmap forms of the DIB file operations.
#include "core/device_palette.h"
#include "core/dib.h"
#include "core/dib_header.h"
#include "core/errors.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <cstring>

namespace prism {
namespace {

// Makes the device bitmap of an image in a context, through the image's
// palette where it has one.
HBITMAP BitmapInContext(HDC dc, HPALETTE palette, const BITMAPINFO* info, const void* bits) {
    gdi::PaletteSelection selected(dc, palette);
    gdi::RealizePalette(dc);
    return gdi::CreateDIBitmap(dc, &info->bmiHeader, CBM_INIT, bits, info, DIB_RGB_COLORS);
}

// The display's palette, leaving the last error as it was: the export that
// asks reports by its result alone.
HPALETTE CurrentPaletteQuietly() {
    const int saved = LastImgError;
    HPALETTE palette = GetCurrentPalette();
    LastImgError = saved;
    return palette;
}

}  // namespace

// ConvertBitmapToDIB(bitmap, palette): a new 40-byte-header DIB of the
// bitmap at depth 1, 4, 8 or 24 (15, 16 and 32 bits become 24), its colour
// table from the palette, from the display's palette (not at depth 1), or
// from the default tables, and then as the graphics system reads the rows.
// One scan line is read at a time through a line buffer.  The block keeps
// 10 bytes of slack behind the header.  0 on any failure; no error code.
PRISM_API HDIB WINAPI ConvertBitmapToDIB(HBITMAP bitmap, HPALETTE palette) {
    BITMAP bm;
    if (!bitmap || !gdi::BitmapRecord(bitmap, &bm)) return nullptr;
    BITMAPINFOHEADER header;
    InitDibHeader(&header, bm.bmWidth, bm.bmHeight, bm.bmPlanes * bm.bmBitsPixel);
    const std::uint64_t rowBytes = DibRowBytes(bm.bmWidth, header.biBitCount);
    std::uint64_t bytes;
    if (!DibBlockBytes(bm.bmWidth, bm.bmHeight, header.biBitCount, header.biClrUsed, &bytes)) return nullptr;
    // Header, table, rows and 10 bytes of slack behind the header.
    OwnedBlock block(AllocBlock(bytes + 10));
    BlockLock dib(block.get());
    OwnedBlock lineBlock(AllocBlock(rowBytes));
    BlockLock line(lineBlock.get());
    if (!dib || !line) return nullptr;
    std::memcpy(dib.get(), &header, sizeof(header));
    auto* info = static_cast<BITMAPINFO*>(dib.get());

    gdi::Owned<HPALETTE> current(!palette && header.biBitCount != 1 ? CurrentPaletteQuietly() : nullptr);
    if (current) palette = current.get();
    gdi::WindowDC screen;
    if (!screen) return nullptr;
    gdi::PaletteSelection selected(screen.get(), palette);
    if (palette) gdi::RealizePalette(screen.get());
    FillDibColorTable(palette, &info->bmiHeader);

    // The graphics system may rewrite the header and table it is handed
    // (biClrUsed 0, its own table); the rows stay where the block has them.
    unsigned char* bits = dib.bytes() + kInfoHeaderSize + DibPaletteSize(&header);
    for (LONG y = 0; y < bm.bmHeight; ++y) {
        gdi::GetDIBits(screen.get(), bitmap, static_cast<UINT>(y), 1, line.get(), info, DIB_RGB_COLORS);
        std::memcpy(bits + static_cast<std::uint64_t>(y) * rowBytes, line.get(), rowBytes);
    }
    dib.Unlock();
    return block.Release();
}

// ConvertDIBToBitmap(dib): a new device bitmap of the image, through its
// own palette.  A 1-bit image gives a monochrome bitmap whatever its two
// colours; the others a bitmap of the display's form.  0 for a null block
// or no screen context (no code), code 11 when the bitmap cannot be made,
// which includes a block too small for the rows its header claims.
PRISM_API HBITMAP WINAPI ConvertDIBToBitmap(HDIB dib) {
    if (!dib) return nullptr;
    gdi::Owned<HPALETTE> palette(CreateDIBPalette(dib));
    BlockLock lock(dib);
    DibView v;
    if (!lock || ViewDib(lock.get(), lock.size(), &v) != DibStatus::kOk || !PixelsForDevice(v)) {
        LastImgError = kErrCreateBitmap;
        return nullptr;
    }
    const unsigned planes = v.infoHeader ? lock.bytes()[12] | lock.bytes()[13] << 8
                                         : lock.bytes()[8] | lock.bytes()[9] << 8;
    const auto* info = static_cast<const BITMAPINFO*>(lock.get());
    HBITMAP bitmap;
    if (v.bitCount == 1 && planes == 1) {
        // A new memory context holds a 1-bit bitmap, so what is made in it
        // is monochrome.
        gdi::MemoryDC memory(nullptr);
        if (!memory) return nullptr;
        bitmap = BitmapInContext(memory.get(), palette.get(), info, v.bits);
    } else {
        gdi::WindowDC screen;
        if (!screen) return nullptr;
        bitmap = BitmapInContext(screen.get(), palette.get(), info, v.bits);
    }
    if (!bitmap) LastImgError = kErrCreateBitmap;
    return bitmap;
}

// ConvertToMonochromeBitmap(bitmap): a new 1-bit bitmap of the same size,
// each pixel black or white as the graphics system matches it.  Code 8 for
// a null handle or one that names no bitmap, 1 when memory is short, 2
// without a screen context.  The source stays.
PRISM_API HBITMAP WINAPI ConvertToMonochromeBitmap(HBITMAP bitmap) {
    BITMAP bm;
    if (!bitmap || !gdi::BitmapRecord(bitmap, &bm)) {
        LastImgError = kErrParameter;
        return nullptr;
    }
    plat::WaitCursor wait;
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colors[2];
    } info = {};
    const std::uint64_t bytes = DibRowBytes(bm.bmWidth, 1) * static_cast<std::uint64_t>(bm.bmHeight);
    info.header = BITMAPINFOHEADER{kInfoHeaderSize, bm.bmWidth, bm.bmHeight, 1, 1, 0, static_cast<DWORD>(bytes), 0, 0, 0, 0};
    info.colors[1] = RGBQUAD{255, 255, 255, 0};
    OwnedBlock block(AllocBlock(bytes));
    BlockLock bits(block.get());
    if (!bits) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    gdi::WindowDC screen;
    if (!screen) {
        LastImgError = kErrCreateDC;
        return nullptr;
    }
    const auto rows = static_cast<UINT>(bm.bmHeight);
    auto* bmi = reinterpret_cast<BITMAPINFO*>(&info);
    gdi::GetDIBits(screen.get(), bitmap, 0, rows, bits.get(), bmi, DIB_RGB_COLORS);
    HBITMAP mono = gdi::CreateBitmap(bm.bmWidth, bm.bmHeight, 1, 1, nullptr);
    if (mono) gdi::SetDIBits(screen.get(), mono, 0, rows, bits.get(), bmi, DIB_RGB_COLORS);
    return mono;
}

// DuplicateBitmap(bitmap): a new bitmap of the same form and bits.  Code 1
// when memory is short; code 7 when the bits cannot all be read, which
// includes a handle that names no bitmap.
PRISM_API HBITMAP WINAPI DuplicateBitmap(HBITMAP bitmap) {
    BITMAP bm;
    if (!gdi::BitmapRecord(bitmap, &bm)) {
        LastImgError = kErrCopyBits;
        return nullptr;
    }
    const std::uint64_t bytes = static_cast<std::uint64_t>(bm.bmPlanes) * static_cast<std::uint64_t>(bm.bmWidthBytes) *
                                static_cast<std::uint64_t>(bm.bmHeight);
    OwnedBlock block(AllocBlock(bytes));
    BlockLock bits(block.get());
    if (!bits) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    if (static_cast<std::uint64_t>(gdi::ReadBitmapBits(bitmap, bytes, bits.get())) != bytes) {
        LastImgError = kErrCopyBits;
        return nullptr;
    }
    bm.bmBits = bits.get();
    return gdi::CreateBitmapIndirect(&bm);
}

// LoadBitmapFromFile(name): the DIB file as a device bitmap; 0 with the
// loader's code, or as ConvertDIBToBitmap.
PRISM_API HBITMAP WINAPI LoadBitmapFromFile(LPCSTR fileName) {
    OwnedBlock dib(LoadDIBFromFile(fileName));
    if (!dib) return nullptr;
    return ConvertDIBToBitmap(dib.get());
}

// SaveBitmap(name, bitmap, palette): the bitmap, as ConvertBitmapToDIB
// makes it, saved as SaveDIB does; 0 when the conversion fails.  The
// temporary image is freed again.
PRISM_API BOOL WINAPI SaveBitmap(LPCSTR fileName, HBITMAP bitmap, HPALETTE palette) {
    OwnedBlock dib(ConvertBitmapToDIB(bitmap, palette));
    if (!dib) return FALSE;
    return SaveDIB(fileName, dib.get());
}

}  // namespace prism
