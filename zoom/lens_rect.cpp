// The lens record, its size, and the source rectangle a lens shows.
#include "zoom/magnifier.h"

#include "platform/export.h"

#include <cstdint>

namespace prism {

Magnifier TheMagnifier = {0, nullptr, nullptr, nullptr, nullptr, nullptr, 180, 80, 0, 0};

}  // namespace prism

// M_SetSizes(width, height): the lens size, unchecked; it takes effect at
// the next M_StartMagnify, which makes the lens bitmap.  Always 1.
PRISM_API BOOL WINAPI M_SetSizes(UINT width, UINT height) {
    prism::TheMagnifier.lensWidth = width;
    prism::TheMagnifier.lensHeight = height;
    return 1;
}

// M_GetWidth(), M_GetHeight(): the lens size, 180 by 80 until set.
PRISM_API UINT WINAPI M_GetWidth(void) { return prism::TheMagnifier.lensWidth; }

PRISM_API UINT WINAPI M_GetHeight(void) { return prism::TheMagnifier.lensHeight; }

// M_CalcRect(x, y, zoom, rect): the source rectangle of a lens centred on
// (x, y) at zoom[0] / zoom[1] in X and zoom[2] / zoom[3] in Y, inside the
// frame.  Only magnification of at least 1 is taken: any other zoom pair is
// set to 10 / 10 in the caller's array.  The rectangle is not limited to an
// image.  1, or 0 (nothing written) for a null pointer or a Y pair with a 0.
PRISM_API BOOL WINAPI M_CalcRect(int x, int y, int* zoom, RECT* rect) {
    using namespace prism;
    if (!zoom || !rect || zoom[2] == 0 || zoom[3] == 0) return 0;
    if (zoom[1] > zoom[0] || zoom[0] == 0) zoom[0] = zoom[1] = 10;
    if (zoom[2] < zoom[3]) zoom[2] = zoom[3] = 10;
    // 64-bit: a lens of any size times any zoom stays exact; the sides wrap
    // to 32 bits as the rectangle holds them.
    const std::int64_t w = std::int64_t{zoom[1]} * (std::int64_t{LensWidth()} - 2 * kLensFrame) / zoom[0];
    const std::int64_t h = std::int64_t{zoom[3]} * (std::int64_t{LensHeight()} - 2 * kLensFrame) / zoom[2];
    const std::int64_t left = x - w / 2, top = y - h / 2;
    rect->left = static_cast<LONG>(left);
    rect->right = static_cast<LONG>(left + w);
    rect->top = static_cast<LONG>(top);
    rect->bottom = static_cast<LONG>(top + h);
    return 1;
}
