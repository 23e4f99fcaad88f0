// Fuzzes format detection and the load dispatch on any bytes.  Codec
// modules are absent here, so their rows end in a (silenced) message.
#include "support.h"

#include "platform/platform.h"

namespace {
int Silence(const char*, const char*, unsigned, void*) { return plat::kIdOk; }
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    static const bool silenced = (plat::ObserveMessages(&Silence, nullptr), true);
    (void)silenced;
    if (fuzz::ClaimedPixelBytes(data, size) > fuzz::kMaxClaim) return 0;
    fuzz::MemoryFile file(data, size);
    if (file.handle() < 0) return 0;
    GetImageFormat(file.path().c_str());
    GetNumberOfImagesInFaxFile(file.path().c_str());
    int status = 0;
    UINT page = size ? data[size - 1] % 5 : 1;
    fuzz::Free(LoadImageIntoDIB(file.path().c_str(), page, &status));
    return 0;
}
