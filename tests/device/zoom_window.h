// A real window for the zoom and magnifier tests: a popup at the screen's
// top left painted with a fixed pattern, counting paints and erasures, its
// client area read back pixel by pixel; and a watchdog for blocking calls.
#pragma once

#include "prism32.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace zoom_testing {

using Pixels = std::vector<std::uint32_t>;  // 0xRRGGBB, top row first

inline std::uint32_t PatternAt(int x, int y) {
    return static_cast<std::uint32_t>((x * 7 & 0xFF) << 16 | (y * 5 & 0xFF) << 8 | ((x ^ y) & 0xFF));
}

class TestWindow {
public:
    static constexpr int kWidth = 240, kHeight = 160;

    TestWindow() {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = &Procedure;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "PrismZoomTest";
        RegisterClassA(&wc);  // fails harmlessly once registered
        window_ = CreateWindowExA(0, wc.lpszClassName, "", WS_POPUP, 0, 0, kWidth, kHeight, nullptr, nullptr,
                                  wc.hInstance, nullptr);
        SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        // Shown without activation: under wine, destroying the active
        // window waits two seconds for the focus to move.
        ShowWindow(window_, SW_SHOWNOACTIVATE);
        UpdateWindow(window_);
    }
    ~TestWindow() {
        if (IsWindow(window_)) DestroyWindow(window_);
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        }
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    HWND get() const { return window_; }
    int paints = 0, erasures = 0;

    static Pixels Pattern() {
        Pixels p(kWidth * kHeight);
        for (int i = 0; i < kWidth * kHeight; ++i) p[i] = PatternAt(i % kWidth, i / kWidth);
        return p;
    }

    // The client area as the screen shows it.
    Pixels Screen() const {
        Pixels p(kWidth * kHeight);
        HDC dc = GetDC(window_), memory = CreateCompatibleDC(dc);
        HBITMAP copy = CreateCompatibleBitmap(dc, kWidth, kHeight);
        HGDIOBJ old = SelectObject(memory, copy);
        BitBlt(memory, 0, 0, kWidth, kHeight, dc, 0, 0, SRCCOPY);
        SelectObject(memory, old);
        BITMAPINFO info = {{40, kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
        GetDIBits(memory, copy, 0, kHeight, p.data(), &info, DIB_RGB_COLORS);
        DeleteObject(copy);
        DeleteDC(memory);
        ReleaseDC(window_, dc);
        for (auto& v : p) v &= 0xFFFFFF;
        return p;
    }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message == WM_ERASEBKGND && self) ++self->erasures;
        if (message == WM_ERASEBKGND) return 1;
        if (message != WM_PAINT) return DefWindowProcA(window, message, wParam, lParam);
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(window, &ps);
        const Pixels p = Pattern();
        BITMAPINFO info = {{40, kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
        SetDIBitsToDevice(dc, 0, 0, kWidth, kHeight, 0, 0, 0, kHeight, p.data(), &info, DIB_RGB_COLORS);
        EndPaint(window, &ps);
        if (self) ++self->paints;
        return 0;
    }
    HWND window_;
};

// Guards a call that blocks in a message loop.  It posts WM_NULL every few
// milliseconds (a loop in WaitMessage wakes only for new messages); after
// `rescue` a button release, so a faulty loop ends and the test fails; and
// if even that does not end it, it stops the program rather than hang.
class Watchdog {
public:
    explicit Watchdog(HWND window, std::chrono::milliseconds rescue = std::chrono::milliseconds(3000))
        : thread_([this, window, rescue] {
              const auto start = std::chrono::steady_clock::now();
              while (!done_) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(10));
                  const auto waited = std::chrono::steady_clock::now() - start;
                  if (waited > rescue && !fired_.exchange(true)) PostMessageA(window, WM_LBUTTONUP, 0, 0);
                  if (waited > 3 * rescue) {
                      std::fprintf(stderr, "watchdog: a blocking call did not return\n");
                      std::_Exit(3);
                  }
                  PostMessageA(window, WM_NULL, 0, 0);
              }
          }) {}
    ~Watchdog() {
        done_ = true;
        thread_.join();
    }
    bool fired() const { return fired_; }

private:
    std::atomic<bool> done_{false}, fired_{false};
    std::thread thread_;
};

}  // namespace zoom_testing
