// Hooks the two sides of the platform layer share with the test observers.
#pragma once

#include "platform/platform.h"

namespace plat {
// Hands a message box to the installed observer; false when there is none.
bool DeliverToObserver(const char* text, const char* caption, unsigned style, int* result);
void CountWaitShown();
void CountRestored();
}  // namespace plat
