// The directory of a clipboard file and the header a writer makes.
#include "formats/clipboard_file_layout.h"

#include "core/dib.h"
#include "core/errors.h"

#include <algorithm>

namespace prism {
namespace {

std::uint16_t Le16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] | p[1] << 8); }
std::uint32_t Le32(const unsigned char* p) { return Le16(p) | std::uint32_t(Le16(p + 2)) << 16; }
void Put(unsigned char* p, std::uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

}  // namespace

int FindClipboardEntry(HFILE file, std::uint16_t format, ClipboardEntry* entry) {
    unsigned char word[2] = {};
    if (plat::FileRead(file, word, 2) != 2 || Le16(word) != kClipboardFileId) return kErrFileFormat;
    word[0] = word[1] = 0;
    plat::FileRead(file, word, 2);
    const unsigned count = Le16(word);
    for (unsigned i = 0; i < count; ++i) {
        unsigned char raw[kClipboardEntryBytes];
        // A count that promises more entries than the file holds: the
        // rendering is not there.
        if (plat::FileRead(file, raw, kClipboardEntryBytes) != kClipboardEntryBytes) break;
        if (Le16(raw) != format) continue;
        entry->format = format;
        entry->length = Le32(raw + 2);
        entry->offset = Le32(raw + 6);
        return kErrNone;
    }
    return kErrClipboardFormat;
}

HGLOBAL ReadClipboardData(HFILE file, std::uint32_t offset, std::uint32_t bytes) {
    // An offset beyond the signed range of a seek cannot be in the file.
    if (offset > 0x7FFFFFFFu || plat::FileSeek(file, static_cast<long>(offset), plat::kSeekSet) < 0) {
        LastImgError = kErrIO;
        return nullptr;
    }
    // A length the file cannot hold fails its read; so that a lying length
    // costs no memory, the file's size is checked first.
    const long fileBytes = FileSizeOf(file);
    if (fileBytes < 0 || std::uint64_t(offset) + bytes > static_cast<std::uint64_t>(fileBytes)) {
        LastImgError = kErrIO;
        return nullptr;
    }
    OwnedBlock block(AllocBlock(std::max<std::uint32_t>(bytes, 1)));
    BlockLock lock(block.get());
    if (!lock) {
        LastImgError = kErrMemory;
        return nullptr;
    }
    if (bytes > 0x7FFFFFFFu || plat::FileRead(file, lock.get(), static_cast<long>(bytes)) != static_cast<long>(bytes)) {
        LastImgError = kErrIO;
        return nullptr;
    }
    lock.Unlock();
    return block.Release();
}

void MakeClipboardFileHeader(unsigned char out[kClipboardDataOffset], std::uint32_t length) {
    std::fill_n(out, kClipboardDataOffset, 0);
    Put(out, kClipboardFileId, 2);
    Put(out + 2, 1, 2);
    Put(out + 4, 8, 2);  // CF_DIB
    Put(out + 6, length, 4);
    Put(out + 10, kClipboardDataOffset, 4);
}

}  // namespace prism
