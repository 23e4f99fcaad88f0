// Shared between the print job and its dialogs (Windows builds).
#pragma once

#include "prism32.h"

namespace prism {

// The instance whose resources hold the dialog templates: the one stored at
// attach, or, where the library is linked into a program, that program.
HINSTANCE LibraryInstance();

// A modal dialog from one of the library's own templates.
INT_PTR ShowLibraryDialog(HWND parent, const char* templateName, DLGPROC procedure);

}  // namespace prism
