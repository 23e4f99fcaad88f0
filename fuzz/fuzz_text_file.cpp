// Fuzzes text files: the read into a block and the measure of its lines,
// at a fuzzed line height and character width.
#include "support.h"

#include "formats/text_layout.h"
#include "platform/platform.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::MemoryFile file(data, size);
    if (file.handle() < 0) return 0;
    HGLOBAL text = prism::ReadTextFile(file.path().c_str());
    if (!text) return 0;
    if (auto* bytes = static_cast<const unsigned char*>(GlobalLock(text))) {
        const int lineHeight = size > 0 ? 1 + data[0] % 40 : 16;
        const int charWidth = size > 1 ? 1 + data[1] % 20 : 8;
        prism::MeasureTextLines(bytes, GlobalSize(text), lineHeight, charWidth);
        GlobalUnlock(text);
    }
    fuzz::Free(text);
    return 0;
}
