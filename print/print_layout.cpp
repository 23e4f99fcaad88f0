// Page layout in inches.  Everything is 32-bit float arithmetic, in the
// order the job works it out, so placements match to the dot.
#include "print/print_layout.h"

#include <cstring>

namespace prism {

namespace {

// 1 / 39.37: pels per metre to dots per inch.
constexpr float kMetresPerInch = 0.025400052f;

// strtok without hidden state: skips leading delimiters, ends the token at
// the next one and leaves `*rest` behind it.
char* NextToken(char** rest, const char* delimiters) {
    char* s = *rest;
    if (!s) return nullptr;
    s += std::strspn(s, delimiters);
    if (*s == '\0') {
        *rest = s;
        return nullptr;
    }
    char* end = s + std::strcspn(s, delimiters);
    if (*end != '\0') *end++ = '\0';
    *rest = end;
    return s;
}

float Smaller(float a, float b) { return b < a ? b : a; }
float Larger(float a, float b) { return b > a ? b : a; }

}  // namespace

void ImageResolution(float deviceX, float deviceY, bool useImageDpi, const int* dpi,
                     std::int32_t xPelsPerMeter, std::int32_t yPelsPerMeter, float* x, float* y) {
    *x = deviceX;
    *y = deviceY;
    if (!useImageDpi) return;
    if (dpi) {
        *x = static_cast<float>(dpi[0]);
        *y = static_cast<float>(dpi[1]);
    } else if (xPelsPerMeter != 0 && yPelsPerMeter != 0) {
        *x = static_cast<float>(xPelsPerMeter) * kMetresPerInch;
        *y = static_cast<float>(yPelsPerMeter) * kMetresPerInch;
    }
}

PageLayout LayOutPage(const LayoutRequest& r) {
    PageLayout l = {};
    const float width = static_cast<float>(r.width), height = static_cast<float>(r.height);
    l.scale = 1.0f;
    if (r.scaleToFit) {
        const float inchesX = width / r.resolutionX, inchesY = height / r.resolutionY;
        const float sx = inchesX == 0.0f ? 1.0f : r.pageWidth / inchesX;
        const float sy = inchesY == 0.0f ? 1.0f : r.pageHeight / inchesY;
        l.scale = Smaller(sx, sy);
    }
    if (r.stretchToFit) {
        l.imageWidth = r.pageWidth;
        l.imageHeight = r.pageHeight;
        l.pixelsPerInchX = width / r.pageWidth;
        l.pixelsPerInchY = height / r.pageHeight;
    } else {
        l.pixelsPerInchX = r.resolutionX;
        l.pixelsPerInchY = r.resolutionY;
        l.imageWidth = width / r.resolutionX;
        l.imageHeight = height / r.resolutionY;
    }
    const float drawnWidth = l.imageWidth * l.scale, drawnHeight = l.imageHeight * l.scale;
    l.pixelsPerInchX /= l.scale;
    l.pixelsPerInchY /= l.scale;
    l.leftOffset = r.centerHorizontally ? (r.pageWidth - drawnWidth) * 0.5f : 0.0f;
    l.topOffset = r.centerVertically ? (r.pageHeight - drawnHeight) * 0.5f : 0.0f;
    l.image = {l.leftOffset, l.topOffset, l.leftOffset + drawnWidth, l.topOffset + drawnHeight};
    // Banding follows bit 1 of the scale's float pattern: off at exactly
    // 1.0, and at other scales as the bits of the number fall.
    std::uint32_t bits = 0;
    std::memcpy(&bits, &l.scale, sizeof bits);
    l.banded = (bits & 2u) != 0;
    return l;
}

bool IntersectPrintRect(InchRect* out, const InchRect& a, const InchRect& b) {
    InchRect r = {Larger(a.left, b.left), Larger(a.top, b.top), Smaller(a.right, b.right),
                  Smaller(a.bottom, b.bottom)};
    if (!(r.right > r.left) || !(r.top < r.bottom)) {
        *out = InchRect{0, 0, 0, 0};
        return false;
    }
    *out = r;
    return true;
}

PixelRect SourcePixels(const InchRect& rect, const PageLayout& l) {
    return {TruncateToInt((rect.left - l.leftOffset) * l.pixelsPerInchX + 0.5f),
            TruncateToInt((rect.top - l.topOffset) * l.pixelsPerInchY + 0.5f),
            TruncateToInt((rect.right - l.leftOffset) * l.pixelsPerInchX + 0.5f),
            TruncateToInt((rect.bottom - l.topOffset) * l.pixelsPerInchY + 0.5f)};
}

PixelRect DeviceDots(const InchRect& rect, float x, float y) {
    return {TruncateToInt(rect.left * x + 0.5f), TruncateToInt(rect.top * y + 0.5f),
            TruncateToInt(rect.right * x + 0.5f), TruncateToInt(rect.bottom * y + 0.5f)};
}

const char* FileNamePart(const char* path) {
    if (!path) return "";
    const char* slash = std::strrchr(path, '\\');
    return slash ? slash + 1 : path;
}

bool SplitDeviceProfile(char* text, char** name, char** driver, char** port) {
    char* rest = text;
    *name = NextToken(&rest, ",");
    *driver = NextToken(&rest, ", ");
    *port = NextToken(&rest, ", ");
    return *name && *driver && *port;
}

}  // namespace prism
