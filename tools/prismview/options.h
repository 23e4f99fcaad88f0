// The viewer's command line.
#pragma once

#include "viewer.h"

#include <string>
#include <vector>

namespace viewer {

struct Options {
    std::string file;
    int width = 800, height = 600;  // client area asked for
    ViewSettings view;
    bool scroll = false;
    int scrollX = 0, scrollY = 0;
    bool hasBand = false;
    int band[4] = {};               // zoom band: start and end, client pixels
    std::vector<int> steps;         // zoom steps: 1 in, -1 out
    bool lens = false;
    int lensX = 0, lensY = 0;
    bool print = false;             // print to the default printer (scripted)
    std::string screenshot;         // scripted mode when set
    bool help = false;
};

extern const char kUsage[];

// false with the reason in *error for a command line that makes no sense.
bool ParseOptions(const std::vector<std::string>& args, Options* options, std::string* error);

}  // namespace viewer
