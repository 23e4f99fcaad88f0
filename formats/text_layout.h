// Text turned into an image, the portable half: reading a text file into a
// block and the library's own measure of the text's lines.
#pragma once

#include "platform/platform.h"

#include <cstddef>
#include <cstdint>

namespace prism {

// Reads a whole file into a new unlocked block of its size plus 10 zero
// bytes.  0 on failure, with code 3 (cannot open), 1 (no memory) or 4
// (short read).
HGLOBAL ReadTextFile(const char* fileName);

// The measure of a text: x and y of the pen after the last character the
// walk took, and where the text was cut (its length when it was not).
struct TextMeasure {
    int x = 1;
    int y = 1;
    std::size_t used = 0;
    bool cut = false;
};

// Walks a zero-terminated text of at most `bytes` bytes with lines of
// `lineHeight` pixels and characters of `charWidth`: a carriage return
// starts a line, code 8 is a tab stop of eight characters, and the walk
// stops once the height reaches 32767 less a line.  The width stops
// growing at 32767 less a character.  Bytes past `bytes` are never read.
TextMeasure MeasureTextLines(const unsigned char* text, std::size_t bytes, int lineHeight, int charWidth);

}  // namespace prism
