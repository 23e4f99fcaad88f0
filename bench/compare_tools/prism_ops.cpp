// Times one operation of the library in-process for bench/compare:
//   prism_ops OP IN OUT REPS   -> "MEDIAN_MS PEAK_KB" on stdout
//   prism_ops gen DIR          -> writes the input images
// The input is loaded once before timing (except for "load"); each
// repetition makes and frees a new result.
#include "prism32.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

void Put16(std::vector<unsigned char>& b, size_t at, unsigned v) {
    b[at] = v & 255;
    b[at + 1] = (v >> 8) & 255;
}
void Put32(std::vector<unsigned char>& b, size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = (v >> (8 * i)) & 255;
}

// A BMP file of W x H at `bits` (1, 8 or 24) with `colours` palette entries;
// pixel(x, y) gives the value (index, or 0xRRGGBB), y counted from the top.
template <typename Fn>
bool WriteBmp(const std::string& path, int w, int h, int bits, const std::vector<std::uint32_t>& palette, Fn pixel) {
    const size_t stride = (static_cast<size_t>(w) * bits + 31) / 32 * 4;
    const size_t offset = 14 + 40 + palette.size() * 4;
    std::vector<unsigned char> b(offset + stride * h, 0);
    b[0] = 'B';
    b[1] = 'M';
    Put32(b, 2, static_cast<std::uint32_t>(b.size()));
    Put32(b, 10, static_cast<std::uint32_t>(offset));
    Put32(b, 14, 40);
    Put32(b, 18, w);
    Put32(b, 22, h);
    Put16(b, 26, 1);
    Put16(b, 28, bits);
    Put32(b, 34, static_cast<std::uint32_t>(stride * h));
    Put32(b, 38, 2835);
    Put32(b, 42, 2835);
    Put32(b, 46, static_cast<std::uint32_t>(palette.size()));
    for (size_t i = 0; i < palette.size(); ++i) Put32(b, 54 + 4 * i, palette[i]);
    for (int y = 0; y < h; ++y) {
        unsigned char* row = &b[offset + stride * (h - 1 - y)];  // rows are stored bottom first
        for (int x = 0; x < w; ++x) {
            const std::uint32_t v = pixel(x, y);
            if (bits == 24) {
                row[3 * x] = v & 255;
                row[3 * x + 1] = (v >> 8) & 255;
                row[3 * x + 2] = (v >> 16) & 255;
            } else if (bits == 8) {
                row[x] = static_cast<unsigned char>(v);
            } else if (v) {
                row[x >> 3] |= 0x80 >> (x & 7);
            }
        }
    }
    std::ofstream f(path, std::ios::binary);
    f.write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
    return static_cast<bool>(f);
}

// A synthetic scene: sky gradient, discs, flat blocks and fine texture, so
// that filters, dithering and run-length coding all meet realistic content.
std::uint32_t Scene(int x, int y, int w, int h) {
    const double fx = double(x) / w, fy = double(y) / h;
    int r = static_cast<int>(40 + 180 * fy), g = static_cast<int>(90 + 120 * fx), b = static_cast<int>(200 - 120 * fy);
    for (int k = 0; k < 7; ++k) {
        const double cx = 0.12 + 0.13 * k, cy = 0.3 + 0.4 * ((k * 37) % 10) / 10.0, rad = 0.05 + 0.02 * (k % 3);
        const double dx = fx - cx, dy = (fy - cy) * h / w;
        if (dx * dx + dy * dy < rad * rad) {
            r = (k * 90) % 256;
            g = (k * 50 + 100) % 256;
            b = (k * 140) % 256;
        }
    }
    if (fy > 0.75 && static_cast<int>(fx * 20) % 3 == 0) r = g = b = 230;  // flat blocks
    if (fy > 0.6 && fy < 0.75) {  // texture band
        const std::uint32_t n = (static_cast<std::uint32_t>(x) * 2654435761u) ^ (static_cast<std::uint32_t>(y) * 40503u);
        const int t = static_cast<int>((n >> 13) & 63) - 32;
        r = std::clamp(r + t, 0, 255);
        g = std::clamp(g + t, 0, 255);
        b = std::clamp(b + t, 0, 255);
    }
    return static_cast<std::uint32_t>(r << 16 | g << 8 | b);
}

int Generate(const std::string& dir) {
    const int w = 4000, h = 3000;
    if (!WriteBmp(dir + "/in24.bmp", w, h, 24, {}, [&](int x, int y) { return Scene(x, y, w, h); })) return 1;
    // 8-bit: a 6 x 7 x 6 colour cube and four greys.
    std::vector<std::uint32_t> palette;
    for (int r = 0; r < 6; ++r)
        for (int g = 0; g < 7; ++g)
            for (int b = 0; b < 6; ++b) palette.push_back(static_cast<std::uint32_t>(r * 51 << 16 | (g * 255 / 6) << 8 | b * 51));
    for (int k = 1; k <= 4; ++k) palette.push_back(0x010101u * static_cast<std::uint32_t>(k * 51 - 25));
    auto index = [&](int x, int y) {
        const std::uint32_t c = Scene(x, y, w, h);
        const int r = ((c >> 16) & 255) * 5 / 255, g = ((c >> 8) & 255) * 6 / 255, b = (c & 255) * 5 / 255;
        return static_cast<std::uint32_t>((r * 7 + g) * 6 + b);
    };
    if (!WriteBmp(dir + "/in8.bmp", w, h, 8, palette, index)) return 1;
    // 1-bit: 6000 x 4000, lines and blocks like a scanned page.
    const int w1 = 6000, h1 = 4000;
    auto ink = [&](int x, int y) {
        const bool textLine = (y / 40) % 3 != 2 && (y % 40) > 8 && (y % 40) < 32;
        const bool glyph = ((x / 18) * 7 + (y / 40) * 3) % 11 > 2 && (x % 18) < 12;
        const bool margin = x < 300 || x >= w1 - 300;
        const bool rule = (y % 800) < 4;
        return static_cast<std::uint32_t>(!(margin ? rule : (textLine && glyph) || rule));  // 1 = white
    };
    if (!WriteBmp(dir + "/in1.bmp", w1, h1, 1, {0x000000u, 0xffffffu}, ink)) return 1;
    return 0;
}

long PeakKb() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

HDIB Op(const std::string& op, HDIB in, const std::string& out) {
    int error = 0;
    WORD word = 0;
    if (op == "rot90") return RotateDIB90(in);
    if (op == "rot180") return RotateDIB180(in);
    if (op == "flip") return FlipDIBHorizontal(in);
    if (op == "rotate") {
        HDIB r = RotateDIB(in, -30, 0, &error, nullptr);
        if (r) GlobalUnlock(in);  // the turn leaves the source locked once more
        return r;
    }
    if (op == "up_linear" || op == "up_cubic") {
        const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(in));
        const int w = h->biWidth * 3 / 2, hh = h->biHeight * 3 / 2;
        GlobalUnlock(in);
        return ScaleDIB(in, op == "up_cubic", w, hh);
    }
    if (op == "down_linear" || op == "down_cubic") {
        const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(in));
        const int w = h->biWidth / 2, hh = h->biHeight / 2;
        GlobalUnlock(in);
        return ScaleDIB(in, op == "down_cubic", w, hh);
    }
    if (op == "conv3") return ColorConvolution(in, 1, 0, 3, 3, nullptr, nullptr, &error);
    if (op == "conv5") return ColorConvolution(in, 1, 0, 3, 5, nullptr, nullptr, &error);
    if (op == "grey") return ConvColorDIBtoGrayscale(in, 0, 1);
    if (op == "to24") return Convert8to24(in);
    if (op == "fs1") return DitherFS4(in, 1);
    if (op == "ordered1") return Halftone(in, 2, 0, &word);
    if (op == "threshold1") return Halftone(in, 0, 0, &word);
    if (op == "rle8") return CompressDIB(in);
    (void)out;
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "gen") == 0) return Generate(argv[2]);
    if (argc != 5) {
        std::fprintf(stderr, "usage: prism_ops OP IN OUT REPS | prism_ops gen DIR\n");
        return 2;
    }
    const std::string op = argv[1], in = argv[2], out = argv[3];
    const int reps = std::max(1, std::atoi(argv[4]));
    std::vector<double> times;
    HDIB source = op == "load" ? nullptr : LoadDIBFromFile(in.c_str());
    if (op != "load" && !source) {
        std::fprintf(stderr, "prism_ops: %s: cannot load\n", in.c_str());
        return 1;
    }
    for (int r = 0; r < reps; ++r) {
        const auto t0 = Clock::now();
        bool ok = true;
        if (op == "load") {
            HDIB d = LoadDIBFromFile(in.c_str());
            ok = d != nullptr;
            if (d) GlobalFree(d);
        } else if (op == "save") {
            ok = SaveDIB(out.c_str(), source) != 0;
        } else if (op == "memcpy_warm") {
            // The other yardstick: the same copy into memory already touched.
            static std::vector<unsigned char> warm;
            const void* p = GlobalLock(source);
            const size_t size = GlobalSize(source);
            if (warm.size() != size) {
                warm.assign(size, 0);
                std::memcpy(warm.data(), p, size);
            }
            const auto w0 = Clock::now();
            std::memcpy(warm.data(), p, size);
            const double ms = std::chrono::duration<double, std::milli>(Clock::now() - w0).count();
            volatile unsigned char sink = warm[size / 2];
            (void)sink;
            GlobalUnlock(source);
            times.push_back(ms);
            continue;
        } else if (op == "memcpy") {
            // The yardstick: a fresh block of the library's allocator, the
            // size of the image, filled by memcpy.
            const void* p = GlobalLock(source);
            const size_t size = GlobalSize(source);
            HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
            void* copy = block ? GlobalLock(block) : nullptr;
            ok = copy != nullptr;
            if (copy) {
                std::memcpy(copy, p, size);
                volatile unsigned char sink = static_cast<unsigned char*>(copy)[size / 2];
                (void)sink;
                GlobalUnlock(block);
            }
            if (block) GlobalFree(block);
            GlobalUnlock(source);
        } else {
            HDIB result = Op(op, source, out);
            const double ms = std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
            ok = result != nullptr;
            if (result) {
                // The result is saved once for inspection, outside the timing.
                if (r == reps - 1 && out != "-") SaveDIB(out.c_str(), result);
                GlobalFree(result);
            }
            if (ok) {
                times.push_back(ms);
                continue;
            }
        }
        const double ms = std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
        if (!ok) {
            std::fprintf(stderr, "prism_ops: %s failed (error %d)\n", op.c_str(), ImgError());
            return 1;
        }
        times.push_back(ms);
    }
    if (source) GlobalFree(source);
    std::sort(times.begin(), times.end());
    std::printf("%.2f %ld\n", times[times.size() / 2], PeakKb());
    return 0;
}
