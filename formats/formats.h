// Formats: codec modules found by name at the moment of use, and the
// pieces of the colour fax reader that tests and benchmarks reach directly.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <string>

namespace prism {

// ---- codec modules ----------------------------------------------------------
// Loads a module by its exact file name and looks up one entry.  A missing
// module shows "'%s' module has not found (%i)" and leaves *module at 0; a
// missing entry shows "'%s' function has not found in '%s' module" and
// leaves *module set, so the caller still frees it.  Both boxes carry the
// caption "PRISM-DLL".  Returns the entry's address, or 0.
plat::ModuleProc LoadCodecEntry(const char* moduleName, const char* entryName,
                                plat::ModuleHandle* module);
// Frees a module; 0 is passed over.
void FreeCodecModule(plat::ModuleHandle module);

// One thunk per entry point: load the module, call the entry if found, free
// the module, return the entry's result (0 when it could not be called).
// Load side.
HDIB LoadAlderThunk(const char* fileName, UINT page, int* status);   // TIFF, ALDER32.DLL
HDIB LoadBirchThunk(const char* fileName, int* status);              // PCX, BIRCH32.DLL
HDIB LoadBeechThunk(const char* fileName, UINT page, int* status);   // DCX, BIRCH32.DLL
HDIB LoadCedarThunk(const char* fileName, UINT page, int* status);   // GIF, CEDAR32.DLL
HDIB LoadElderThunk(const char* fileName, int reserved);             // TGA, ELDER32.DLL
HDIB LoadMapleThunk(const char* fileName, int reserved);             // CALS, ALDER32.DLL
// Save side.
int SaveAlderThunk(const char* fileName, HDIB dib, int option2, int one);          // ALDER.DLL
int SaveBirchThunk(const char* fileName, HDIB dib, int* status);                   // BIRCH.DLL
int MakeBeechThunk(const char* fileName, int* status);                             // BIRCH.DLL
int SaveBeechThunk(const char* fileName, HDIB dib, int* status);                   // BIRCH.DLL
int SaveCedarThunk(const char* fileName, HDIB dib, int option1, int* status);      // CEDAR.DLL
int SaveElderThunk(const char* fileName, HDIB dib, int flag, int one);             // ELDER.DLL
int SaveMapleThunk(const char* fileName, HDIB dib, int zero1, int zero2, int zero3); // ALDER.DLL
int SaveHazelThunk(const char* fileName, HDIB dib, int quality);                   // HAZEL.DLL

// ---- colour fax pages ---------------------------------------------------------
// Header, 16-entry table (104 bytes) and zeroed 4-bit pixels for a page of
// the given size; 0 when the size is refused or memory is short.
HDIB CreateFaxPageDib(std::int32_t width, std::int32_t height, std::int32_t xPelsPerMeter,
                      std::int32_t yPelsPerMeter);
// ORs one 1-bit plane into the page: plane 0 is bit 3 of each pixel, plane 3
// bit 0.  Returns 1, or 0 when a block cannot be locked.
int MergeFaxPlane(HDIB page, HDIB plane, int planeNumber);

// Full path of a descriptor, so that the profile reader and the existence
// check look at the same file.
std::string DescriptorPath(const char* fileName);

}  // namespace prism
