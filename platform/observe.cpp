// Test observers shared by both sides of the platform layer.
#include "platform/observe_internal.h"

namespace plat {
namespace {
MessageObserver gObserver = nullptr;
void* gObserverContext = nullptr;
CursorCounts gCursor = {0, 0};
}  // namespace

MessageObserver ObserveMessages(MessageObserver observer, void* context) {
    MessageObserver old = gObserver;
    gObserver = observer;
    gObserverContext = context;
    return old;
}

bool DeliverToObserver(const char* text, const char* caption, unsigned style, int* result) {
    if (!gObserver) return false;
    *result = gObserver(text ? text : "", caption ? caption : "", style, gObserverContext);
    return true;
}

void CountWaitShown() { ++gCursor.waitShown; }
void CountRestored() { ++gCursor.restored; }
CursorCounts CursorActivity() { return gCursor; }

}  // namespace plat
