// Test images for the benchmarks, and the smoke switch.
#include "bench_common.h"

#include <cstring>

namespace bench {

namespace {
bool gSmoke = false;
}

void SetSmoke(bool smoke) { gSmoke = smoke; }
bool Smoke() { return gSmoke; }
int Width() { return gSmoke ? 64 : 4000; }
int Height() { return gSmoke ? 48 : 3000; }

HDIB MakeImage(int width, int height, int bitCount) {
    const int colors = bitCount <= 8 ? 1 << bitCount : 0;
    const std::int64_t stride = (static_cast<std::int64_t>(width) * bitCount + 31) / 32 * 4;
    const std::int64_t bytes = 40 + colors * 4 + stride * height;
    HDIB dib = GlobalAlloc(GHND, static_cast<SIZE_T>(bytes));
    if (!dib) return nullptr;
    unsigned char* p = static_cast<unsigned char*>(GlobalLock(dib));
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bitCount);
    h.biSizeImage = static_cast<DWORD>(stride * height);
    h.biClrUsed = static_cast<DWORD>(colors);
    std::memcpy(p, &h, sizeof(h));
    for (int i = 0; i < colors; ++i) {
        unsigned char v = static_cast<unsigned char>(i * 255 / (colors - 1));
        unsigned char* e = p + 40 + i * 4;
        e[0] = e[1] = e[2] = v;
    }
    unsigned char* bits = p + 40 + colors * 4;
    for (int y = 0; y < height; ++y) {
        unsigned char* row = bits + stride * y;
        for (std::int64_t i = 0; i < stride; ++i)
            row[i] = static_cast<unsigned char>((i * 7 + y * 3 + ((i / 64 + y / 64) % 2) * 80) & 0xFF);
    }
    GlobalUnlock(dib);
    return dib;
}

std::int64_t PixelBytes(HDIB dib) {
    const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(GlobalLock(dib));
    std::int64_t stride = (static_cast<std::int64_t>(h->biWidth) * h->biBitCount + 31) / 32 * 4;
    std::int64_t bytes = stride * h->biHeight;
    GlobalUnlock(dib);
    return bytes;
}

}  // namespace bench
