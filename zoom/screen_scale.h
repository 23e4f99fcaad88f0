// The stepped zoom on a ScreenZoomState: floating scales, image position
// and scroll position of a host that scrolls by itself.  Plain arithmetic
// on the record, compiled in every build; the device side supplies the
// client rectangle and the display's resolution.
#pragma once

#include "prism32.h"

namespace prism {

// Record flags: scale by device over image resolution as well; and the
// mark the library leaves when that flag is clear.
constexpr int kScreenPhysical = 0x04;
constexpr int kScreenPlain = 0x10;

// Scales from four numbers (num X, den X, num Y, den Y; null or a
// non-positive pair: 1.0), times device over image resolution with the
// physical flag.  Stores the device resolution.
void ScreenLoadScale(const int* numbers, int deviceDpiX, int deviceDpiY, ScreenZoomState* screen);
// Image position and pixel offset from the scroll position.
void ScreenFromScroll(const RECT& client, ScreenZoomState* screen);
// Scroll position and bar flags from the image position.
void ScreenToScroll(const RECT& client, ScreenZoomState* screen);
// The scale that makes the state's band (given in client pixels, ordered)
// fill the client area, into the state's scale fields.
void ScreenBandToScale(const RECT& client, BZoomState* state, const ScreenZoomState& screen);
// Loads the state's scale and sets the image position so that the image
// point under p (client pixels, old scale) comes to the client's centre.
void ScreenApplyAtPoint(POINT p, const RECT& client, int deviceDpiX, int deviceDpiY, const BZoomState& state,
                        ScreenZoomState* screen);

}  // namespace prism
