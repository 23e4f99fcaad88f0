// The enlargement of a rubber-band gesture, in 32-bit floats.
#include "zoom/band_zoom.h"

#include "zoom/scale_steps.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace prism {
namespace {

// (client extent / band extent) times the old zoom num / den, at most the
// limit.  A den of 0 counts as zoom 1; a band of no extent gives an infinite
// quotient, which the limit takes.  An old zoom of 0 with such a band gives
// infinity times 0: counted as 0, as any band does with zoom 0.
float AxisFactor(LONG client, std::int64_t band, int num, int den) {
    const float f = den == 0 ? 1.0f : static_cast<float>(num) / static_cast<float>(den);
    float q = band == 0 ? INFINITY : static_cast<float>(client) / static_cast<float>(band);
    q *= f;
    if (std::isnan(q)) q = 0.0f;
    return q > kBandZoomLimit ? kBandZoomLimit : q;
}

}  // namespace

void WriteBandZoom(const RECT& client, RECT band, int* zoom) {
    OrderRect(&band);
    const float fx = AxisFactor(client.right, std::int64_t{band.right} - band.left, zoom[0], zoom[1]);
    const float fy = AxisFactor(client.bottom, std::int64_t{band.bottom} - band.top, zoom[2], zoom[3]);
    const int percent = TruncateToInt(static_cast<double>(std::min(fx, fy) * 100.0f));
    zoom[0] = zoom[2] = percent;
    zoom[1] = zoom[3] = 100;
}

}  // namespace prism
