// The device layer's few calls that do more than forward.
#include "platform/gdi.h"

#include <climits>

namespace gdi {

bool BitmapRecord(HBITMAP bitmap, BITMAP* record) {
    *record = BITMAP{};
    if (!bitmap || ::GetObjectType(bitmap) != OBJ_BITMAP) return false;
    return ::GetObjectA(bitmap, sizeof(BITMAP), record) != 0;
}

unsigned PaletteCount(HPALETTE palette) {
    WORD count = 0;
    if (!palette || ::GetObjectType(palette) != OBJ_PAL) return 0;
    if (!::GetObjectA(palette, sizeof(count), &count)) return 0;
    return count;
}

long ReadBitmapBits(HBITMAP bitmap, std::uint64_t bytes, void* to) {
    if (bytes == 0 || bytes > LONG_MAX) return 0;
    return ::GetBitmapBits(bitmap, static_cast<LONG>(bytes), to);
}

long WriteBitmapBits(HBITMAP bitmap, std::uint64_t bytes, const void* from) {
    if (bytes == 0 || bytes > LONG_MAX) return 0;
    return ::SetBitmapBits(bitmap, static_cast<DWORD>(bytes), from);
}

}  // namespace gdi
