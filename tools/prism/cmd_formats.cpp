// prism format and prism fax: what a file holds, and colour fax pages.
#include "commands.h"

#include <cstdio>

namespace cli_formats {

// Name of a format code of GetImageFormat and SaveDIBInImageFormat.
const char* FormatName(int format) {
    switch (format) {
        case PRISM_FORMAT_NONE: return "unknown";
        case PRISM_FORMAT_TIFF: return "TIFF";
        case PRISM_FORMAT_PCX: return "PCX";
        case PRISM_FORMAT_DCX: return "DCX";
        case PRISM_FORMAT_GIF: return "GIF";
        case PRISM_FORMAT_TGA: return "TGA";
        case PRISM_FORMAT_BMP: return "BMP";
        case PRISM_FORMAT_METAFILE: return "metafile";
        case PRISM_FORMAT_CLIPBOARD: return "clipboard file";
        case PRISM_FORMAT_COLORFAX: return "colour fax descriptor";
        case PRISM_FORMAT_TEXT: return "text";
        case PRISM_FORMAT_CALS: return "CALS";
        case PRISM_FORMAT_JPEG: return "JPEG";
        default: return "unused";
    }
}

// Formats prism can turn into an image: those LoadImageIntoDIB reads, and
// with a graphics system also metafiles, clipboard files and text (drawn
// by LoadASCIIFile).
bool Loadable(int format) {
#ifdef PRISM32_HAS_GRAPHICS
    if (format == PRISM_FORMAT_METAFILE || format == PRISM_FORMAT_CLIPBOARD || format == PRISM_FORMAT_TEXT)
        return true;
#endif
    return (format >= PRISM_FORMAT_TIFF && format <= PRISM_FORMAT_BMP) || format == PRISM_FORMAT_COLORFAX ||
           format == PRISM_FORMAT_CALS;
}

}  // namespace cli_formats

namespace {

int Format(const cli::Args& args) {
    if (args.empty()) return cli::Usage("format");
    for (const std::string& path : args) {
        const int format = GetImageFormat(path.c_str());
        std::printf("%s: %d %s\n", path.c_str(), format, cli_formats::FormatName(format));
    }
    return cli::kOk;
}

int Fax(const cli::Args& args) {
    if (args.size() != 1 && args.size() != 3) return cli::Usage("fax");
    const std::string& descriptor = args[0];
    if (args.size() == 1) {
        SetImgError(0);
        const int pages = GetNumberOfImagesInFaxFile(descriptor.c_str());
        if (pages < 0) return cli::Fail(descriptor + ": no colour fax descriptor");
        std::printf("%s: %d pages\n", descriptor.c_str(), pages);
        return cli::kOk;
    }
    int page = 0;
    if (!cli::ParseInt(args[1], &page)) return cli::Usage("fax");
    SetImgError(0);
    int status = 0;
    cli::Image image(LoadColorFaxPage(descriptor.c_str(), page, &status));
    if (!image) {
        return cli::Fail(descriptor + ": page " + args[1] + " cannot be loaded (status " + std::to_string(status) +
                         ", " + cli::LibraryError() + ")");
    }
    std::printf("%s page %d: %s\n", descriptor.c_str(), page, cli::Describe(image.get()).c_str());
    return cli::SaveImageFile(args[2], image.get()) ? cli::kOk : cli::kFailed;
}

}  // namespace

PRISM_COMMAND({"format", "FILE...", "Show the format code each file is detected as.", Format});
PRISM_COMMAND({"fax", "DESCRIPTOR [PAGE OUT]",
               "Show a colour fax descriptor's page count, or save one page as a BMP file.", Fax});
