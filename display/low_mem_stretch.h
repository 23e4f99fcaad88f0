// The low-memory stretch switch and the stretcher of each depth.
#pragma once

#include "prism32.h"

namespace prism {

// Non-zero: direct painting stretches in software first (zero at load).
extern int LowMemStretchFlag;

// The stretcher for a depth, or null for depths without one (16, 32...).
using StretchRowsFn = HDIB (*)(const void* header, const unsigned char* pixels, int srcX, int srcY, int srcW,
                               int srcH, int dstW, int dstH);
StretchRowsFn StretchRowsFor(int bitCount);

}  // namespace prism
