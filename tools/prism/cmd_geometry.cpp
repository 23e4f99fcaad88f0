// prism rotate, flip, compress and expand: whole-image turns, mirrors and
// run-length coding.
#include "commands.h"

#include <string>

namespace {

using DibOp = HDIB(WINAPI*)(HDIB);

// Loads IN, applies one operation and saves OUT.
int Apply(const cli::Args& args, DibOp op, const char* what) {
    cli::Image in(cli::LoadImageFile(args[0]));
    if (!in) return cli::kFailed;
    SetImgError(0);
    cli::Image out(op(in.get()));
    if (!out) {
        // The turns and flips set no error code of their own.
        return cli::Fail(std::string(what) + " failed" + (ImgError() ? ": " + cli::LibraryError() : ""));
    }
    return cli::SaveImageFile(args[1], out.get()) ? cli::kOk : cli::kFailed;
}

// The operation for a right-angle turn, or null for another angle.
DibOp QuarterTurn(int angle) {
    switch (angle) {
        case 90: return RotateDIB90;
        case 180: return RotateDIB180;
        case 270: return RotateDIB270;
        default: return nullptr;
    }
}

// Right angles take the exact quarter turns; any other angle, or --fast or
// --free, the free rotation.
int Rotate(const cli::Args& args) {
    int angle = 0;
    if (args.size() != 3 || !cli::ParseInt(args[2], &angle)) return cli_rotate::RotateByAnyAngle(args);
    DibOp op = QuarterTurn(angle);
    if (!op) return cli_rotate::RotateByAnyAngle(args);
    return Apply(args, op, "rotate");
}

int Flip(const cli::Args& args) {
    if (args.size() != 3) return cli::Usage("flip");
    if (args[2] == "h") return Apply(args, FlipDIBHorizontal, "flip");
    if (args[2] == "v") return Apply(args, FlipDIBVertical, "flip");
    return cli::Usage("flip");
}

int Compress(const cli::Args& args) {
    if (args.size() != 2) return cli::Usage("compress");
    return Apply(args, CompressDIB, "compress");
}

int Expand(const cli::Args& args) {
    if (args.size() != 2) return cli::Usage("expand");
    return Apply(args, ExpandCompressedDIB, "expand");
}

}  // namespace

PRISM_COMMAND({"rotate", "IN OUT ANGLE [--fast] [--free]",
               "Turn an image clockwise by ANGLE degrees: 90, 180 and 270 by exact quarter turns (270 keeps "
               "the library's one-column shift), other angles (or --free) by free rotation into a larger "
               "image with zero corners; --fast takes the integer walk.",
               Rotate});
PRISM_COMMAND({"flip", "IN OUT h|v", "Mirror an image left to right (h) or top to bottom (v).", Flip});
PRISM_COMMAND({"compress", "IN OUT", "Run-length code a 4-bit or 8-bit image (RLE4, RLE8).", Compress});
PRISM_COMMAND({"expand", "IN OUT", "Expand a run-length coded image into plain rows.", Expand});
