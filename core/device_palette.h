// Colour tables of DIBs made from device bitmaps.
#pragma once

#include "platform/platform.h"

namespace prism {

// Writes a palette's colours into the colour table behind a 40-byte
// header: the default table for no palette or one larger than the table,
// else each entry (red, green, blue, 0), leaving later entries as they are.
// 1, or 0 when the work block failed.
int FillDibColorTable(HPALETTE palette, BITMAPINFOHEADER* header);

}  // namespace prism
