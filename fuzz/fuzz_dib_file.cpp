// Fuzzes the BMP and packed-DIB reader: the header reader from a fuzzed
// start position, and the whole load followed by a save.
#include "support.h"

#include <cstring>
#include <unistd.h>


extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::MemoryFile file(data, size);
    if (file.handle() < 0) return 0;

    // The header reader, starting anywhere in the first few bytes.
    if (size > 0) ::lseek(file.handle(), data[0] % 4, SEEK_SET);
    fuzz::Free(ReadDIBInfo(file.handle()));

    if (fuzz::ClaimedPixelBytes(data, size) > fuzz::kMaxClaim) return 0;
    HDIB dib = LoadDIBFromFile(file.path().c_str());
    if (dib) {
        SaveDIB("/dev/null", dib);
        fuzz::Free(dib);
    }
    return 0;
}
