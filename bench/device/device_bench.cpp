// Times the conversions between DIBs and device bitmaps beside the plain
// graphics-system calls that move the same bytes in one go, and prints
// their ratios.  Windows builds (under wine the figures are rough; read the
// ratios).  --smoke runs once on a tiny image.
#include "prism32.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

namespace {

double Median(const std::function<void()>& work, int reps) {
    std::vector<double> ms;
    for (int i = 0; i < reps; ++i) {
        const auto t0 = std::chrono::steady_clock::now();
        work();
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count());
    }
    std::sort(ms.begin(), ms.end());
    return ms[ms.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    const bool smoke = argc > 1 && std::strcmp(argv[1], "--smoke") == 0;
    const int w = smoke ? 64 : 4000, h = smoke ? 48 : 3000, reps = smoke ? 1 : 5;
    const DWORD stride = (w * 3 + 3) & ~3u;
    HGLOBAL dib = GlobalAlloc(GHND, 40 + static_cast<SIZE_T>(stride) * h);
    auto* header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    *header = BITMAPINFOHEADER{40, w, h, 1, 24, BI_RGB, stride * h, 0, 0, 0, 0};
    auto* bits = reinterpret_cast<unsigned char*>(header + 1);
    for (DWORD i = 0; i < stride * h; ++i) bits[i] = static_cast<unsigned char>(i * 7 + i / stride);
    GlobalUnlock(dib);

    HDC screen = GetDC(nullptr);
    std::vector<unsigned char> out(static_cast<size_t>(stride) * h);
    HBITMAP made = nullptr;
    const double toBitmap = Median([&] { DeleteObject(made), made = ConvertDIBToBitmap(dib); }, reps);
    const double plainSet = Median([&] {
        auto* info = static_cast<BITMAPINFO*>(GlobalLock(dib));
        const void* pixels = reinterpret_cast<unsigned char*>(info) + 40;
        HBITMAP b = CreateDIBitmap(screen, &info->bmiHeader, CBM_INIT, pixels, info, DIB_RGB_COLORS);
        GlobalUnlock(dib);
        DeleteObject(b);
    }, reps);
    const double toDib = Median([&] { GlobalFree(ConvertBitmapToDIB(made, nullptr)); }, reps);
    const double plainGet = Median([&] {
        BITMAPINFOHEADER info{40, w, h, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
        GetDIBits(screen, made, 0, h, out.data(), reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
    }, reps);
    ReleaseDC(nullptr, screen);
    DeleteObject(made);

    // One full paint of the image fitted into an 800 by 600 window.
    const int cw = smoke ? 80 : 800, ch = smoke ? 60 : 600;
    HWND window = CreateWindowA("STATIC", "", WS_POPUP | WS_VISIBLE, 0, 0, cw, ch, nullptr, nullptr, nullptr, nullptr);
    DisplayState state;
    DisplayWmCreate(window, 0, 0, &state);
    DisplayDIBStart(window, dib, nullptr, nullptr, DF_FIT, &state);
    HDC windowDC = GetDC(window);
    const double mapped = Median([&] { DisplayDIBImageDC(windowDC, &state); }, reps);
    auto direct = [&](int lowMem) {
        SetLowMemStretch(lowMem);
        return Median([&] {
            InvalidateRect(window, nullptr, FALSE);
            DisplayDIBImage(window, dib, nullptr, nullptr, DF_FIT);
        }, reps);
    };
    const double directGdi = direct(0), directLowMem = direct(1);
    const double plainStretch = Median([&] {
        auto* info = static_cast<BITMAPINFO*>(GlobalLock(dib));
        SetStretchBltMode(windowDC, COLORONCOLOR);
        StretchDIBits(windowDC, 0, 0, cw, ch * 3 / 4, 0, 0, w, h, reinterpret_cast<unsigned char*>(info) + 40, info,
                      DIB_RGB_COLORS, SRCCOPY);
        GlobalUnlock(dib);
    }, reps);
    ReleaseDC(window, windowDC);
    DisplayWmDestroy(window, 0, 0, &state);
    DestroyWindow(window);
    GlobalFree(dib);
    std::printf("%dx%d 24-bit, median of %d, ms\n", w, h, reps);
    std::printf("ConvertDIBToBitmap  %8.1f   CreateDIBitmap of the same bytes %8.1f   ratio %.2f\n", toBitmap,
                plainSet, toBitmap / plainSet);
    std::printf("ConvertBitmapToDIB  %8.1f   GetDIBits of the whole image     %8.1f   ratio %.2f\n", toDib, plainGet,
                toDib / plainGet);
    std::printf("fit into %dx%d: mapped display %8.1f   direct %8.1f   direct, low-memory %8.1f   plain StretchDIBits %8.1f\n",
                cw, ch, mapped, directGdi, directLowMem, plainStretch);
    return 0;
}
