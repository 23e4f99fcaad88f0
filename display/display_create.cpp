// DisplayWmCreate: the record of a new display window, cleared.
#include "platform/export.h"
#include "prism32.h"

#include <cstddef>
#include <cstring>

namespace prism {

// Everything up to the end of the reserved bytes: 142 bytes where handles
// are 4 bytes wide, more where they are 8; never the padding behind, which
// a host that allocated exactly that much does not have.
constexpr std::size_t kDisplayStateBytes = offsetof(DisplayState, reserved) + sizeof(DisplayState::reserved);

// DisplayWmCreate(window, wParam, lParam, state): clears the record; the
// first three arguments are not used.  A null record is ignored.  0.
PRISM_API int WINAPI DisplayWmCreate(HWND, WPARAM, LPARAM, DisplayState* state) {
    if (state) std::memset(static_cast<void*>(state), 0, kDisplayStateBytes);
    return 0;
}

}  // namespace prism
