// Load-time logic of the module: the attach and detach notifications.
#pragma once

#include "platform/platform.h"

#include <cstdint>

namespace prism {

struct AttachState {
    bool firstAttachDone = false;
    bool firstDetachDone = false;
    HINSTANCE moduleInstance = nullptr;
};

// The module's own state, filled at process attach.
extern AttachState ModuleAttach;

// Handles one notification.  `versionWord` is GetVersion's result; its high
// bit is set on hosts without the NT kernel, where a second attach or detach
// is refused.  Returns 1 to accept, 0 to refuse.
int HandleAttachNotification(AttachState& state, std::uint32_t reason, HINSTANCE instance,
                             std::uint32_t versionWord);

}  // namespace prism
