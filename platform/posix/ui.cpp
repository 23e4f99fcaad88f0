// User interface for POSIX: message boxes become one line on stderr; there
// is no cursor, so the wait cursor is only counted.
#include "platform/observe_internal.h"

#include <cstdio>

namespace plat {

int ShowMessage(const char* text, const char* caption, unsigned style) {
    int result = kIdOk;
    if (DeliverToObserver(text, caption, style, &result)) return result;
    std::fprintf(stderr, "%s: %s\n", caption ? caption : "", text ? text : "");
    return kIdOk;
}

std::uintptr_t BeginWaitCursor() {
    CountWaitShown();
    return 0;
}

void EndWaitCursor(std::uintptr_t) { CountRestored(); }

// A POSIX host always has the NT-like behaviour: the high bit stays clear.
std::uint32_t VersionWord() { return 0x0A00; }

}  // namespace plat
