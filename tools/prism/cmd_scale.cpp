// prism scale and prism scale-grey.
#include "cli.h"

#include <cstdio>
#include <string>

namespace {

// Reads "WxH" into two numbers.
bool ParseSize(const std::string& text, int* width, int* height) {
    const size_t x = text.find_first_of("xX");
    if (x == std::string::npos) return false;
    return cli::ParseInt(text.substr(0, x), width) && cli::ParseInt(text.substr(x + 1), height);
}

int Scale(const cli::Args& args) {
    cli::Args plain;
    int mode = 0;
    for (const std::string& a : args) {
        if (a == "--cubic")
            mode = 1;
        else
            plain.push_back(a);
    }
    int width = 0, height = 0;
    if (plain.size() != 3 || !ParseSize(plain[2], &width, &height)) return cli::Usage("scale");
    if (width < 1 || height < 1) return cli::Fail("the new size must be at least 1x1");
    cli::Image image(cli::LoadImageFile(plain[0]));
    if (!image) return cli::kFailed;
    SetImgError(0);
    cli::Image scaled(ScaleDIB(image.get(), mode, width, height));
    if (!scaled) return cli::Fail(plain[0] + ": " + cli::LibraryError());
    return cli::SaveImageFile(plain[1], scaled.get()) ? cli::kOk : cli::kFailed;
}

int ScaleGrey(const cli::Args& args) {
    cli::Args plain;
    int mode = 0;
    for (const std::string& a : args) {
        if (a == "--cubic")
            mode = 1;
        else
            plain.push_back(a);
    }
    int n[6] = {};
    if (plain.size() != 8) return cli::Usage("scale-grey");
    for (int i = 0; i < 6; ++i)
        if (!cli::ParseInt(plain[2 + i], &n[i])) return cli::Usage("scale-grey");
    cli::Image image(cli::LoadImageFile(plain[0]));
    if (!image) return cli::kFailed;
    // The result comes back locked; the one unlock here leaves it free.
    HDIB result = ScaleGrayDIB(image.get(), n[0], n[1], n[2], n[3], n[4], n[5], mode);
    if (!result)
        return cli::Fail(plain[0] + ": cannot scale (a grey 4- or 8-bit image, a rectangle inside it, "
                                    "and a result narrower than 8192 pixels, 5462 with --cubic, are needed)");
    GlobalUnlock(result);
    cli::Image scaled(result);
    return cli::SaveImageFile(plain[1], scaled.get()) ? cli::kOk : cli::kFailed;
}

}  // namespace

PRISM_COMMAND({"scale", "IN OUT WxH [--cubic]",
               "Resize an image of 1, 4, 8 or 24 bits to W by H pixels (linear, or cubic).", Scale});
PRISM_COMMAND({"scale-grey", "IN OUT X0 Y0 W H ZX ZY [--cubic]",
               "Enlarge the W by H rectangle at byte X0 of stored row Y0 of a grey image ZX by ZY times.",
               ScaleGrey});
