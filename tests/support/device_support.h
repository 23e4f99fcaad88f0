// What the Windows tests read back from the graphics system: pixel colours
// of DIBs, device bitmaps and windows, as 0xRRGGBB, top row first.
#pragma once

#include "support/test_support.h"

#include <cstdint>
#include <vector>

namespace testing_support {

using Colors = std::vector<std::uint32_t>;

// Every pixel of a packed DIB with a 40-byte header, through its table.
Colors ColorsOf(const Bytes& dib);
// As the graphics system reads a device bitmap; also its size.
Colors ColorsOf(HBITMAP bitmap, SIZE* size = nullptr);
// The client area of a window as the screen shows it, and its rectangle.
Colors ColorsOf(HWND window, RECT* client);

}  // namespace testing_support
