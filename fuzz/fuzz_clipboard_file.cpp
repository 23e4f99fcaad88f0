// Fuzzes the clipboard file directory: the walk for each of the formats
// the library reads, and the read of the entry's data.
#include "support.h"

#include "formats/clipboard_file_layout.h"
#include "platform/platform.h"

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::MemoryFile file(data, size);
    if (file.handle() < 0) return 0;
    for (std::uint16_t format : {1, 2, 3, 8}) {
        ::lseek(file.handle(), 0, SEEK_SET);
        prism::ClipboardEntry entry;
        if (prism::FindClipboardEntry(file.handle(), format, &entry) != 0) continue;
        fuzz::Free(prism::ReadClipboardData(file.handle(), entry.offset, entry.length));
    }
    return 0;
}
