// prism info and prism convert.
#include "commands.h"

#include <cstdio>
#include <string>
#include <filesystem>
#include <system_error>

namespace {

bool IsFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

#ifdef PRISM32_HAS_GRAPHICS
// A text file drawn as a picture (ANSI text), as a DIB.
HDIB LoadTextImage(const std::string& path) {
    HBITMAP bitmap = LoadASCIIFile(path.c_str(), 1);
    if (!bitmap) {
        // Once the file is read the code is 0, whatever the drawing did.
        cli::Fail(path + ": the text cannot be " + (ImgError() ? "read (" + cli::LibraryError() + ")" : "drawn"));
        return nullptr;
    }
    HDIB dib = ConvertBitmapToDIB(bitmap, nullptr);
    DeleteObject(bitmap);
    if (!dib) cli::Fail(path + ": the drawn text cannot be converted");
    return dib;
}
#endif

// Loads page 1 of an image file of any format the library reads (and,
// with a graphics system, text drawn as a picture); prints the library's
// error on failure.
HDIB LoadAnyImage(const std::string& path) {
    SetImgError(0);
#ifdef PRISM32_HAS_GRAPHICS
    if (GetImageFormat(path.c_str()) == PRISM_FORMAT_TEXT) return LoadTextImage(path);
#endif
    int status = 0;
    HDIB dib = LoadImageIntoDIB(path.c_str(), 1, &status);
    // Some readers fail without a code (a metafile that cannot be opened).
    if (!dib) cli::Fail(path + ": " + (ImgError() ? cli::LibraryError() : std::string("cannot be loaded")));
    return dib;
}

int Info(const cli::Args& args) {
    if (args.size() != 1) return cli::Usage("info");
    const std::string& path = args[0];
    if (!IsFile(path)) return cli::Fail(path + ": no such file");
    const int format = GetImageFormat(path.c_str());
    const char* name = cli_formats::FormatName(format);
    if (!cli_formats::Loadable(format)) {
        std::printf("%s: %s (format %d), not loadable as an image\n", path.c_str(), name, format);
        return cli::kOk;
    }
    cli::Image image(LoadAnyImage(path));
    if (!image) return cli::kFailed;
    std::printf("%s: %s (format %d), %s\n", path.c_str(), name, format, cli::Describe(image.get()).c_str());
    return cli::kOk;
}

int Convert(const cli::Args& args) {
    int format = PRISM_FORMAT_BMP;
    cli::Args files;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--format") {
            if (i + 1 >= args.size() || !cli::ParseInt(args[i + 1], &format)) return cli::Usage("convert");
            ++i;
        } else {
            files.push_back(args[i]);
        }
    }
    if (files.size() != 2) return cli::Usage("convert");
    cli::Image image(LoadAnyImage(files[0]));
    if (!image) return cli::kFailed;
    if (format == PRISM_FORMAT_BMP) return cli::SaveImageFile(files[1], image.get()) ? cli::kOk : cli::kFailed;
    // Writers in codec modules report by their result alone.
    SetImgError(0);
    if (SaveDIBInImageFormat(files[1].c_str(), image.get(), format, 0, 0)) return cli::kOk;
    return cli::Fail(files[1] + ": cannot be saved as " + cli_formats::FormatName(format) + " (format " +
                     std::to_string(format) + ")");
}

}  // namespace

PRISM_COMMAND({"info", "FILE", "Show a file's detected format and, for images, size, depth, colours and compression.",
               Info});
PRISM_COMMAND({"convert", "IN OUT [--format N]",
               "Load an image of any readable format and save it as BMP, or in format N.", Convert});
