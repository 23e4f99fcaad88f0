// Prints one hash per (input, operation) for the exports the speed work
// touches, so a change can be checked to leave every output byte as it was:
//   prism_outputs [IN24.bmp IN8.bmp IN1.bmp]
// Small inputs of odd sizes at every depth are made here; the optional
// files are the comparison inputs.  Each line: input, operation, result
// size and a 64-bit FNV-1a hash of the whole result block (or "null").
#include "prism32.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::uint64_t Fnv(const unsigned char* p, size_t n) {
    std::uint64_t h = 1469598103934665603ull;
    for (size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 1099511628211ull;
    return h;
}

void Report(const std::string& input, const std::string& op, HGLOBAL result) {
    if (!result) {
        std::printf("%s %s null %d\n", input.c_str(), op.c_str(), ImgError());
        return;
    }
    const size_t n = GlobalSize(result);
    const unsigned char* p = static_cast<const unsigned char*>(GlobalLock(result));
    std::printf("%s %s %zu %016llx\n", input.c_str(), op.c_str(), n,
                static_cast<unsigned long long>(p ? Fnv(p, n) : 0));
    if (p) GlobalUnlock(result);
}

// A copy of a block, so operations that work in place or leave locks
// behind never change the next operation's input.
HDIB Copy(HDIB dib) {
    const size_t n = GlobalSize(dib);
    HDIB c = GlobalAlloc(GHND, n);
    std::memcpy(GlobalLock(c), GlobalLock(dib), n);
    GlobalUnlock(c);
    GlobalUnlock(dib);
    return c;
}

// A pseudo-random image: every byte, padding included, from a hash of its
// position, and a random colour table.
HDIB MakeImage(int w, int h, int bits, std::uint32_t seed) {
    const int colors = bits <= 8 ? 1 << bits : 0;
    const size_t stride = (static_cast<size_t>(w) * bits + 31) / 32 * 4;
    const size_t bytes = 40 + colors * 4 + stride * h;
    HDIB dib = GlobalAlloc(GHND, bytes);
    unsigned char* p = static_cast<unsigned char*>(GlobalLock(dib));
    BITMAPINFOHEADER hd = {};
    hd.biSize = 40;
    hd.biWidth = w;
    hd.biHeight = h;
    hd.biPlanes = 1;
    hd.biBitCount = static_cast<WORD>(bits);
    hd.biSizeImage = static_cast<DWORD>(stride * h);
    std::memcpy(p, &hd, sizeof(hd));
    std::uint32_t s = seed * 2654435761u + 12345u;
    for (size_t i = 40; i < bytes; ++i) {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        // Runs of equal bytes now and then, so run-length coding meets both kinds.
        p[i] = (s >> 24) < 96 && i > 40 ? p[i - 1] : static_cast<unsigned char>(s);
    }
    GlobalUnlock(dib);
    return dib;
}

HGLOBAL MakeLut() {
    HGLOBAL lut = GlobalAlloc(GHND, 256);
    unsigned char* t = static_cast<unsigned char*>(GlobalLock(lut));
    for (int i = 0; i < 256; ++i) t[i] = static_cast<unsigned char>((i * 37 + 11) ^ (i >> 3));
    GlobalUnlock(lut);
    return lut;
}

int Depth(HDIB dib) {
    const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
    const int bits = h->biBitCount;
    GlobalUnlock(dib);
    return bits;
}

void Size(HDIB dib, int* w, int* h) {
    const BITMAPINFOHEADER* hd = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
    *w = hd->biWidth;
    *h = hd->biHeight;
    GlobalUnlock(dib);
}

// Runs an operation on a fresh copy of the input, reports and frees the
// result (and the copy, unless the operation returned it).
template <typename Fn>
void Run(const std::string& input, HDIB dib, const std::string& op, Fn fn) {
    HDIB in = Copy(dib);
    HGLOBAL r = fn(in);
    Report(input, op, r);
    if (r && r != in) GlobalFree(r);
    GlobalFree(in);
}

void Check(const std::string& name, HDIB dib, bool big, const std::string& tmp) {
    int w, h;
    Size(dib, &w, &h);
    const int bits = Depth(dib);
    Run(name, dib, "rot90", [](HDIB d) { return RotateDIB90(d); });
    Run(name, dib, "rot180", [](HDIB d) { return RotateDIB180(d); });
    Run(name, dib, "rot270", [](HDIB d) { return RotateDIB270(d); });
    Run(name, dib, "flipv", [](HDIB d) { return FlipDIBVertical(d); });
    Run(name, dib, "fliph", [](HDIB d) { return FlipDIBHorizontal(d); });
    const int sizes[][2] = {{w * 3 / 2, h * 3 / 2}, {w / 2, h / 2}, {w * 2 / 3 + 1, h + 3}, {w + 5, h * 3 / 4 + 1}};
    for (int mode = 0; mode < 2; ++mode)
        for (const auto& s : sizes) {
            if (big && s[0] != w * 3 / 2 && s[0] != w / 2) continue;
            const std::string op = "scale" + std::to_string(mode) + "_" + std::to_string(s[0]) + "x" + std::to_string(s[1]);
            Run(name, dib, op, [&](HDIB d) { return ScaleDIB(d, mode, s[0], s[1]); });
        }
    for (int mode = 0; mode < 2 && !big; ++mode) {
        const int zx = 2 + mode, zy = 3 - mode, gw = w > 1 ? w - 1 : w, gh = h > 2 ? h - 2 : h;
        Run(name, dib, "scalegray" + std::to_string(mode), [&](HDIB d) {
            HDIB r = ScaleGrayDIB(d, w > 1 ? 1 : 0, h > 2 ? 1 : 0, gw, gh, zx, zy, mode);
            if (r) GlobalUnlock(r);  // returned still locked
            return r;
        });
    }
    if (big)
        for (int mode = 0; mode < 2; ++mode)
            Run(name, dib, "scalegray" + std::to_string(mode), [&](HDIB d) {
                HDIB r = ScaleGrayDIB(d, 100, 100, 900, 700, 3, 2, mode);
                if (r) GlobalUnlock(r);
                return r;
            });
    int error = 0;
    for (int kind = 3; kind <= 6; ++kind)
        for (int size = 3; size <= 7; size += 2) {
            if (big && !(kind == 3 && size < 7)) continue;
            for (int bm = 0; bm < (big ? 1 : 2); ++bm) {
                const std::string op = "conv" + std::to_string(kind) + "_" + std::to_string(size) + "_" + std::to_string(bm);
                if (bits == 24)
                    Run(name, dib, "c" + op, [&](HDIB d) {
                        return ColorConvolution(d, 1, bm, static_cast<WORD>(kind), static_cast<short>(size), nullptr, nullptr, &error);
                    });
                else if (bm == 0)
                    Run(name, dib, op, [&](HDIB d) { return Convolve(d, 1, kind, size, nullptr, nullptr, &error); });
            }
        }
    Run(name, dib, "grey_w", [](HDIB d) { return ConvColorDIBtoGrayscale(d, 0, 1); });
    if (!big) Run(name, dib, "grey_p", [](HDIB d) { return ConvColorDIBtoGrayscale(d, 0, 0); });
    Run(name, dib, "to24", [](HDIB d) { return Convert8to24(d); });
    for (int m = 0; m < 3; ++m) {
        WORD werr = 0;
        Run(name, dib, "halftone" + std::to_string(m), [&](HDIB d) { return Halftone(d, static_cast<WORD>(m), 0, &werr); });
    }
    Run(name, dib, "fs1", [](HDIB d) { return DitherFS4(d, 1); });
    HGLOBAL lut = MakeLut();
    Run(name, dib, "lut", [&](HDIB d) { return ApplyLUT(d, lut, 1, &error); });
    GlobalFree(lut);
    Run(name, dib, "rle", [](HDIB d) { return CompressDIB(d); });
    Run(name, dib, "rle_expand", [](HDIB d) {
        HDIB c = CompressDIB(d);
        HDIB e = c ? ExpandCompressedDIB(c) : nullptr;
        if (c) GlobalFree(c);
        return e;
    });
    Run(name, dib, "rotate30", [&](HDIB d) { return RotateDIB(d, -30, 0, &error, nullptr); });
    // Save, then hash the file and the image loaded back from it.
    const std::string file = tmp + "/prism_outputs.bmp";
    Run(name, dib, "save_load", [&](HDIB d) {
        if (!SaveDIB(file.c_str(), d)) return HDIB(nullptr);
        std::FILE* f = std::fopen(file.c_str(), "rb");
        std::vector<unsigned char> bytes;
        int c;
        while ((c = std::fgetc(f)) != EOF) bytes.push_back(static_cast<unsigned char>(c));
        std::fclose(f);
        std::printf("%s save %zu %016llx\n", name.c_str(), bytes.size(),
                    static_cast<unsigned long long>(Fnv(bytes.data(), bytes.size())));
        return LoadDIBFromFile(file.c_str());
    });
    std::remove(file.c_str());
}

}  // namespace

int main(int argc, char** argv) {
    const char* tmpEnv = std::getenv("TMPDIR");
    const std::string tmp = tmpEnv ? tmpEnv : "/tmp";
    const int shapes[][2] = {{1, 1}, {2, 3}, {7, 5}, {8, 8}, {17, 13}, {33, 31}, {64, 64}, {65, 3}, {129, 67}, {1001, 7}, {3, 257}, {300, 50}, {263, 40}};
    std::uint32_t seed = 1;
    for (int bits : {1, 4, 8, 24})
        for (const auto& s : shapes) {
            HDIB d = MakeImage(s[0], s[1], bits, seed++);
            Check(std::to_string(s[0]) + "x" + std::to_string(s[1]) + "x" + std::to_string(bits), d, false, tmp);
            GlobalFree(d);
        }
    for (int i = 1; i < argc; ++i) {
        HDIB d = LoadDIBFromFile(argv[i]);
        if (!d) {
            std::fprintf(stderr, "prism_outputs: cannot load %s\n", argv[i]);
            return 1;
        }
        std::string name = argv[i];
        name = name.substr(name.find_last_of('/') + 1);
        Check(name, d, true, tmp);
        GlobalFree(d);
    }
    return 0;
}
