// Pixel colours read back from the graphics system, the test window and
// the watchdog.
#include "support/device_support.h"

#include <algorithm>
#include <chrono>

namespace testing_support {
namespace {

BITMAPINFO TopDown32(LONG width, LONG height) {
    BITMAPINFO info = {};
    info.bmiHeader = BITMAPINFOHEADER{40, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    return info;
}

}  // namespace

Colors ColorsOf(const Bytes& dib) {
    const int width = Field(dib, 4), height = Field(dib, 8), depth = dib[14];
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
    const BITMAP bm = RecordOf(bitmap);
    if (size) *size = SIZE{bm.bmWidth, bm.bmHeight};
    BITMAPINFO info = TopDown32(bm.bmWidth, bm.bmHeight);
    Colors c(static_cast<size_t>(bm.bmWidth) * bm.bmHeight);
    HDC screen = GetDC(nullptr);
    GetDIBits(screen, bitmap, 0, bm.bmHeight, c.data(), &info, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    for (auto& v : c) v &= 0xFFFFFF;
    return c;
}

Colors ColorsOf(HWND window, RECT* clientOut) {
    RECT client;
    GetClientRect(window, &client);
    if (clientOut) *clientOut = client;
    HDC dc = GetDC(window), memory = CreateCompatibleDC(dc);
    HBITMAP copy = CreateCompatibleBitmap(dc, client.right, client.bottom);
    HGDIOBJ old = SelectObject(memory, copy);
    BitBlt(memory, 0, 0, client.right, client.bottom, dc, 0, 0, SRCCOPY);
    SelectObject(memory, old);
    DeleteDC(memory), ReleaseDC(window, dc);
    const Colors c = ColorsOf(copy);
    DeleteObject(copy);
    return c;
}

BITMAP RecordOf(HBITMAP bitmap) {
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
    return bm;
}

std::vector<std::string> Shown(const MessageRecorder& recorder) {
    std::vector<std::string> shown;
    for (const auto& m : recorder.messages()) shown.push_back(m.text + "|" + m.caption + "|" + std::to_string(m.style));
    return shown;
}

int ScreenCaps(int index) {
    HDC screen = GetDC(nullptr);
    const int value = GetDeviceCaps(screen, index);
    ReleaseDC(nullptr, screen);
    return value;
}

TestWindow::TestWindow(Hook hook, HBRUSH background) : hook_(std::move(hook)) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = &Procedure;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hbrBackground = background;
    wc.lpszClassName = background ? "PrismTestWindowBrush" : "PrismTestWindow";
    RegisterClassA(&wc);  // fails harmlessly once registered
    window_ = CreateWindowExA(0, wc.lpszClassName, "", WS_POPUP | WS_HSCROLL | WS_VSCROLL, 0, 0, kWidth, kHeight,
                              nullptr, nullptr, wc.hInstance, nullptr);
    SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ShowScrollBar(window_, SB_BOTH, FALSE);
    ShowWindow(window_, SW_SHOWNOACTIVATE);
    UpdateWindow(window_);
}

TestWindow::~TestWindow() {
    if (IsWindow(window_)) DestroyWindow(window_);
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
    }
}

Colors TestWindow::Pattern() {
    Colors p;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            p.push_back(static_cast<std::uint32_t>((x * 7 & 0xFF) << 16 | (y * 5 & 0xFF) << 8 | ((x ^ y) & 0xFF)));
    return p;
}

LRESULT CALLBACK TestWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    LRESULT result = 0;
    if (self && self->hook_ && self->hook_(window, message, wParam, lParam, &result)) return result;
    if (message == WM_ERASEBKGND) return self ? ++self->erasures : 1;
    if (message != WM_PAINT) return DefWindowProcA(window, message, wParam, lParam);
    PAINTSTRUCT ps;
    HDC dc = BeginPaint(window, &ps);
    const Colors p = Pattern();
    BITMAPINFO info = TopDown32(kWidth, kHeight);
    SetDIBitsToDevice(dc, 0, 0, kWidth, kHeight, 0, 0, 0, kHeight, p.data(), &info, DIB_RGB_COLORS);
    EndPaint(window, &ps);
    if (self) ++self->paints;
    return 0;
}

Watchdog::Watchdog(HWND window, int rescueMs, const char* title, Action act)
    : thread_([this, window, rescueMs, name = std::string(title ? title : ""), act] {
          const auto start = std::chrono::steady_clock::now();
          HWND handled = nullptr;
          while (!done_) {
              std::this_thread::sleep_for(std::chrono::milliseconds(10));
              const auto waited = std::chrono::steady_clock::now() - start;
              if (waited > std::chrono::milliseconds(rescueMs) && !fired_.exchange(true) && window)
                  PostMessageA(window, WM_LBUTTONUP, 0, 0);
              if (waited > std::chrono::milliseconds(3 * rescueMs)) {
                  std::fprintf(stderr, "watchdog: a blocking call did not return (window \"%s\")\n", name.c_str());
                  std::fflush(stderr);
                  std::_Exit(3);
              }
              if (window) PostMessageA(window, WM_NULL, 0, 0);
              HWND found = name.empty() ? nullptr : FindWindowA(MAKEINTATOM(32770), name.c_str());
              if (found && found != handled && IsWindowVisible(found)) {
                  handled = found;
                  ++seen_;
                  if (act) act(found);
              }
          }
      }) {}

Watchdog::~Watchdog() {
    done_ = true;
    thread_.join();
}

}  // namespace testing_support
