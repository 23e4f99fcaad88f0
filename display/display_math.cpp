// The arithmetic of the window display.
#include "display/display_math.h"

#include <algorithm>
#include <cmath>
#include <climits>

namespace prism {

Extents ReduceExtents(Extents e) {
    while (e.viewportX > 16 || e.viewportY > 16) {
        const Extents before = e;
        e = Extents{e.windowX / 2, e.windowY / 2, e.viewportX / 2, e.viewportY / 2};
        if (e.viewportX == 0) e.viewportX = 1;
        if (e.viewportY == 0) e.viewportY = 1;
        if (e.windowX == 0 || e.windowY == 0) return before;
    }
    return e;
}

FitSize FitViewport(int width, int height, int imageDpiX, int imageDpiY, int deviceDpiX, int deviceDpiY,
                    int clientWidth, int clientHeight) {
    // The resolution ratio is a 32-bit float, as are the scales.
    const float r = static_cast<float>(imageDpiX) / static_cast<float>(imageDpiY) / static_cast<float>(deviceDpiX) *
                    static_cast<float>(deviceDpiY);
    int w = width, h = height;
    if (r > 1.0f)
        w = TruncateToInt(static_cast<float>(w) / r);
    else
        h = TruncateToInt(static_cast<float>(h) * r);
    const float byHeight = static_cast<float>(clientHeight) / static_cast<float>(h);
    const float byWidth = static_cast<float>(clientWidth) / static_cast<float>(w);
    const float s = byHeight < byWidth ? byHeight : byWidth;
    return FitSize{TruncateToInt(s * static_cast<float>(w)), TruncateToInt(s * static_cast<float>(h))};
}

int ScrollRequest(int code, int old, int step, int page, int thumb, int minimum, int maximum,
                  bool thumbAtMinimum) {
    const std::int64_t line = std::max(step, 8);
    std::int64_t p = old;
    switch (code) {
        case 0: p = old - line; break;
        case 1: p = old + line; break;
        case 2: p = old - page / 2; break;
        case 3: p = old + page / 2; break;
        case 4:
        case 5:
            p = thumb;
            if (p == maximum) p += step;
            if (thumbAtMinimum && p == minimum) p -= step;
            break;
        case 6: p = minimum; break;
        case 7: p = maximum; break;
        default: break;
    }
    return static_cast<int>(std::clamp<std::int64_t>(p, INT_MIN, INT_MAX));
}

int LimitAndSnap(int position, int old, int step, int minimum, int maximum) {
    const std::int64_t low = static_cast<std::int64_t>(minimum) - step;
    const std::int64_t high = static_cast<std::int64_t>(maximum) + step;
    std::int64_t p = position;
    if (p < low) p = low;
    if (p > high) p = high;
    p = old + (p - old) / step * step;
    return static_cast<int>(std::clamp<std::int64_t>(p, INT_MIN, INT_MAX));
}

}  // namespace prism
