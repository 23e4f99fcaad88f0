// Reading text files and measuring their lines.
#include "formats/text_layout.h"

#include "core/dib.h"
#include "core/errors.h"
#include "formats/file_holder.h"

namespace prism {

HGLOBAL ReadTextFile(const char* fileName) {
    LastImgError = kErrOpenFile;
    FileHolder file(fileName, plat::kOpenRead);
    if (!file) return nullptr;
    LastImgError = kErrMemory;
    const long size = FileSizeOf(file.get());
    OwnedBlock block(size >= 0 ? AllocBlock(static_cast<std::uint64_t>(size) + 10) : nullptr);
    BlockLock lock(block.get());
    if (lock) {
        LastImgError = kErrIO;
        if (plat::FileRead(file.get(), lock.get(), size) == size) {
            lock.Unlock();
            return block.Release();
        }
    }
    return nullptr;
}

TextMeasure MeasureTextLines(const unsigned char* text, std::size_t bytes, int lineHeight, int charWidth) {
    TextMeasure m;
    const int heightLimit = 32767 - lineHeight;
    const int widthLimit = 32767 - charWidth;
    std::size_t i = 0;
    // Code 8 is the tab stop here, by design; a real tab (9) is one character.
    for (; i < bytes && text[i] != 0 && m.y < heightLimit; ++i) {
        switch (text[i]) {
            case 8:
                if (m.x < widthLimit) m.x += 8 * charWidth;
                break;
            case 13:
                m.y += lineHeight;
                m.x = 0;
                break;
            default:
                if (m.x < widthLimit) m.x += charWidth;
                break;
        }
    }
    m.used = i;
    m.cut = i < bytes && text[i] != 0;
    return m;
}

}  // namespace prism
