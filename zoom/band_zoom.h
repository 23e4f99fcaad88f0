// The enlargement that makes a dragged band fill the client area, for the
// rubber-band zoom.  Plain float work, compiled in every build.
#pragma once

#include "prism32.h"

namespace prism {

// The total zoom above which a band gesture does not go.
constexpr float kBandZoomLimit = 5.0f;

// From the client rectangle, a band (any corner order) and the zoom array
// as it stands (z0 / z1 in X, z2 / z3 in Y), writes the new zoom: the same
// percentage on both axes, over 100.
void WriteBandZoom(const RECT& client, RECT band, int* zoom);

}  // namespace prism
