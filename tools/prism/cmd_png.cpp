// prism png: a PNG copy of an image, for showing results in a browser.
// Compiled in only when the build finds a PNG library; the library itself
// never writes PNG.
#ifdef PRISM_HAVE_PNG
#include "cli.h"

#include <png.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct FileCloser {
    FILE* f;
    ~FileCloser() {
        if (f) std::fclose(f);
    }
};

// Writes the locked, uncompressed image at `p` (of `size` bytes) as PNG:
// palette images keep their depth and colour table, 24-bit ones become RGB.
bool WritePng(const std::string& path, const unsigned char* p, size_t size, std::string* why) {
    BITMAPINFOHEADER h;
    if (size < sizeof(h)) return *why = "not an image", false;
    std::memcpy(&h, p, sizeof(h));
    const int bits = h.biBitCount;
    if (h.biSize != 40 || (bits != 1 && bits != 4 && bits != 8 && bits != 24)) {
        *why = "only 1-, 4-, 8- and 24-bit images with a 40-byte header can be written as PNG";
        return false;
    }
    const long long width = h.biWidth, height = h.biHeight < 0 ? -static_cast<long long>(h.biHeight) : h.biHeight;
    if (width <= 0 || height <= 0) return *why = "the image has no width or height", false;
    const size_t colours = bits <= 8 ? (h.biClrUsed && h.biClrUsed < (1u << bits) ? h.biClrUsed : (1u << bits)) : 0;
    const size_t stride = static_cast<size_t>((width * bits + 31) / 32 * 4);
    const size_t offset = 40 + colours * 4;
    if (offset > size || (size - offset) / stride < static_cast<size_t>(height))
        return *why = "the image block is shorter than its header says", false;

    FileCloser file{std::fopen(path.c_str(), "wb")};
    if (!file.f) return *why = "cannot create the file", false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        return *why = "out of memory", false;
    }
    std::vector<png_color> palette(colours);
    std::vector<unsigned char> row(static_cast<size_t>(width) * 3);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return *why = "the PNG writer failed", false;
    }
    png_init_io(png, file.f);
    png_set_compression_level(png, 6);
    if (bits <= 8) {
        // A colour table shorter than the depth allows: pixels past it
        // show black.
        palette.resize(size_t{1} << bits);
        for (size_t i = 0; i < palette.size(); ++i) {
            const unsigned char* q = p + 40 + 4 * i;
            palette[i] = i < colours ? png_color{q[2], q[1], q[0]} : png_color{0, 0, 0};
        }
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), bits,
                     PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
    } else {
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                     PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    }
    png_write_info(png, info);
    const bool bottomUp = h.biHeight > 0;  // rows are stored bottom first unless the height is negative
    for (long long y = 0; y < height; ++y) {
        const unsigned char* src = p + offset + stride * static_cast<size_t>(bottomUp ? height - 1 - y : y);
        if (bits == 24) {
            for (long long x = 0; x < width; ++x) {
                row[3 * x] = src[3 * x + 2];
                row[3 * x + 1] = src[3 * x + 1];
                row[3 * x + 2] = src[3 * x];
            }
            png_write_row(png, row.data());
        } else {
            png_write_row(png, const_cast<unsigned char*>(src));
        }
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

int Png(const cli::Args& args) {
    if (args.size() != 2) return cli::Usage("png");
    cli::Image image(cli::LoadImageFile(args[0]));
    if (!image) return cli::kFailed;
    const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(image.get()));
    const bool compressed = h && (h->biCompression == 1 || h->biCompression == 2);
    GlobalUnlock(image.get());
    if (compressed) {
        SetImgError(0);
        HDIB plain = ExpandCompressedDIB(image.get());
        if (!plain) return cli::Fail("cannot expand the run-length coding: " + cli::LibraryError());
        image.reset(plain);
    }
    const unsigned char* p = static_cast<const unsigned char*>(GlobalLock(image.get()));
    if (!p) return cli::Fail("the image cannot be locked");
    std::string why;
    const bool ok = WritePng(args[1], p, GlobalSize(image.get()), &why);
    GlobalUnlock(image.get());
    if (!ok) return cli::Fail(args[1] + ": " + why);
    return cli::kOk;
}

}  // namespace

PRISM_COMMAND({"png", "IN OUT", "Save a PNG copy of an image (1, 4, 8 or 24 bits) for viewing.", Png});
#endif
