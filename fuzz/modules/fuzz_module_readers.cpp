// One fuzz target per reader of the codec modules, chosen at build time by
// PRISM_FUZZ_READER: fuzzed bytes as a file's whole contents, every image
// made freed again. A crash, a leak or a read outside the bytes is a finding.
#include "alder/tiff_access.h"
#include "birch/pcx.h"
#include "cedar/gif_access.h"
#include "elder/tga.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {
void Free(HDIB dib) {
    if (dib) GlobalFree(dib);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    int status = 0;
#if PRISM_FUZZ_READER == 1
    Free(PcxDecode(data, size, &status));
#elif PRISM_FUZZ_READER == 2
    Free(DcxDecodePage(data, size, 1, &status));
    Free(DcxDecodePage(data, size, 2, &status));
#elif PRISM_FUZZ_READER == 3
    Free(TgaDecode(data, size));
#elif PRISM_FUZZ_READER == 4
    Free(CalsDecode(data, size));
#elif PRISM_FUZZ_READER == 5
    // the reader never writes through the bytes; a copy keeps them const
    std::vector<BYTE> copy(data, data + size);
    TiffMemory memory = {};
    memory.data = copy.data(), memory.size = copy.size();
    if (TIFF* tif = TiffOpenMemory(&memory, "r")) {
        int noPage = 0;
        for (unsigned page = 0; page < 3 && !noPage; ++page) Free(TiffDecodePage(tif, &memory, page, &noPage));
        TIFFClose(tif);
    }
#elif PRISM_FUZZ_READER == 6
    Free(GifDecodeFrame(data, size, 0, &status));
    Free(GifDecodeFrame(data, size, 1, &status));
#endif
    (void)status;
    return 0;
}
