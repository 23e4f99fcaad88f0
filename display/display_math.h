// The arithmetic of the window display: extents, fit, scroll steps.  Plain
// numbers in and out, so it is the same in every build.
#pragma once

#include "core/numeric.h"

#include <cstdint>

namespace prism {

// Window and viewport extents of a mapping.
struct Extents {
    int windowX, windowY, viewportX, viewportY;
};

// Halves all four while a viewport extent is above 16 (truncating toward
// zero, a viewport value of 0 becoming 1), undoing the last halving and
// stopping where a window extent would become 0.  300:96 gives 37:12.
Extents ReduceExtents(Extents e);

// The viewport size of an image of width by height shown whole in a
// client area, keeping its proportions once unlike X and Y resolutions are
// corrected (one side always shrinks).  Sizes that would divide by zero
// stay defined (see TruncateToInt).
struct FitSize {
    int width, height;
};
FitSize FitViewport(int width, int height, int imageDpiX, int imageDpiY, int deviceDpiX, int deviceDpiY,
                    int clientWidth, int clientHeight);

// One axis of a scroll message: the position asked for by a scroll code
// (0 line back, 1 line on, 2 page back, 3 page on, 4 and 5 thumb, 6 start,
// 7 end; others keep the position) before limiting.  `step` is the
// viewport extent (at least 1), `page` the client span.  At a thumb value
// equal to the maximum one step is added; `thumbAtMinimum` also takes one
// off at a thumb value equal to the minimum (the vertical bar does).
int ScrollRequest(int code, int old, int step, int page, int thumb, int minimum, int maximum,
                  bool thumbAtMinimum);

// Limits a position to minimum - step .. maximum + step and snaps it to a
// whole number of steps away from `old`, truncating toward old.
int LimitAndSnap(int position, int old, int step, int minimum, int maximum);


}  // namespace prism
