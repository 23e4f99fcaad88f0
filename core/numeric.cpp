// Float to integer as the library's float arithmetic needs it.
#include "core/numeric.h"

#include <climits>
#include <cmath>

namespace prism {

int TruncateToInt(double value) {
    if (std::isnan(value)) return 0;
    if (value >= static_cast<double>(INT_MAX)) return INT_MAX;
    if (value <= static_cast<double>(INT_MIN)) return INT_MIN;
    return static_cast<int>(value);
}

}  // namespace prism
