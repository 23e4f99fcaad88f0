// Reading the viewer's command line.
#include "options.h"

#include <cerrno>
#include <cstdlib>

namespace viewer {

const char kUsage[] =
    "usage: prismview [FILE] [--size WxH] [--fit] [--zoom N/D] [--scroll X,Y] [--centre]\n"
    "                 [--negative] [--lowmem] [--band X0,Y0,X1,Y1] [--step in|out]...\n"
    "                 [--lens X,Y] [--print] [--screenshot OUT.bmp]\n"
    "  --size WxH        client area in pixels (default 800x600)\n"
    "  --fit             the whole image in the window (the default without --zoom)\n"
    "  --zoom N/D        N/D device pixels per image pixel\n"
    "  --scroll X,Y      scroll position: device pixels, or image pixels with --lowmem\n"
    "  --centre          centre the image in the window\n"
    "  --negative        show the image inverted\n"
    "  --lowmem          paint through the library's low-memory stretchers\n"
    "  --band X0,Y0,X1,Y1  drag a zoom band between two client points (as Ctrl and the left button)\n"
    "  --step in|out     one step of the zoom table (as the wheel or + and -); may be repeated\n"
    "  --lens X,Y        the magnifier at a client point (as View > Magnifier)\n"
    "  --print           also print the image on the default printer, centred and fitted\n"
    "  --screenshot OUT  open, paint, save the client area as a BMP file and exit:\n"
    "                    0 when done, 1 with the library's error text on stderr\n";

namespace {

bool ParseInt(const std::string& text, int* value) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (*end || errno || v < -1000000 || v > 1000000) return false;
    *value = static_cast<int>(v);
    return true;
}

// "A<sep>B" into two numbers.
bool ParsePair(const std::string& text, char sep, int* a, int* b) {
    const size_t at = text.find(sep);
    return at != std::string::npos && ParseInt(text.substr(0, at), a) && ParseInt(text.substr(at + 1), b);
}

}  // namespace

bool ParseOptions(const std::vector<std::string>& args, Options* o, std::string* error) {
    bool zoom = false, fit = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        const bool hasValue = i + 1 < args.size();
        auto value = [&]() -> const std::string& { return args[++i]; };
        if (a == "--help" || a == "-h") {
            o->help = true;
        } else if (a == "--fit") {
            fit = true;
        } else if (a == "--centre" || a == "--center") {
            o->view.centre = true;
        } else if (a == "--negative") {
            o->view.negative = true;
        } else if (a == "--lowmem") {
            o->view.lowMem = true;
        } else if (a == "--size" && hasValue) {
            if (!ParsePair(value(), 'x', &o->width, &o->height) || o->width < 1 || o->height < 1)
                return *error = "--size wants WIDTHxHEIGHT, both positive", false;
        } else if (a == "--zoom" && hasValue) {
            if (!ParsePair(value(), '/', &o->view.zoomNum, &o->view.zoomDen) || o->view.zoomNum < 1 ||
                o->view.zoomDen < 1)
                return *error = "--zoom wants N/D, both positive", false;
            zoom = true;
        } else if (a == "--scroll" && hasValue) {
            if (!ParsePair(value(), ',', &o->scrollX, &o->scrollY)) return *error = "--scroll wants X,Y", false;
            o->scroll = true;
        } else if (a == "--band" && hasValue) {
            const std::string v = value();
            const size_t mid = v.find(',', v.find(',') + 1);
            if (mid == std::string::npos || !ParsePair(v.substr(0, mid), ',', &o->band[0], &o->band[1]) ||
                !ParsePair(v.substr(mid + 1), ',', &o->band[2], &o->band[3]))
                return *error = "--band wants X0,Y0,X1,Y1", false;
            o->hasBand = true;
        } else if (a == "--step" && hasValue) {
            const std::string v = value();
            if (v != "in" && v != "out") return *error = "--step wants in or out", false;
            o->steps.push_back(v == "in" ? 1 : -1);
        } else if (a == "--lens" && hasValue) {
            if (!ParsePair(value(), ',', &o->lensX, &o->lensY)) return *error = "--lens wants X,Y", false;
            o->lens = true;
        } else if (a == "--print") {
            o->print = true;
        } else if (a == "--screenshot" && hasValue) {
            o->screenshot = value();
        } else if (a.compare(0, 2, "--") == 0) {
            return *error = "unknown or incomplete option " + a, false;
        } else if (o->file.empty()) {
            o->file = a;
        } else {
            return *error = "more than one file: " + a, false;
        }
    }
    o->view.fit = fit || !zoom;
    if (!o->screenshot.empty() && o->file.empty()) return *error = "--screenshot needs a FILE", false;
    return true;
}

}  // namespace viewer
