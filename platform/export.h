// Marks a definition as one of the library's exports.  On Windows the
// module-definition file decides what is exported and under which ordinal;
// on POSIX everything else stays hidden.
#pragma once

#ifdef _WIN32
#define PRISM_API extern "C"
#else
#define PRISM_API extern "C" __attribute__((visibility("default")))
#endif
