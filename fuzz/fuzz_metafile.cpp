// Fuzzes the metafile file reader: the placeable header, the body read
// into a block and the walk over its records, and the picture sizes.
#include "support.h"

#include "formats/metafile_layout.h"
#include "platform/platform.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::MemoryFile file(data, size);
    if (file.handle() < 0) return 0;
    int width = 5, height = 5, units = 1;
    prism::MetaFileBody body;
    if (prism::ReadMetaFileBody(file.path().c_str(), &width, &height, &units, &body)) {
        if (void* bits = GlobalLock(body.bits)) {
            prism::MetaRecordsFit(static_cast<const unsigned char*>(bits), static_cast<std::uint64_t>(body.bytes));
            GlobalUnlock(body.bits);
        }
        fuzz::Free(body.bits);
    }
    prism::PixelsOfExtent(width, 96, units);
    if (size >= 12) {
        std::int32_t v[3];
        std::memcpy(v, data, sizeof(v));
        int w = 640, h = 480;
        prism::ClipboardFilePictureSize(v[0] % 10, v[1], v[2], 96, 96, &w, &h);
        prism::ClipboardPictureSize(v[0] % 10, v[1], v[2], 96, &w, &h);
    }
    return 0;
}
