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
    std::string screenshot;         // scripted mode when set
    bool help = false;
};

extern const char kUsage[];

// false with the reason in *error for a command line that makes no sense.
bool ParseOptions(const std::vector<std::string>& args, Options* options, std::string* error);

}  // namespace viewer
