// Pixel colours read back from the graphics system.
#include "support/device_support.h"

namespace testing_support {
namespace {

Colors Masked(const std::uint32_t* p, size_t n) {
    Colors c(p, p + n);
    for (auto& v : c) v &= 0xFFFFFF;
    return c;
}

BITMAPINFO TopDown32(LONG width, LONG height) {
    BITMAPINFO info = {};
    info.bmiHeader = BITMAPINFOHEADER{40, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    return info;
}

}  // namespace

Colors ColorsOf(const Bytes& dib) {
    const int width = static_cast<int>(dib[4] | dib[5] << 8 | dib[6] << 16);
    const int height = static_cast<int>(dib[8] | dib[9] << 8 | dib[10] << 16), depth = dib[14];
    Colors c;
    for (int y = height - 1; y >= 0; --y)
        for (int x = 0; x < width; ++x) {
            const unsigned v = PixelAt(dib, x, y);
            const unsigned char* q = dib.data() + 40 + 4 * v;
            c.push_back(depth > 8 ? v : static_cast<std::uint32_t>(q[2] << 16 | q[1] << 8 | q[0]));
        }
    return c;
}

Colors ColorsOf(HBITMAP bitmap, SIZE* size) {
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
    if (size) *size = SIZE{bm.bmWidth, bm.bmHeight};
    BITMAPINFO info = TopDown32(bm.bmWidth, bm.bmHeight);
    std::vector<std::uint32_t> p(static_cast<size_t>(bm.bmWidth) * bm.bmHeight);
    HDC screen = GetDC(nullptr);
    GetDIBits(screen, bitmap, 0, bm.bmHeight, p.data(), &info, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    return Masked(p.data(), p.size());
}

Colors ColorsOf(HWND window, RECT* client) {
    GetClientRect(window, client);
    BITMAPINFO info = TopDown32(client->right, client->bottom);
    void* bits = nullptr;
    HDC dc = GetDC(window), memory = CreateCompatibleDC(dc);
    HBITMAP section = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, section);
    BitBlt(memory, 0, 0, client->right, client->bottom, dc, 0, 0, SRCCOPY);
    Colors c = Masked(static_cast<std::uint32_t*>(bits), static_cast<size_t>(client->right) * client->bottom);
    SelectObject(memory, old);
    DeleteObject(section);
    DeleteDC(memory);
    ReleaseDC(window, dc);
    return c;
}

}  // namespace testing_support
