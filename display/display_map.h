// The mapping of a displayed image onto a window: the routines the window
// handlers and the stepped zoom share.  Windows builds only.
#pragma once

#ifdef _WIN32
#include "prism32.h"

namespace prism {

// Axis selectors of ApplyScrollBars.
constexpr int kHorizontalBar = 0;
constexpr int kVerticalBar = 1;
constexpr int kBothBars = 3;

// Puts the record's mapping into a context: mapping mode, extents and
// window origin from the zoom, resolution, fit and centre flags and the
// scroll position.  With reset the centre offset and the stored window
// origin are worked out anew (and, in fit mode, the scroll position is
// cleared); without, they stay as stored.  viewLeft, viewTop, originX and
// originY are written either way.
void MapDisplayCore(HDC dc, DisplayState* state, int reset);
// MapDisplayCore with reset, then ComputeScrollRanges.
void RemapDisplay(HDC dc, DisplayState* state);
// The scroll ranges from the image's size in device pixels and the client
// rectangle; -1 in both bounds of an axis with nothing to scroll.
void ComputeScrollRanges(HDC dc, DisplayState* state);
// Limits the scroll position to the ranges, lower bound first; 1 if
// nothing changed, else 0.
int ClampScrollPos(DisplayState* state);
// Sets range and position of one bar or both (the vertical one first), or
// hides a bar the flags keep hidden.
void ApplyScrollBars(HWND window, int axis, DisplayState* state);
// Stores a zoom (numerator X, denominator X, numerator Y, denominator Y)
// and remaps the record on a context of the window.  Returns 0.
int SetDisplayZoom(HWND window, const int* zoom, DisplayState* state);

}  // namespace prism
#endif  // _WIN32
