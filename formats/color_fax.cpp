// Colour fax pages: a profile-format descriptor names one 1-bit image per
// colour plane, and the planes are merged into one 4-bit page.
#include "formats/formats.h"

#include "core/dib.h"
#include "core/dib_file.h"
#include "core/errors.h"
#include "platform/export.h"

#include <cstdio>
#include <cstring>

namespace prism {
namespace {

constexpr unsigned kFaxNameBytes = 128;
constexpr std::uint64_t kPageBitsOffset = 104;   // 40-byte header and 16 entries
constexpr std::uint64_t kPlaneBitsOffset = 48;   // 40-byte header and 2 entries, always

// A plane file may itself be a descriptor, and a descriptor may name
// itself.  Nesting stops at this depth, and one outermost call may open no
// more than this many nested descriptors in all (a descriptor of 255
// planes naming itself would otherwise multiply the work at every level).
// Past either limit the inner call fails as an unreadable file (code 9).
constexpr int kMaxDescriptorDepth = 4;
constexpr int kMaxNestedDescriptors = 16;
// The walk over "File%u" sections ends after this many sections; a
// descriptor that needs more is refused as an unreadable file, rather than
// read section by section for hours.
constexpr std::int64_t kMaxFileSections = 4096;

int faxDepth = 0;
int nestedDescriptors = 0;

struct DepthScope {
    DepthScope() { ++faxDepth; }
    ~DepthScope() { --faxDepth; }
    DepthScope(const DepthScope&) = delete;
    DepthScope& operator=(const DepthScope&) = delete;
};

// Page colour table, blue, green, red, 0: bit 3 red, bit 2 green, bit 1
// blue, and bit 0 raises whatever is on from 128 to 255.
const unsigned char kFaxTable[16][4] = {
    {0, 0, 0, 0},       {0, 0, 0, 0},     {128, 0, 0, 0},     {255, 0, 0, 0},
    {0, 128, 0, 0},     {0, 255, 0, 0},   {128, 128, 0, 0},   {255, 255, 0, 0},
    {0, 0, 128, 0},     {0, 0, 255, 0},   {128, 0, 128, 0},   {255, 0, 255, 0},
    {0, 128, 128, 0},   {0, 255, 255, 0}, {128, 128, 128, 0}, {255, 255, 255, 0},
};

HDIB Refuse(int* status) {
    LastImgError = kErrFileFormat;
    if (status) *status = kErrFileFormat;
    return nullptr;
}

// Shifts that would leave the word give 0 (planes past the fourth set fewer
// bits, and from the eighth on none).
unsigned char ShiftedBit(unsigned value, int planeNumber) {
    if (planeNumber < 0 || planeNumber > 7) return 0;
    return static_cast<unsigned char>(value >> planeNumber);
}

// ORs one source row into one target row.  Each source byte feeds four
// target bytes, a pair of pixels each: the first sets `high`, the second
// `low`.  Only `srcAvail` source bytes and `dstAvail` target bytes lie in
// their blocks; source bytes past that read as 0 (and so set nothing), and
// target bytes past that are not written.  An odd remainder ends at the
// row's last pixel, which sets only its high-nibble bit.
void MergeRow(const unsigned char* src, std::uint64_t srcAvail, unsigned char* dst, std::uint64_t dstAvail,
              std::uint64_t wholeBytes, unsigned remainder, const unsigned char (*spread)[4],
              unsigned char high, unsigned char low) {
    std::uint64_t n = wholeBytes < srcAvail ? wholeBytes : srcAvail;
    std::uint64_t fast = n < dstAvail / 4 ? n : dstAvail / 4;
    for (std::uint64_t b = 0; b < fast; ++b) {
        const unsigned char s = src[b];
        if (!s) continue;
        unsigned char* d = dst + 4 * b;
        d[0] |= spread[s][0];
        d[1] |= spread[s][1];
        d[2] |= spread[s][2];
        d[3] |= spread[s][3];
    }
    for (std::uint64_t b = fast; b < n; ++b)
        for (std::uint64_t k = 0; k < 4 && 4 * b + k < dstAvail; ++k) dst[4 * b + k] |= spread[src[b]][k];
    if (remainder == 0 || wholeBytes >= srcAvail) return;
    unsigned s = src[wholeBytes];
    for (unsigned left = remainder, k = 0; left > 0; ++k) {
        const std::uint64_t t = 4 * wholeBytes + k;
        if (t < dstAvail) {
            if (s & 0x80) dst[t] |= high;
            if (left >= 2 && (s & 0x40)) dst[t] |= low;
        }
        s = (s << 2) & 0xFF;
        left = left >= 2 ? left - 2 : 0;
    }
}

}  // namespace

HDIB CreateFaxPageDib(std::int32_t width, std::int32_t height, std::int32_t xPelsPerMeter,
                      std::int32_t yPelsPerMeter) {
    HDIB page = NewDib(width, height, 4, 16);
    if (!page) return nullptr;
    BlockLock lock(page);
    if (!lock) {
        GlobalFree(page);
        return nullptr;
    }
    BITMAPINFOHEADER h;
    std::memcpy(&h, lock.get(), sizeof(h));
    h.biXPelsPerMeter = xPelsPerMeter;
    h.biYPelsPerMeter = yPelsPerMeter;
    h.biClrUsed = 16;
    h.biClrImportant = 16;
    std::memcpy(lock.get(), &h, sizeof(h));
    std::memcpy(lock.bytes() + kInfoHeaderSize, kFaxTable, sizeof(kFaxTable));
    return page;
}

int MergeFaxPlane(HDIB page, HDIB plane, int planeNumber) {
    BlockLock source(plane);
    if (!source) return 0;
    BlockLock target(page);
    if (!target) return 0;
    const std::uint64_t sourceBytes = source.size();
    const std::uint64_t targetBytes = target.size();
    BITMAPINFOHEADER planeHeader, pageHeader;
    CopyHeaderBytes(source.get(), sourceBytes, &planeHeader);
    CopyHeaderBytes(target.get(), targetBytes, &pageHeader);

    const unsigned char high = ShiftedBit(128, planeNumber);
    const unsigned char low = ShiftedBit(8, planeNumber);
    // The four target bytes each source byte ORs in, by pairs of pixels
    // from its top bit down.
    unsigned char spread[256][4];
    for (unsigned s = 0; s < 256; ++s)
        for (unsigned k = 0; k < 4; ++k) {
            const unsigned pair = s >> (6 - 2 * k);
            spread[s][k] = static_cast<unsigned char>(((pair & 2) ? high : 0) | ((pair & 1) ? low : 0));
        }

    const std::int64_t width = planeHeader.biWidth;
    const std::int64_t height = planeHeader.biHeight;
    if (width <= 0 || height <= 0 || sourceBytes <= kPlaneBitsOffset || targetBytes <= kPageBitsOffset)
        return 1;
    // Source rows have the 1-bit stride of the plane's width, target rows
    // the 4-bit stride of the page's; both are walked from the last stored
    // row down, as many rows as the plane has.
    const std::uint64_t sourceStride = DibRowBytes(width, 1);
    const std::uint64_t targetStride = DibRowBytes(pageHeader.biWidth > 0 ? pageHeader.biWidth : 0, 4);
    const std::int64_t pageHeight = pageHeader.biHeight;
    // Source rows that start past the block's end read as 0 and change
    // nothing, so the walk starts at the last row that lies in the block.
    const std::uint64_t rowsInBlock = (sourceBytes - kPlaneBitsOffset + sourceStride - 1) / sourceStride;
    std::int64_t sourceRow = height - 1;
    if (static_cast<std::uint64_t>(sourceRow) >= rowsInBlock) sourceRow = static_cast<std::int64_t>(rowsInBlock) - 1;
    const std::uint64_t wholeBytes = static_cast<std::uint64_t>(width) / 8;
    const unsigned remainder = static_cast<unsigned>(width % 8);
    unsigned char* const sourceBase = source.bytes();
    unsigned char* const targetBase = target.bytes();
    for (; sourceRow >= 0; --sourceRow) {
        // Plane rows below the page's first row would land before its
        // pixels; they are dropped.
        const std::int64_t targetRow = pageHeight - 1 - (height - 1 - sourceRow);
        if (targetRow < 0) break;
        const std::uint64_t sourceAt = kPlaneBitsOffset + static_cast<std::uint64_t>(sourceRow) * sourceStride;
        const std::uint64_t targetAt = kPageBitsOffset + static_cast<std::uint64_t>(targetRow) * targetStride;
        if (targetAt >= targetBytes) continue;
        MergeRow(sourceBase + sourceAt, sourceBytes - sourceAt, targetBase + targetAt, targetBytes - targetAt,
                 wholeBytes, remainder, spread, high, low);
    }
    return 1;
}

}  // namespace prism

using namespace prism;

// One page of a colour fax descriptor as a DIB: with one plane, the plane's
// image as loaded; with more, a 4-bit page with the planes merged.  A
// missing descriptor sets code 3 and stores 3 through `status`; a page out
// of range or a depth other than 1 gives 0 with no code.
PRISM_API HDIB WINAPI LoadColorFaxPage(LPCSTR descriptor, int page, int* status) {
    if (!plat::FileExists(descriptor)) {
        LastImgError = kErrOpenFile;
        if (status) *status = kErrOpenFile;
        return nullptr;
    }
    if (faxDepth == 0) nestedDescriptors = 0;
    else if (faxDepth >= kMaxDescriptorDepth || ++nestedDescriptors > kMaxNestedDescriptors)
        return Refuse(status);
    DepthScope scope;

    const std::string path = DescriptorPath(descriptor);
    auto number = [&](const char* section, const char* key, int fallback) {
        return plat::ProfileInt(section, key, fallback, path.c_str());
    };
    const int planes = number("ColorFax", "Planes", 0) & 0xFF;
    const int totalPages = number("ColorFax", "TotalPages", 0);
    const int firstPage = number("ColorFax", "FirstPage", 1);
    // Pages count from 1 here, whatever "FirstPage" says.
    if (page < 1) return nullptr;
    if (static_cast<std::int64_t>(page) > static_cast<std::int64_t>(totalPages) - firstPage + 1) return nullptr;
    const int files = number("ColorFax", "Files", 0);
    if (number("ColorFax", "BitsPixel", 0) != 1) return nullptr;

    char section[32];
    char name[kFaxNameBytes] = {};
    std::uint32_t filePage;
    // 32-bit arithmetic, wrapping as the descriptor's numbers do.
    const bool pageSections =
        static_cast<std::uint32_t>(files) == static_cast<std::uint32_t>(planes) * static_cast<std::uint32_t>(totalPages);
    if (pageSections) {
        // Every plane has a file of its own, named in the page's section.
        const std::uint32_t place = static_cast<std::uint32_t>(page) - static_cast<std::uint32_t>(firstPage) + 1u;
        std::snprintf(section, sizeof(section), "Page%d", static_cast<int>(place));
        plat::ProfileString(section, "Plane0", nullptr, name, kFaxNameBytes, path.c_str());
        filePage = static_cast<std::uint32_t>(page);
    } else {
        // Files of several pages each.  A page equal to the running total
        // stops the walk, so a file's range reaches one page past its
        // "Pages" value and the next file's first page is never reached.
        std::int64_t runningTotal = 1;
        std::int64_t startPage = 1;
        std::int64_t k = 1;
        std::uint32_t sectionNumber = static_cast<std::uint32_t>(firstPage);
        for (std::int64_t walked = 0;;) {
            if (files < k || page <= runningTotal) break;
            if (++walked > kMaxFileSections) return Refuse(status);
            sectionNumber = static_cast<std::uint32_t>(firstPage + k - 1);
            startPage = runningTotal;
            ++k;
            char fileSection[32];
            std::snprintf(fileSection, sizeof(fileSection), "File%u", sectionNumber);
            runningTotal += number(fileSection, "Pages", 0);
            if (k > files) break;
        }
        std::snprintf(section, sizeof(section), "File%u", sectionNumber);
        plat::ProfileString(section, "Name", nullptr, name, kFaxNameBytes, path.c_str());
        filePage = static_cast<std::uint32_t>((page - startPage) * planes + 1);
    }

    HDIB firstPlane = LoadImageIntoDIB(name, filePage, status);
    if (planes == 1) return firstPlane;
    // Without its first plane a page has no size: 0, and no further plane
    // is read.
    if (!firstPlane) return nullptr;
    BITMAPINFOHEADER h;
    ReadDibHeaderFields(firstPlane, &h);
    // No memory for the page is not tested here: every plane is still read
    // and dropped, the merges fail on the missing page, and 0 comes back.
    HDIB result = CreateFaxPageDib(h.biWidth, h.biHeight, h.biXPelsPerMeter, h.biYPelsPerMeter);
    MergeFaxPlane(result, firstPlane, 0);
    GlobalFree(firstPlane);
    for (int i = 1; i < planes; ++i) {
        if (pageSections) {
            char key[16];
            std::snprintf(key, sizeof(key), "Plane%d", i);
            plat::ProfileString(section, key, nullptr, name, kFaxNameBytes, path.c_str());
        } else {
            ++filePage;
        }
        // A plane that fails leaves its bit clear and is not reported.
        HDIB plane = LoadImageIntoDIB(name, filePage, status);
        if (plane) {
            MergeFaxPlane(result, plane, i);
            GlobalFree(plane);
        }
    }
    return result;
}
