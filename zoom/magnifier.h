// The one magnifying lens of the library: its record, built at load, and
// the device routines that draw it.
#pragma once

#include "prism32.h"

namespace prism {

#ifdef _WIN32
using CursorHandle = HCURSOR;
#else
using CursorHandle = void*;
#endif

// One lens per process.  Handles stay 0 where there is no graphics system.
struct Magnifier {
    int active;             // 1 between M_StartMagnify and M_StopMagnify
    HWND window;            // the host's window
    HBITMAP lensBitmap;     // the lens picture, in the display's format
    HBITMAP backing;        // the client area as it was at the start
    HPALETTE palette;       // the host's palette, or 0; not owned
    CursorHandle savedCursor;
    UINT lensWidth;         // pixels, frame included
    UINT lensHeight;
    int lensX, lensY;       // client position of the lens as last shown
};

extern Magnifier TheMagnifier;

// The lens size as the drawing code reads it: 32-bit values, signed.
inline int LensWidth() { return static_cast<int>(TheMagnifier.lensWidth); }
inline int LensHeight() { return static_cast<int>(TheMagnifier.lensHeight); }

// The frame takes four pixels on each side of the lens.
constexpr int kLensFrame = 4;

}  // namespace prism
