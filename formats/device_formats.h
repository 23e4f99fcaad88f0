// The formats that pass through device bitmaps (Windows builds): pieces
// shared between the metafile, clipboard-file and text exports and the
// dispatch rows of formats 7 and 8.
#pragma once

#ifdef _WIN32
#include "platform/platform.h"

namespace prism {

// A metafile made from a file with or without a placeable header.  With
// the header, width, height and units per inch are set from it; without,
// they stay as the caller set them.  0 on failure: no code when the file
// cannot be opened, 4 when it reads too little, 1 when memory is short, 16
// when the platform refuses the records.
HMETAFILE ReadMetaFile(const char* fileName, int* width, int* height, int* units);

// Loading rows of formats 7 and 8: the file's picture as a DIB through the
// display's palette; 0 with the reader's code on failure.
HDIB LoadMetaFileRow(const char* fileName);
HDIB LoadClipboardFileRow(const char* fileName);
// Saving rows: the writer's result.
int SaveMetaFileRow(const char* fileName, HDIB dib);
int SaveClipboardFileRow(const char* fileName, HDIB dib);

}  // namespace prism
#endif  // _WIN32
