// Shared pieces of the benchmarks: test images and the smoke switch.
#pragma once

#include "prism32.h"

#include <cstdint>

namespace bench {

// True under --smoke: every benchmark runs once on a tiny image, so CI can
// prove they still work without spending time on them.
bool Smoke();

// Image size of the full runs (4000 by 3000) or of the smoke run.
int Width();
int Height();

// A new image of the given depth with a smooth gradient and some edges;
// palette images get a grey ramp.  The caller frees it.
HDIB MakeImage(int width, int height, int bitCount);

// Pixel bytes of an image (its rows), for bytes-per-second figures.
std::int64_t PixelBytes(HDIB dib);

}  // namespace bench
