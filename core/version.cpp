// The version query.
#include "platform/export.h"
#include "platform/platform.h"

#include <cstring>

namespace {
const char kVersionText[] = "Version 5.13";  // 12 characters
}

// Size 13 or more: the terminated text, and the buffer is returned.  Size 1
// to 12: that many characters with no terminator, and the size is returned.
// Size 0 or less: nothing is written and the size is returned.
PRISM_API INT_PTR WINAPI GetImageVersion(LPSTR buffer, int size) {
    if (size <= 0) return size;
    const size_t length = sizeof(kVersionText) - 1;
    if (static_cast<size_t>(size) > length) {
        std::memcpy(buffer, kVersionText, length + 1);
        return reinterpret_cast<INT_PTR>(buffer);
    }
    std::memcpy(buffer, kVersionText, static_cast<size_t>(size));
    return size;
}
