// Fuzzes colour fax descriptors.  The input is split at its first 0 byte:
// the descriptor text, then the bytes of a plane file it may name as
// "plane.bmp" (or name itself, through the path "self").
#include "support.h"

#include "platform/platform.h"

#include <cstring>
#include <string>

namespace {
int Silence(const char*, const char*, unsigned, void*) { return plat::kIdOk; }

std::string Replace(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    static const bool silenced = (plat::ObserveMessages(&Silence, nullptr), true);
    (void)silenced;
    const std::uint8_t* split = static_cast<const std::uint8_t*>(std::memchr(data, 0, size));
    size_t textBytes = split ? static_cast<size_t>(split - data) : size;
    if (split && fuzz::ClaimedPixelBytes(split + 1, size - textBytes - 1) > fuzz::kMaxClaim) return 0;
    fuzz::MemoryFile plane(split ? split + 1 : data, split ? size - textBytes - 1 : 0);
    if (plane.handle() < 0) return 0;

    // The descriptor's own path is known only once it exists, so it is
    // made empty first and written once its name can be put in.
    fuzz::MemoryFile descriptor(data, 0);
    if (descriptor.handle() < 0) return 0;
    std::string text(reinterpret_cast<const char*>(data), textBytes);
    text = Replace(text, "plane.bmp", plane.path());
    text = Replace(text, "self", descriptor.path());
    descriptor.Rewrite(text.data(), text.size());

    int status = 0;
    int page = textBytes ? static_cast<int>(data[0] % 4) : 1;
    fuzz::Free(LoadColorFaxPage(descriptor.path().c_str(), page, &status));
    GetNumberOfImagesInFaxFile(descriptor.path().c_str());
    return 0;
}
