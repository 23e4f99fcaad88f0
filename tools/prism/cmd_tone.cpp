// prism histogram, lut, brightness, contrast, invert, convolve, to24, grey.
#include "cli.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

// Text of an error word filled by an export.
std::string WordText(int code) {
    char text[64] = {};
    ImgErrorString(text, code);
    if (!text[0]) return "error " + std::to_string(code);
    return text;
}

// Splits the arguments into positionals and --name [value] options; `withValue`
// lists the options that take one.
struct Parsed {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;
    bool ok = true;
    const std::string* Option(const std::string& name) const {
        for (const auto& o : options)
            if (o.first == name) return &o.second;
        return nullptr;
    }
};

Parsed Parse(const cli::Args& args, const std::vector<std::string>& withValue,
             const std::vector<std::string>& flags) {
    Parsed p;
    for (size_t k = 0; k < args.size(); ++k) {
        const std::string& a = args[k];
        if (a.size() > 2 && a.compare(0, 2, "--") == 0) {
            bool known = false;
            for (const std::string& v : withValue)
                if (a == v) {
                    if (k + 1 >= args.size()) {
                        p.ok = false;
                        return p;
                    }
                    p.options.push_back({a, args[++k]});
                    known = true;
                }
            for (const std::string& f : flags)
                if (a == f) {
                    p.options.push_back({a, ""});
                    known = true;
                }
            if (!known) p.ok = false;
        } else {
            p.positional.push_back(a);
        }
    }
    return p;
}

// An integer option, with a default; false when it is not a number.
bool IntOption(const Parsed& p, const std::string& name, int fallback, int* value) {
    const std::string* text = p.Option(name);
    if (!text) {
        *value = fallback;
        return true;
    }
    return cli::ParseInt(*text, value);
}

// Counts the 256 by 256 window at (x, y) of an 8-bit image into a new table.
HGLOBAL WindowHistogram(HDIB dib, int x, int y, int* error) {
    HGLOBAL table = ComputeHistogram(nullptr, PRISM_TABLE_CREATE, nullptr, nullptr, error);
    if (!table) return nullptr;
    int position[2] = {x, y};
    if (!ComputeHistogram(dib, PRISM_TABLE_UPDATE, table, position, error)) {
        ComputeHistogram(nullptr, PRISM_TABLE_FREE, table, nullptr, nullptr);
        return nullptr;
    }
    return table;
}

int Histogram(const cli::Args& args) {
    Parsed p = Parse(args, {"--x", "--y"}, {});
    int x = 0, y = 0;
    if (!p.ok || p.positional.size() != 1 || !IntOption(p, "--x", 0, &x) || !IntOption(p, "--y", 0, &y))
        return cli::Usage("histogram");
    cli::Image image(cli::LoadImageFile(p.positional[0]));
    if (!image) return cli::kFailed;
    int error = 0;
    HGLOBAL table = WindowHistogram(image.get(), x, y, &error);
    if (!table) return cli::Fail(WordText(error));
    const unsigned char* bytes = static_cast<const unsigned char*>(GlobalLock(table));
    unsigned long total = 0, sum = 0;
    for (int v = 0; v < 256; ++v) {
        unsigned count = bytes[2 * v] | bytes[2 * v + 1] << 8;
        if (count) std::printf("%3d %u\n", v, count);
        total += count;
        sum += static_cast<unsigned long>(v) * count;
    }
    GlobalUnlock(table);
    ComputeHistogram(nullptr, PRISM_TABLE_FREE, table, nullptr, nullptr);
    if (total) std::printf("mean %lu\n", sum / total);
    return cli::kOk;
}

int Lut(const cli::Args& args) {
    Parsed p = Parse(args, {"--contrast", "--brightness", "--x", "--y"}, {});
    int contrast = 0, brightness = 0, x = 0, y = 0;
    if (!p.ok || p.positional.size() != 2 || !IntOption(p, "--contrast", 0, &contrast) ||
        !IntOption(p, "--brightness", 0, &brightness) || !IntOption(p, "--x", 0, &x) || !IntOption(p, "--y", 0, &y))
        return cli::Usage("lut");
    cli::Image image(cli::LoadImageFile(p.positional[0]));
    if (!image) return cli::kFailed;
    int error = 0;
    HGLOBAL histogram = WindowHistogram(image.get(), x, y, &error);
    if (!histogram) return cli::Fail(WordText(error));
    HGLOBAL lut = ComputeLUT(nullptr, PRISM_TABLE_CREATE, nullptr, 0, 0, &error);
    HDIB result = nullptr;
    if (lut && ComputeLUT(histogram, PRISM_TABLE_UPDATE, lut, contrast, brightness, &error))
        result = ApplyLUT(image.get(), lut, 1, &error);
    if (lut) ComputeLUT(nullptr, PRISM_TABLE_FREE, lut, 0, 0, nullptr);
    ComputeHistogram(nullptr, PRISM_TABLE_FREE, histogram, nullptr, nullptr);
    if (!result) return cli::Fail(WordText(error));
    cli::Image out(result);
    return cli::SaveImageFile(p.positional[1], out.get()) ? cli::kOk : cli::kFailed;
}

// Runs an export that makes a new image from one file and saves it.
int MakeAndSave(const std::string& in, const std::string& outPath, HDIB (*make)(HDIB, const void*),
                const void* context) {
    cli::Image image(cli::LoadImageFile(in));
    if (!image) return cli::kFailed;
    SetImgError(0);
    cli::Image out(make(image.get(), context));
    if (!out) return cli::Fail(cli::LibraryError());
    return cli::SaveImageFile(outPath, out.get()) ? cli::kOk : cli::kFailed;
}

int BrightnessOrContrast(const cli::Args& args, const char* name, bool brightness) {
    int amount = 0;
    if (args.size() != 3 || !cli::ParseInt(args[2], &amount)) return cli::Usage(name);
    int pair[2] = {brightness ? amount : 0, brightness ? 0 : amount};
    return MakeAndSave(args[0], args[1],
                       [](HDIB dib, const void* c) {
                           const int* v = static_cast<const int*>(c);
                           // Values outside the short range fall outside -100..100 as well.
                           auto clip = [](int a) { return static_cast<short>(a < -1000 ? -1000 : a > 1000 ? 1000 : a); };
                           return ColorBrightnessContrast(dib, clip(v[0]), clip(v[1]));
                       },
                       pair);
}

int Brightness(const cli::Args& args) { return BrightnessOrContrast(args, "brightness", true); }
int Contrast(const cli::Args& args) { return BrightnessOrContrast(args, "contrast", false); }

int Invert(const cli::Args& args) {
    if (args.size() != 2) return cli::Usage("invert");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    if (!InvertDIBPalette(image.get())) return cli::Fail("the image has no 40-byte header");
    return cli::SaveImageFile(args[1], image.get()) ? cli::kOk : cli::kFailed;
}

int Convolution(const cli::Args& args) {
    Parsed p = Parse(args, {"--matrix"}, {"--weighted"});
    int kind = 0, size = 0;
    if (!p.ok || p.positional.size() != 4 || !cli::ParseInt(p.positional[2], &kind) ||
        !cli::ParseInt(p.positional[3], &size))
        return cli::Usage("convolve");
    const std::string* matrixFile = p.Option("--matrix");
    if ((kind == 1 || kind == 2) && !matrixFile) return cli::Fail("kinds 1 and 2 need --matrix FILE");
    cli::Image image(cli::LoadImageFile(p.positional[0]));
    if (!image) return cli::kFailed;
    const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(image.get()));
    const int depth = h ? h->biBitCount : 0;
    GlobalUnlock(image.get());
    const bool colour = depth == 24;

    // Kind 1 takes the matrix from the file's values, kind 2 the file itself.
    std::vector<int> values32;
    std::vector<short> values16;
    if (kind == 1) {
        const long unit = colour ? 2 : 4;
        const long count = size > 0 && size <= 7 ? (size * size + 1) : 0;
        std::ifstream file(*matrixFile, std::ios::binary);
        std::vector<unsigned char> bytes(static_cast<size_t>(count * unit));
        long got = file ? static_cast<long>(file.read(reinterpret_cast<char*>(bytes.data()),
                                                      static_cast<std::streamsize>(bytes.size())).gcount())
                        : -1;
        if (count == 0 || got != static_cast<long>(bytes.size())) return cli::Fail(*matrixFile + ": not a kernel file of that size");
        for (long k = 0; k < count; ++k) {
            std::uint32_t v = 0;
            for (long b = 0; b < unit; ++b) v |= std::uint32_t(bytes[k * unit + b]) << (8 * b);
            if (colour) values16.push_back(static_cast<short>(v));
            else values32.push_back(static_cast<int>(v));
        }
    }
    int error = 0;
    const char* name = kind == 2 ? matrixFile->c_str() : nullptr;
    HDIB result = colour ? ColorConvolution(image.get(), 1, p.Option("--weighted") ? 1 : 0, static_cast<WORD>(kind),
                                            static_cast<short>(size), name, kind == 1 ? values16.data() : nullptr, &error)
                         : Convolve(image.get(), 1, kind, size, name, kind == 1 ? values32.data() : nullptr, &error);
    if (!result) return cli::Fail(WordText(error));
    cli::Image out(result);
    return cli::SaveImageFile(p.positional[1], out.get()) ? cli::kOk : cli::kFailed;
}

int To24(const cli::Args& args) {
    if (args.size() != 2) return cli::Usage("to24");
    return MakeAndSave(args[0], args[1], [](HDIB dib, const void*) { return Convert8to24(dib); }, nullptr);
}

int Grey(const cli::Args& args) {
    Parsed p = Parse(args, {"--smooth"}, {"--weighted"});
    int smooth = 0;
    if (!p.ok || p.positional.size() != 2 || !IntOption(p, "--smooth", 0, &smooth) ||
        (smooth != 0 && smooth != 3 && smooth != 5))
        return cli::Usage("grey");
    int mode[2] = {smooth == 0 ? 0 : smooth == 3 ? 1 : 2, p.Option("--weighted") ? 1 : 0};
    return MakeAndSave(p.positional[0], p.positional[1],
                       [](HDIB dib, const void* c) {
                           const int* m = static_cast<const int*>(c);
                           return ConvColorDIBtoGrayscale(dib, m[0], m[1]);
                       },
                       mode);
}

}  // namespace

PRISM_COMMAND({"histogram", "IN [--x X] [--y Y]",
               "Count the values of an 8-bit image in the 256 by 256 window at X, Y (from the top left).", Histogram});
PRISM_COMMAND({"lut", "IN OUT [--contrast C] [--brightness B] [--x X] [--y Y]",
               "Apply a tone line pivoting on the mean of the window at X, Y; the 8-bit result is grey.", Lut});
PRISM_COMMAND({"brightness", "IN OUT AMOUNT", "Change brightness by AMOUNT (-100..100) at 4, 8 or 24 bits.",
               Brightness});
PRISM_COMMAND({"contrast", "IN OUT AMOUNT", "Change contrast by AMOUNT (-100..100) at 4, 8 or 24 bits.", Contrast});
PRISM_COMMAND({"invert", "IN OUT", "Make a negative by inverting the colour table (biClrUsed entries).", Invert});
PRISM_COMMAND({"convolve", "IN OUT KIND SIZE [--matrix FILE] [--weighted]",
               "Filter an 8-bit or 24-bit image: KIND 1 matrix, 2 kernel file, 3 box, 4 blur, 5 cross sharpen, "
               "6 full sharpen; SIZE 3, 5 or 7.",
               Convolution});
PRISM_COMMAND({"to24", "IN OUT", "Expand an 8-bit palette image to 24 bits.", To24});
PRISM_COMMAND({"grey", "IN OUT [--weighted] [--smooth 0|3|5]",
               "Turn an image into grey; 1-bit images may be smoothed 3 by 3 or 5 by 5.", Grey});
