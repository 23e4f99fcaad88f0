// The library-wide print job, and PrintPageContinue, which only marks the
// open sheet for the next image and so needs no graphics system.
#include "platform/export.h"
#include "print/print_job_state.h"

namespace prism {
PrintJobState PrintJob = {};
}  // namespace prism

// Lets the next PrintDIBPage draw on the sheet already open: several images
// share one page, each with its own offsets.
PRISM_API void WINAPI PrintPageContinue(void) {
    prism::PrintJob.PageClosed = 1;
}
