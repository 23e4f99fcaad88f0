// Palette objects for POSIX: colour tables held by this layer, with a
// nearest-colour search in RGB.
#include "platform/platform.h"

#include <cstring>
#include <mutex>
#include <new>
#include <set>
#include <vector>

namespace {

struct PaletteObject {
    std::vector<unsigned char> rgb;  // red, green, blue per entry
    // Answers already found, one slot per hash of the colour: keeps
    // repeated searches on photographs cheap without changing any answer.
    static constexpr unsigned kMemoSlots = 4096;
    std::uint32_t memoColor[kMemoSlots];
    std::uint32_t memoIndex[kMemoSlots];
};

std::mutex& PaletteMutex() {
    static std::mutex m;
    return m;
}
std::set<PaletteObject*>& LivePalettes() {
    static std::set<PaletteObject*> live;
    return live;
}

unsigned MemoSlot(std::uint32_t color) {
    return ((color * 2654435761u) >> 20) & (PaletteObject::kMemoSlots - 1);
}

std::uint32_t Search(const PaletteObject& p, std::uint32_t color) {
    const int r = static_cast<int>(color & 0xFF);
    const int g = static_cast<int>((color >> 8) & 0xFF);
    const int b = static_cast<int>((color >> 16) & 0xFF);
    const size_t count = p.rgb.size() / 3;
    std::uint32_t best = 0;
    int bestDistance = 0x7FFFFFFF;
    for (size_t i = 0; i < count; ++i) {
        const int dr = p.rgb[i * 3] - r;
        const int dg = p.rgb[i * 3 + 1] - g;
        const int db = p.rgb[i * 3 + 2] - b;
        const int d = dr * dr + dg * dg + db * db;
        if (d < bestDistance) {  // strict: the lowest index wins a tie
            bestDistance = d;
            best = static_cast<std::uint32_t>(i);
            if (d == 0) break;
        }
    }
    return best;
}

}  // namespace

namespace plat {

HPALETTE CreatePalette(const void* logPalette) {
    if (!logPalette) return nullptr;
    const unsigned char* p = static_cast<const unsigned char*>(logPalette);
    const unsigned version = p[0] | p[1] << 8;
    const unsigned count = p[2] | p[3] << 8;
    if (version != 0x300 || count == 0) return nullptr;
    auto* object = new (std::nothrow) PaletteObject;
    if (!object) return nullptr;
    try {
        object->rgb.resize(static_cast<size_t>(count) * 3);
    } catch (...) {
        delete object;
        return nullptr;
    }
    for (unsigned i = 0; i < count; ++i) std::memcpy(&object->rgb[i * 3], p + 4 + i * 4, 3);
    // An empty slot holds a colour no query can have (the top byte is set).
    for (unsigned i = 0; i < PaletteObject::kMemoSlots; ++i) object->memoColor[i] = 0xFFFFFFFFu;
    std::lock_guard<std::mutex> guard(PaletteMutex());
    LivePalettes().insert(object);
    return static_cast<HPALETTE>(object);
}

std::uint32_t NearestPaletteIndex(HPALETTE palette, std::uint32_t colorRef) {
    if (!palette || (colorRef >> 24) != 0) return kNoPaletteIndex;
    std::lock_guard<std::mutex> guard(PaletteMutex());
    auto* object = static_cast<PaletteObject*>(palette);
    if (!LivePalettes().count(object)) return kNoPaletteIndex;
    const unsigned slot = MemoSlot(colorRef);
    if (object->memoColor[slot] == colorRef) return object->memoIndex[slot];
    const std::uint32_t index = Search(*object, colorRef);
    object->memoColor[slot] = colorRef;
    object->memoIndex[slot] = index;
    return index;
}

bool DeletePalette(HPALETTE palette) {
    if (!palette) return false;
    auto* object = static_cast<PaletteObject*>(palette);
    {
        std::lock_guard<std::mutex> guard(PaletteMutex());
        if (!LivePalettes().erase(object)) return false;
    }
    delete object;
    return true;
}

}  // namespace plat
