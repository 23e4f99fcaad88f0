// prism dither and prism halftone.
#include "cli.h"

#include <cstring>
#include <string>

namespace {

int Dither(const cli::Args& args) {
    if (args.size() != 4) return cli::Usage("dither");
    struct Method {
        const char* name;
        HDIB(WINAPI* fn)(HDIB, int);
    } const methods[] = {{"fs", DitherFS4}, {"jjn", DitherJJN}, {"smooth", DitherSmooth}, {"sharp", DitherSharp}};
    const Method* method = nullptr;
    for (const Method& m : methods)
        if (args[2] == m.name) method = &m;
    int bits = 0;
    if (!method || !cli::ParseInt(args[3], &bits)) return cli::Usage("dither");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    SetImgError(0);
    cli::Image result(method->fn(image.get(), bits));
    if (!result) return cli::Fail(args[2] + " to " + args[3] + " bits: " + cli::LibraryError());
    return cli::SaveImageFile(args[1], result.get()) ? cli::kOk : cli::kFailed;
}

int HalftoneCommand(const cli::Args& args) {
    if (args.size() != 3 && args.size() != 5) return cli::Usage("halftone");
    const char* const methods[] = {"threshold", "diffuse", "screen"};
    int method = -1;
    for (int i = 0; i < 3; ++i)
        if (args[2] == methods[i]) method = i;
    int brightness = 0;
    if (method < 0) return cli::Usage("halftone");
    if (args.size() == 5 && (args[3] != "--brightness" || !cli::ParseInt(args[4], &brightness)))
        return cli::Usage("halftone");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    WORD error = 0;
    cli::Image result(Halftone(image.get(), static_cast<WORD>(method), brightness, &error));
    if (!result) {
        char text[64] = {};
        ImgErrorString(text, error);
        return cli::Fail(args[2] + ": " + text);
    }
    return cli::SaveImageFile(args[1], result.get()) ? cli::kOk : cli::kFailed;
}

}  // namespace

PRISM_COMMAND({"dither", "IN OUT fs|jjn|smooth|sharp BITS",
               "Reduce a 4-, 8- or 24-bit image to BITS (1, 4, or 8 for fs and jjn) by dithering.", Dither});
PRISM_COMMAND({"halftone", "IN OUT threshold|diffuse|screen [--brightness N]",
               "Make a 1-bit image from a 4-, 8- or 24-bit one, N added to each grey value first.",
               HalftoneCommand});
