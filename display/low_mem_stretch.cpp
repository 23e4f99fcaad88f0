// The library-wide switch between the graphics system's stretching and the
// low-memory stretchers for direct painting.
#include "display/low_mem_stretch.h"

#include "display/stretch.h"
#include "platform/export.h"

namespace prism {

int LowMemStretchFlag = 0;

// GetLowMemStretch(): the switch as it stands.
PRISM_API int WINAPI GetLowMemStretch(void) { return LowMemStretchFlag; }

// SetLowMemStretch(value): stores any value (every non-zero one acts
// alike) and returns the one before.
PRISM_API int WINAPI SetLowMemStretch(int value) {
    const int previous = LowMemStretchFlag;
    LowMemStretchFlag = value;
    return previous;
}

}  // namespace prism

namespace prism {

StretchRowsFn StretchRowsFor(int bitCount) {
    switch (bitCount) {
        case 1: return StretchRows1;
        case 4: return StretchRows4;
        case 8: return StretchRows8;
        case 24: return StretchRows24;
        default: return nullptr;
    }
}

}  // namespace prism
