// Page layout of a print job in inches, as 32-bit floats: the image's
// resolution, the fit and stretch scales, centring, the rectangles drawn
// per copy or band, and the text splits of the printer profile strings.
#pragma once

#include "core/numeric.h"

#include <cstdint>

namespace prism {

struct InchRect {
    float left, top, right, bottom;
};

struct PixelRect {
    int left, top, right, bottom;
};

struct LayoutRequest {
    std::uint32_t width, height;     // biWidth, biHeight, taken as unsigned
    float resolutionX, resolutionY;  // image dots per inch
    float pageWidth, pageHeight;     // printable area in inches
    bool scaleToFit, stretchToFit, centerHorizontally, centerVertically;
};

struct PageLayout {
    float scale;                     // S
    float pixelsPerInchX, pixelsPerInchY;  // RX, RY after the scale
    float imageWidth, imageHeight;   // inches before the scale
    float leftOffset, topOffset;     // inches
    InchRect image;                  // where the image lands, inches
    bool banded;
};

// The image's resolution: the device's, or with useImageDpi the caller's
// pair, or the header's pels per metre when both are non-zero.
void ImageResolution(float deviceX, float deviceY, bool useImageDpi, const int* dpi,
                     std::int32_t xPelsPerMeter, std::int32_t yPelsPerMeter, float* x, float* y);

PageLayout LayOutPage(const LayoutRequest& request);

// The overlap of two rectangles; false (and all zero) when it is empty.
bool IntersectPrintRect(InchRect* out, const InchRect& a, const InchRect& b);

// Source pixels of an image rectangle in inches, each edge rounded.
PixelRect SourcePixels(const InchRect& rect, const PageLayout& layout);
// Device dots of a rectangle in inches at the device's resolution.
PixelRect DeviceDots(const InchRect& rect, float dotsPerInchX, float dotsPerInchY);


// The text behind the last backslash of a path, or all of it.
const char* FileNamePart(const char* path);

// Cuts a "device" profile value in place: the name ends at a comma, driver
// and port at a comma or blank.  False when one of the three is missing.
bool SplitDeviceProfile(char* text, char** name, char** driver, char** port);

}  // namespace prism
