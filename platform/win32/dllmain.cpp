// Entry point of PRISM32.DLL: hands each notification to the attach logic.
#include "core/attach.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    return prism::HandleAttachNotification(prism::ModuleAttach, reason, instance, plat::VersionWord());
}
