// The layout of the DisplayCPP family: from the host's position and zoom
// arrays to source and destination rectangles and scroll bar values, in
// 32-bit floats, with scroll units of hundredths of an inch of the image.
#pragma once

#include "prism32.h"

namespace prism {

struct CppLayout {
    RECT client;         // in: client area; out: where the image goes
    RECT image;          // in: (0, 0, width, height); out: the source rectangle
    int resolution[2];   // in and out: image dots per inch
    int scrollPos[2];    // out (when asked for): positions in hundredths of an inch
    int scrollRange[4];  // out (when asked for): minimum X, minimum Y, maximum X, maximum Y
};

// Works out the layout for a display of logPixelsX by logPixelsY dots per
// inch.  `position` (four numbers) is read and rewritten unless the flags
// ask for stretching or fitting; `zoom` (four numbers, or null) counts
// only when all four are positive.  Returns the flags as 16 bits, with
// physical size (0x40) dropped and 0x04 set when the image has no
// resolution of its own to go by.
UINT ComputeCppLayout(int logPixelsX, int logPixelsY, CppLayout* layout, const int* zoom, int* position,
                      bool scrollOutputs, UINT flags);

}  // namespace prism
