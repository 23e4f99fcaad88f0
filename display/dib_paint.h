// Drawing part of a DIB into a window's context, by the graphics system or
// through the low-memory stretchers.  Windows builds only.
#pragma once

#ifdef _WIN32
#include "core/dib.h"

namespace prism {

// Draws the source rectangle r (image pixels from the top) of a checked
// image into rc.  With the low-memory switch on and a stretcher for the
// depth, the image is first stretched in software to stretchW by stretchH
// and drawn from that; a stretcher that fails leaves it to the graphics
// system.
void StretchDibInto(HDC dc, const DibView& view, const RECT& r, const RECT& rc, int stretchW, int stretchH, DWORD rop);

}  // namespace prism
#endif  // _WIN32
