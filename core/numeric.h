// Float to integer as the library's float arithmetic needs it.
#pragma once

namespace prism {

// A cast toward zero that saturates at the int range, NaN giving 0: the
// results of a zero size, resolution or zoom never reach an int undefined.
int TruncateToInt(double value);

}  // namespace prism
