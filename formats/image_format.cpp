// What a file holds (GetImageFormat) and turning it into a DIB
// (LoadImageIntoDIB) through the library's own readers or a codec module.
#include "formats/formats.h"

#include "core/errors.h"
#include "formats/device_formats.h"
#include "platform/export.h"

#include <cstring>
#include <filesystem>
#include <system_error>

namespace prism {
namespace {

constexpr long kProbeBytes = 512;

std::uint16_t Le16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] | p[1] << 8); }
std::uint32_t Le32(const unsigned char* p) {
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}

// The name itself, in capitals, ends in "TGA"; content plays no part.
bool NamedTga(const char* fileName) {
    if (!fileName) return false;
    const size_t length = std::strlen(fileName);
    return length >= 3 && std::memcmp(fileName + length - 3, "TGA", 3) == 0;
}

// "srcdocid:" within the first 511 bytes; the search stops at the first
// zero, as a plain string search does, and never sees the 512th byte.
bool HoldsCalsHeader(const unsigned char* buffer) {
    static const char kTag[] = "srcdocid:";
    const size_t tagLength = sizeof(kTag) - 1;
    const void* zero = std::memchr(buffer, 0, kProbeBytes - 1);
    const size_t length = zero ? static_cast<size_t>(static_cast<const unsigned char*>(zero) - buffer)
                               : static_cast<size_t>(kProbeBytes - 1);
    for (size_t i = 0; i + tagLength <= length; ++i)
        if (std::memcmp(buffer + i, kTag, tagLength) == 0) return true;
    return false;
}

// Text: no byte below 6 among those read, and the first carriage return of
// the first 511 bytes has a line feed behind it.  The cut at the 512th byte
// belongs to the CALS search alone; here every byte read counts as read.  The carriage return is
// looked for whatever the count was, so a cleared buffer never passes.
bool LooksLikeText(const unsigned char* buffer, long count) {
    for (long i = 0; i < count; ++i)
        if (buffer[i] < 6) return false;
    const void* cr = std::memchr(buffer, 13, kProbeBytes - 1);
    if (!cr) return false;
    const unsigned char* p = static_cast<const unsigned char*>(cr);
    return p[1] == 10;  // at most index 511: inside the buffer
}

}  // namespace

// A bare descriptor name would send the system's profile reader to its own
// directory while the existence check looks in the working directory; the
// library resolves the name against the working directory once, so both
// look at the same file.
std::string DescriptorPath(const char* fileName) {
    if (!fileName || !*fileName) return std::string();
    std::error_code error;
    std::filesystem::path full = std::filesystem::absolute(std::filesystem::path(fileName), error);
    if (error) return std::string(fileName);
    return full.string();
}

}  // namespace prism

using namespace prism;

// Format code of a file, from its first 512 bytes and, for colour fax
// descriptors and TGA, from its profile keys and its name.  The tests run in
// a fixed order and the first that passes decides.
PRISM_API int WINAPI GetImageFormat(LPCSTR fileName) {
    // Cleared first, so a short or failed read leaves zeros behind the data.
    unsigned char buffer[kProbeBytes] = {};
    long count = -1;
    HFILE file = plat::FileOpen(fileName, plat::kOpenRead);
    if (file != plat::kBadFile) {
        count = plat::FileRead(file, buffer, kProbeBytes);
        plat::FileClose(file);
    }

    const std::uint16_t word0 = Le16(buffer);
    if (word0 == 0x4949 || word0 == 0x4D4D) return PRISM_FORMAT_TIFF;
    if (buffer[0] == 10) return PRISM_FORMAT_PCX;
    if (Le32(buffer) == 0x3ADE68B1u) return PRISM_FORMAT_DCX;
    if (std::memcmp(buffer, "GIF87a", 6) == 0) return PRISM_FORMAT_GIF;
    if (word0 == 0x4D42) return PRISM_FORMAT_BMP;
    if (word0 == 0xC350) return PRISM_FORMAT_CLIPBOARD;
    if (Le32(buffer) == 0x9AC6CDD7u || Le16(buffer + 2) == 18) return PRISM_FORMAT_METAFILE;
    if (GetNumberOfImagesInFaxFile(fileName) >= 1) return PRISM_FORMAT_COLORFAX;
    if (NamedTga(fileName)) return PRISM_FORMAT_TGA;
    if (HoldsCalsHeader(buffer)) return PRISM_FORMAT_CALS;
    if (LooksLikeText(buffer, count)) return PRISM_FORMAT_TEXT;
    return PRISM_FORMAT_NONE;
}

// "TotalPages" of a colour fax descriptor; -1 when the file is missing
// (code 3) or holds no such key (no code).
PRISM_API int WINAPI GetNumberOfImagesInFaxFile(LPCSTR descriptor) {
    if (!plat::FileExists(descriptor)) {
        LastImgError = kErrOpenFile;
        return -1;
    }
    return plat::ProfileInt("ColorFax", "TotalPages", -1, DescriptorPath(descriptor).c_str());
}

// Loads one page of an image file of any format the library can read.  A
// format that cannot be loaded sets code 9 and stores 9 through `status`;
// a missing module or entry shows one message and leaves both alone.
PRISM_API HDIB WINAPI LoadImageIntoDIB(LPCSTR fileName, UINT page, int* status) {
    switch (GetImageFormat(fileName)) {
        case PRISM_FORMAT_TIFF:
            // The TIFF reader is handed no status: the host's stays untouched.
            return LoadAlderThunk(fileName, page, nullptr);
        case PRISM_FORMAT_PCX:
            return LoadBirchThunk(fileName, status);
        case PRISM_FORMAT_DCX:
            return LoadBeechThunk(fileName, page, status);
        case PRISM_FORMAT_GIF:
            return LoadCedarThunk(fileName, page, status);
        case PRISM_FORMAT_TGA:
            return LoadElderThunk(fileName, 0);
        case PRISM_FORMAT_CALS:
            return LoadMapleThunk(fileName, 0);
        case PRISM_FORMAT_BMP:
            return LoadDIBFromFile(fileName);
        case PRISM_FORMAT_COLORFAX:
            return LoadColorFaxPage(fileName, static_cast<int>(page), status);
#ifdef _WIN32
        // Page and status play no part in these two.
        case PRISM_FORMAT_METAFILE:
            return LoadMetaFileRow(fileName);
        case PRISM_FORMAT_CLIPBOARD:
            return LoadClipboardFileRow(fileName);
#endif
        default:
            // None, text, and (without a graphics system) the metafile and
            // clipboard rows.
            LastImgError = kErrFileFormat;
            // A null status pointer is passed over rather than written.
            if (status) *status = kErrFileFormat;
            return nullptr;
    }
}
