// prism info and prism convert.
#include "cli.h"

#include <cstdio>

namespace {

int Info(const cli::Args& args) {
    if (args.size() != 1) return cli::Usage("info");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    std::printf("%s: BMP, %s\n", args[0].c_str(), cli::Describe(image.get()).c_str());
    return cli::kOk;
}

int Convert(const cli::Args& args) {
    if (args.size() != 2) return cli::Usage("convert");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    return cli::SaveImageFile(args[1], image.get()) ? cli::kOk : cli::kFailed;
}

}  // namespace

PRISM_COMMAND({"info", "FILE", "Show an image file's format, size, depth, colours and compression.", Info});
PRISM_COMMAND({"convert", "IN OUT", "Load an image and save it as a BMP file.", Convert});
