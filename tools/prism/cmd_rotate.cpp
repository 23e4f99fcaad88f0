// Free rotation (prism rotate at angles other than right angles, or with
// --fast) and prism skew.
#include "commands.h"

#include <climits>
#include <cstdio>
#include <string>

namespace {

// What the rotation's own error word means.
std::string RotateErrorText(int code) {
    switch (code) {
        case 500: return "the image is compressed";
        case 501: return "the image has no width or height";
        case 503: return "not enough memory for the turned image";
        case 505: return "the image cannot be locked";
        case 506: return "not an image with a 40-byte header";
        default: return "error " + std::to_string(code);
    }
}

}  // namespace

int cli_rotate::RotateByAnyAngle(const cli::Args& args) {
    bool fast = false;
    cli::Args rest;
    for (const std::string& a : args) {
        if (a == "--fast")
            fast = true;
        else if (a == "--free")
            continue;
        else
            rest.push_back(a);
    }
    int angle = 0;
    if (rest.size() != 3 || !cli::ParseInt(rest[2], &angle)) return cli::Usage("rotate");
    cli::Image image(cli::LoadImageFile(rest[0]));
    if (!image) return cli::kFailed;
    int error = 0;
    // The library turns counter-clockwise for positive angles; the command
    // takes clockwise degrees like the quarter turns.
    const int libraryAngle = angle == INT_MIN ? 0 : -(angle % 360);
    cli::Image turned(RotateDIB(image.get(), libraryAngle, fast ? 1 : 0, &error, nullptr));
    if (!turned) return cli::Fail("rotate: " + RotateErrorText(error));
    GlobalUnlock(image.get());  // the turn leaves the source locked once more
    return cli::SaveImageFile(rest[1], turned.get()) ? cli::kOk : cli::kFailed;
}

namespace {

int Skew(const cli::Args& args) {
    int amount = 0;
    if (args.size() != 4 || (args[2] != "h" && args[2] != "v") || !cli::ParseInt(args[3], &amount))
        return cli::Usage("skew");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    int error = 0;
    int corners[8] = {};
    cli::Image sheared(SkewDIB(image.get(), args[2] == "h", amount, &error, corners));
    if (!sheared) return cli::Fail("skew: " + cli::LibraryError());
    GlobalUnlock(image.get());  // the shear leaves the source locked once more
    return cli::SaveImageFile(args[1], sheared.get()) ? cli::kOk : cli::kFailed;
}

}  // namespace

PRISM_COMMAND({"skew", "IN OUT h|v AMOUNT",
               "Shear an image: h slides rows sideways, v slides columns up, by AMOUNT pixels in all.", Skew});
