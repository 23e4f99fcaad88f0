// Reading and writing the library's own file form.
#pragma once

#include "platform/platform.h"

namespace prism {

// Copies an image's header into `fields` as a 40-byte header, with
// biSizeImage and biClrUsed filled in where they are 0.  Returns 0 for a
// null handle and 1 otherwise; header bytes a small block lacks read as 0.
int ReadDibHeaderFields(HDIB dib, BITMAPINFOHEADER* fields);

}  // namespace prism
