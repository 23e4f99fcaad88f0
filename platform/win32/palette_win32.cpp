// Palette objects on Windows: the GDI calls themselves.
#include "platform/platform.h"

namespace plat {

HPALETTE CreatePalette(const void* logPalette) {
    if (!logPalette) return nullptr;
    return ::CreatePalette(static_cast<const LOGPALETTE*>(logPalette));
}

std::uint32_t NearestPaletteIndex(HPALETTE palette, std::uint32_t colorRef) {
    if (!palette) return kNoPaletteIndex;
    return ::GetNearestPaletteIndex(palette, colorRef);
}

bool DeletePalette(HPALETTE palette) {
    if (!palette) return false;
    return ::DeleteObject(palette) != 0;
}

}  // namespace plat
