// Pieces one command family lends another.
#pragma once

#include "cli.h"

namespace cli_formats {
// The name of a format code ("BMP", "TIFF", ...).
const char* FormatName(int format);
// Can the library itself (or a codec module) load this format?
bool Loadable(int format);
}  // namespace cli_formats

namespace cli_rotate {
// prism rotate for any angle: IN OUT ANGLE [--fast].
int RotateByAnyAngle(const cli::Args& args);
}  // namespace cli_rotate
