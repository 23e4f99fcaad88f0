// The layout of the DisplayCPP family.
#include "display/cpp_layout.h"

#include "display/display_math.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace {

// Rounding as everywhere in this family: add 0.5, truncate.
int Round(float v) { return TruncateToInt(static_cast<double>(v + 0.5f)); }

}  // namespace

UINT ComputeCppLayout(int logPixelsX, int logPixelsY, CppLayout* l, const int* zoom, int* position,
                      bool scrollOutputs, UINT flags) {
    if (flags & DF_STRETCH) return DF_STRETCH | (flags & DF_NEGATIVE);
    const int cw = l->client.right, ch = l->client.bottom;
    const int iw = l->image.right, ih = l->image.bottom;
    float sx = 1.0f, sy = 1.0f;
    if (zoom && zoom[0] > 0 && zoom[1] > 0 && zoom[2] > 0 && zoom[3] > 0) {
        sx = static_cast<float>(zoom[0]) / static_cast<float>(zoom[1]);
        sy = static_cast<float>(zoom[2]) / static_cast<float>(zoom[3]);
    }
    int* res = l->resolution;
    if ((flags & DF_PHYSICAL) && res[0] > 0 && res[1] > 0) {
        sx *= static_cast<float>(logPixelsX) / static_cast<float>(res[0]);
        sy *= static_cast<float>(logPixelsY) / static_cast<float>(res[1]);
    } else {
        res[0] = logPixelsX;
        res[1] = logPixelsY;
        flags = (flags & ~static_cast<UINT>(DF_PHYSICAL)) | DF_ZOOMED;
    }
    if (static_cast<float>(iw) * sx > 32767.0f || static_cast<float>(ih) * sy > 32767.0f) sx = sy = 1.0f;
    const int W = Round(static_cast<float>(iw) * sx), H = Round(static_cast<float>(ih) * sy);
    if (flags & DF_FIT) {
        const float s = std::min(static_cast<float>(cw) / static_cast<float>(W),
                                 static_cast<float>(ch) / static_cast<float>(H));
        l->client.right = Round(s * static_cast<float>(W));
        l->client.bottom = Round(s * static_cast<float>(H));
    } else {
        int x = position[0] < 0 ? Round(static_cast<float>(res[0]) * static_cast<float>(position[2]) * 0.01f * sx)
                                : Round(static_cast<float>(position[0]) * sx) + position[2];
        int y = position[1] < 0 ? Round(static_cast<float>(res[1]) * static_cast<float>(position[3]) * 0.01f * sy)
                                : Round(static_cast<float>(position[1]) * sy) + position[3];
        x = std::max(x, 0);
        y = std::max(y, 0);
        position[2] = position[3] = 0;
        if (scrollOutputs) {
            std::memset(l->scrollRange, 0, sizeof(l->scrollRange));
            if (H > ch) l->scrollRange[3] = Round(static_cast<float>(H - ch) / sy / static_cast<float>(res[1]) * 100.0f);
            if (W > cw) l->scrollRange[2] = Round(static_cast<float>(W - cw) / sx / static_cast<float>(res[0]) * 100.0f);
        }
        // What is past the image is pulled back so the last client span stays full.
        if (W > cw) {
            if (cw + x > W) x = W - l->client.right;
        } else {
            x = 0;
            l->client.right = W;
        }
        if (H > ch) {
            if (ch + y > H) y = H - l->client.bottom;
        } else {
            y = 0;
            l->client.bottom = H;
        }
        l->image.left = Round(static_cast<float>(x) / sx);
        l->image.top = Round(static_cast<float>(y) / sy);
        l->image.right = l->image.left + Round(static_cast<float>(l->client.right) / sx);
        l->image.bottom = l->image.top + Round(static_cast<float>(l->client.bottom) / sy);
        position[0] = l->image.left;
        position[1] = l->image.top;
        if (scrollOutputs) {
            l->scrollPos[0] = Round(static_cast<float>(position[0]) * 100.0f / static_cast<float>(res[0]));
            l->scrollPos[1] = Round(static_cast<float>(position[1]) * 100.0f / static_cast<float>(res[1]));
        }
    }
    if (flags & DF_CENTRE) {
        const int left = (cw - l->client.right) / 2, top = (ch - l->client.bottom) / 2;
        l->client.left = left;
        l->client.right += left;
        l->client.top = top;
        l->client.bottom += top;
    }
    return flags & 0xFFFF;
}

}  // namespace prism
