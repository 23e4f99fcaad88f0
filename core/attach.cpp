// Attach and detach: the instance handle is kept at process attach; a host
// without the NT kernel may attach and detach only once each.
#include "core/attach.h"

namespace prism {

AttachState ModuleAttach;

int HandleAttachNotification(AttachState& state, std::uint32_t reason, HINSTANCE instance,
                             std::uint32_t versionWord) {
    const bool oldKernel = (versionWord & 0x80000000u) != 0;
    switch (reason) {
        case 1:  // process attach
            if (oldKernel && state.firstAttachDone) return 0;
            state.firstAttachDone = true;
            state.moduleInstance = instance;
            return 1;
        case 0:  // process detach
            if (oldKernel && state.firstDetachDone) return 0;
            state.firstDetachDone = true;
            return 1;
        case 2:  // thread attach
        case 3:  // thread detach
            return 1;
        default:
            return 0;
    }
}

}  // namespace prism
