// Logical palettes: from a DIB's colour table, from the display's system
// palette, and into the colour table of a DIB made from a device bitmap.
#include "core/device_palette.h"

#include "core/dib.h"
#include "core/dib_header.h"
#include "core/errors.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <algorithm>

namespace prism {
namespace {

// The most entries a display's system palette has.  The system may write
// this many whatever count it is asked for, so palette blocks filled from
// it always have room for them.
constexpr int kSystemEntries = 256;

// Entries of the display's palette: SIZEPALETTE, or NUMCOLORS where that
// is 0.  A true-colour display has no palette (0 and -1); its count is
// then what the system palette holds, which may be none.
int DisplayPaletteCount(HDC dc) {
    int count = gdi::GetDeviceCaps(dc, SIZEPALETTE);
    if (count == 0) count = gdi::GetDeviceCaps(dc, NUMCOLORS);
    if (count < 1 || count > kSystemEntries)
        count = static_cast<int>(std::min<UINT>(gdi::GetSystemPaletteEntries(dc, 0, 0, nullptr), kSystemEntries));
    return count;
}

}  // namespace

int FillDibColorTable(HPALETTE palette, BITMAPINFOHEADER* header) {
    if (!palette) {
        DefaultDibColorTable(header);
        return 1;
    }
    const unsigned count = gdi::PaletteCount(palette);
    // A palette larger than the table is passed over whole.
    if (count > DibColorCount(header)) {
        DefaultDibColorTable(header);
        return 1;
    }
    OwnedBlock work(AllocBlock(4 * static_cast<std::uint64_t>(count) + 4));
    BlockLock entries(work.get());
    if (!entries) return 0;
    auto* e = static_cast<PALETTEENTRY*>(entries.get());
    gdi::GetPaletteEntries(palette, 0, count, e);
    auto* q = reinterpret_cast<RGBQUAD*>(reinterpret_cast<unsigned char*>(header) + kInfoHeaderSize);
    for (unsigned i = 0; i < count; ++i) q[i] = RGBQUAD{e[i].peBlue, e[i].peGreen, e[i].peRed, 0};
    return 1;
}

// CreateDIBPalette(dib): a logical palette of the image's colour table, or
// 0 for a null or unlockable block and an image without a table (no code
// for these), or with code 10 when memory or the palette fails.  The table
// is read as 4-byte entries behind a 40-byte header; entries past the end
// of the block read as 0.
PRISM_API HPALETTE WINAPI CreateDIBPalette(HDIB dib) {
    if (!dib) return nullptr;
    BlockLock lock(dib);
    if (!lock) return nullptr;
    const std::uint64_t blockBytes = lock.size();
    BITMAPINFOHEADER header;
    CopyHeaderBytes(lock.get(), blockBytes, &header);
    const std::uint32_t count = DibColorCount(&header);
    if (count == 0) return nullptr;
    OwnedBlock work(AllocBlock(LogPaletteBytes(count)));
    BlockLock record(work.get());
    if (!record) {
        LastImgError = kErrCreatePalette;
        return nullptr;
    }
    const std::uint64_t tableBytes = blockBytes > kInfoHeaderSize ? blockBytes - kInfoHeaderSize : 0;
    FillLogPalette(record.bytes(), lock.bytes() + kInfoHeaderSize, tableBytes, count);
    HPALETTE palette = plat::CreatePalette(record.get());
    if (!palette) LastImgError = kErrCreatePalette;
    return palette;
}

// GetCurrentPalette(): a new palette with the colours of the display's
// system palette.  Code 2 without a screen context, 10 when memory or the
// palette fails (also for a display whose system palette holds nothing).
PRISM_API HPALETTE WINAPI GetCurrentPalette(void) {
    gdi::WindowDC screen;
    if (!screen) {
        LastImgError = kErrCreateDC;
        return nullptr;
    }
    const int count = DisplayPaletteCount(screen.get());
    OwnedBlock work(AllocBlock(LogPaletteBytes(kSystemEntries)));
    BlockLock record(work.get());
    if (!record || count < 1) {
        LastImgError = kErrCreatePalette;
        return nullptr;
    }
    auto* lp = static_cast<LOGPALETTE*>(record.get());
    lp->palVersion = 0x300;
    lp->palNumEntries = static_cast<WORD>(count);
    gdi::GetSystemPaletteEntries(screen.get(), 0, static_cast<UINT>(count), lp->palPalEntry);
    screen.Release();
    HPALETTE palette = plat::CreatePalette(lp);
    if (!palette) LastImgError = kErrCreatePalette;
    return palette;
}

// GetSystemPalette(entries): fills one entry per system palette entry with
// the colour the display shows for it (blue, green, red, 0) and gives 1;
// 0, with nothing written, on a display without a palette or without a
// screen context.  The palette made on the way is deleted again.
PRISM_API BOOL WINAPI GetSystemPalette(RGBQUAD* entries) {
    gdi::WindowDC screen;
    if (!screen || !entries) return FALSE;
    const int size = gdi::GetDeviceCaps(screen.get(), SIZEPALETTE);
    if (size <= 0) return FALSE;
    gdi::Owned<HPALETTE> palette(GetCurrentPalette());
    gdi::PaletteSelection selected(screen.get(), palette.get());
    gdi::RealizePalette(screen.get());
    for (int i = 0; i < size; ++i) {
        const COLORREF c = gdi::GetNearestColor(screen.get(), PALETTEINDEX(i));
        entries[i] = RGBQUAD{GetBValue(c), GetGValue(c), GetRValue(c), 0};
    }
    return TRUE;
}

}  // namespace prism
