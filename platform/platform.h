// The one door between the library and the operating system.
//
// Library code includes this header and nothing from the OS.  Movable
// blocks keep their Win32 names (GlobalAlloc and friends): on Windows they
// are the system's, on POSIX this layer implements and exports them.  Every
// other service goes through the plat:: functions below, which have a Win32
// side (the real calls) and a POSIX side.
#pragma once

#include "prism32.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace plat {

// ---- files by handle ------------------------------------------------------
// Open styles, as OpenFile takes them.
constexpr unsigned kOpenRead = 0;          // OF_READ
constexpr unsigned kOpenWrite = 1;         // OF_WRITE
constexpr unsigned kOpenReadWrite = 2;     // OF_READWRITE
constexpr unsigned kOpenCreate = 0x1000;   // OF_CREATE: create or truncate
constexpr unsigned kOpenExist = 0x4000;    // OF_EXIST: test, then close
constexpr HFILE kBadFile = -1;

// Seek origins of _llseek.
constexpr int kSeekSet = 0;
constexpr int kSeekCur = 1;
constexpr int kSeekEnd = 2;

// OpenFile: a handle, or kBadFile on failure.
HFILE FileOpen(const char* name, unsigned style);
// _lread/_hread: bytes read, or -1 on error.
long FileRead(HFILE file, void* buffer, long count);
// _lwrite/_hwrite: bytes written, or -1 on error.  A count of 0 truncates
// the file at the current position, as _lwrite does.
long FileWrite(HFILE file, const void* buffer, long count);
// _llseek: the new position, or -1 on error.
long FileSeek(HFILE file, long offset, int origin);
// _lclose: 0 on success, -1 on error.
int FileClose(HFILE file);
// Does a file of that name exist (OpenFile with OF_EXIST)?
bool FileExists(const char* name);

// ---- user interface -------------------------------------------------------
constexpr unsigned kMbOk = 0;
constexpr unsigned kMbIconExclamation = 0x30;
constexpr unsigned kMbIconStop = 0x10;
constexpr int kIdOk = 1;

// MessageBoxA with no owner window.  On POSIX the box becomes one line on
// stderr.  When a test has installed an observer, the box goes to it and
// nothing is shown on either platform.
int ShowMessage(const char* text, const char* caption, unsigned style);

// Shows the wait cursor and returns a token for the cursor it replaced.
std::uintptr_t BeginWaitCursor();
void EndWaitCursor(std::uintptr_t previous);

// Keeps the wait cursor up for a scope and puts the old one back on every
// way out.
class WaitCursor {
public:
    WaitCursor() : previous_(BeginWaitCursor()) {}
    ~WaitCursor() { EndWaitCursor(previous_); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    std::uintptr_t previous_;
};

// ---- memory ----------------------------------------------------------------
// Tells the block layer that a new block will be written only in parts
// (the corners of a turned picture, the worst case of a coder): pages
// never written should take no memory.  Call before the first write.
// Nothing to do on Windows.
void SparseBlock(HGLOBAL block);

// GetVersion: the high bit is set on a host without the NT kernel.
std::uint32_t VersionWord();

// ---- sibling modules ------------------------------------------------------
// LoadLibraryA by the exact file name (on POSIX: dlopen of that name, looked
// up in the directories of the module search path), GetProcAddress,
// FreeLibrary.  A failed load gives 0; the error number is the system's.
using ModuleHandle = void*;
using ModuleProc = void (*)();
ModuleHandle OpenModule(const char* fileName, int* errorNumber);
ModuleProc ModuleEntry(ModuleHandle module, const char* entryName);
void CloseModule(ModuleHandle module);

// ---- profile files --------------------------------------------------------
// GetPrivateProfileIntA and GetPrivateProfileStringA: sections and keys
// match without regard to case, values are trimmed, numbers parse as the
// system does (leading decimal digits, optional sign; 0 when none).
int ProfileInt(const char* section, const char* key, int fallback, const char* fileName);
// Copies at most size - 1 characters and a terminator; returns the count.
unsigned ProfileString(const char* section, const char* key, const char* fallback,
                       char* buffer, unsigned size, const char* fileName);

// ---- observation, for tests -----------------------------------------------
// An observer that takes message boxes; returns the button "pressed".
using MessageObserver = int (*)(const char* text, const char* caption, unsigned style,
                                void* context);
// Installs an observer (null removes it); returns the one it replaced.
MessageObserver ObserveMessages(MessageObserver observer, void* context);

struct CursorCounts {
    int waitShown;     // times the wait cursor was put up
    int restored;      // times an earlier cursor was put back
};
CursorCounts CursorActivity();

}  // namespace plat

// ---- palette objects --------------------------------------------------------
// CreatePalette, GetNearestPaletteIndex and DeleteObject for logical
// palettes.  On Windows these are the GDI calls; on POSIX a palette object
// is a table of colours held by this layer, and the nearest entry is the one
// at the least squared distance in RGB, the lowest index among equals.
namespace plat {

// Value of GetNearestPaletteIndex when it has no answer (CLR_INVALID).
constexpr std::uint32_t kNoPaletteIndex = 0xFFFFFFFFu;

// Makes a palette object from a LOGPALETTE record: a 16-bit version (768),
// a 16-bit entry count, then count entries of red, green, blue and flags.
// Null when the record is refused (wrong version, no entries) or memory is
// short.
HPALETTE CreatePalette(const void* logPalette);
// Index of the entry nearest to a colour 0x00BBGGRR, or kNoPaletteIndex for
// a null or unknown palette.
std::uint32_t NearestPaletteIndex(HPALETTE palette, std::uint32_t colorRef);
// DeleteObject for a palette object; false for a null or unknown handle.
bool DeletePalette(HPALETTE palette);

}  // namespace plat
