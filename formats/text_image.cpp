// Plain text drawn black on white into a monochrome bitmap.
#include "core/dib.h"
#include "core/errors.h"
#include "formats/text_layout.h"
#include "platform/export.h"
#include "platform/gdi.h"

namespace prism {
namespace {

// A 1-bit bitmap of the measured size; when none can be made the height
// is halved while it stays above one line.
HBITMAP MakeTextBitmap(int width, int* height, int lineHeight) {
    HBITMAP bitmap = gdi::CreateBitmap(width, *height, 1, 1, nullptr);
    while (!bitmap && lineHeight < *height) {
        *height /= 2;
        bitmap = gdi::CreateBitmap(width, *height, 1, 1, nullptr);
    }
    return bitmap;
}

}  // namespace
}  // namespace prism

using namespace prism;

// LoadASCIIIntoBitmap(text): the zero-terminated text of a block drawn in
// the default font of a memory context, black on white, into a new 1-bit
// bitmap of the size the text measures.  The block's last byte becomes 0.
// Text taller than 32767 pixels is cut at that line with one message; a
// bitmap that cannot be made at full height is made lower and the text
// squeezed into it.  0 on failure: code 1 (no lock, no bitmap), 2 (no
// context).  The block stays the caller's.
PRISM_API HBITMAP WINAPI LoadASCIIIntoBitmap(HGLOBAL text) {
    BlockLock lock(text);
    const std::uint64_t bytes = lock.size();
    if (!lock || bytes == 0) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    char* chars = static_cast<char*>(lock.get());
    chars[bytes - 1] = 0;  // so that the text ends somewhere
    gdi::WindowDC active(gdi::GetActiveWindow());
    gdi::MemoryDC memory(active.get());
    active.Release();
    if (!memory) {
        LastImgError = kErrCreateDC;
        return nullptr;
    }
    TEXTMETRICA metrics = {};
    gdi::GetTextMetricsA(memory.get(), &metrics);
    const int lineHeight = metrics.tmAscent + metrics.tmDescent + metrics.tmExternalLeading;
    const TextMeasure m = MeasureTextLines(lock.bytes(), bytes, lineHeight, metrics.tmAveCharWidth);
    if (m.cut) {
        chars[m.used] = 0;
        plat::ShowMessage("Lines truncated", "SORRY", 48);
    }
    // The library's own x is that of the last line; the system's measure
    // gives the longest.
    RECT rect = {0, 0, metrics.tmAveCharWidth + m.x, m.y + lineHeight};
    gdi::DrawTextA(memory.get(), chars, -1, &rect, DT_CALCRECT | DT_EXTERNALLEADING);
    const int width = rect.right - rect.left;
    const int measured = rect.bottom - rect.top;
    int height = measured;
    HBITMAP bitmap = MakeTextBitmap(width, &height, lineHeight);
    if (!bitmap) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    {
        gdi::Selection selected(memory.get(), bitmap);
        gdi::Selection brush(memory.get(), gdi::GetStockObject(WHITE_BRUSH));
        gdi::PatBlt(memory.get(), 0, 0, width, height, PATCOPY);
        // A lower bitmap shows the text squeezed, not cut.
        gdi::SetMapMode(memory.get(), MM_ANISOTROPIC);
        gdi::SetWindowExtEx(memory.get(), width, measured, nullptr);
        gdi::SetViewportExtEx(memory.get(), width, height, nullptr);
        gdi::DrawTextA(memory.get(), chars, -1, &rect, DT_NOCLIP | DT_EXTERNALLEADING);
    }
    return bitmap;
}

// LoadASCIIFile(fileName, notOem): a text file drawn as LoadASCIIIntoBitmap
// draws it; with notOem 0 the text is first taken from the OEM code page.
// 0 on failure: code 3 (cannot open), 1 (no memory), 4 (short read); once
// the file is read the code is 0, whether the drawing worked or not.
PRISM_API HBITMAP WINAPI LoadASCIIFile(LPCSTR fileName, BOOL notOem) {
    plat::WaitCursor wait;
    OwnedBlock text(ReadTextFile(fileName));
    if (!text) return nullptr;
    {
        BlockLock lock(text.get());
        if (!notOem && lock) gdi::OemToCharA(static_cast<char*>(lock.get()), static_cast<char*>(lock.get()));
    }
    HBITMAP bitmap = LoadASCIIIntoBitmap(text.get());
    LastImgError = kErrNone;
    return bitmap;
}
