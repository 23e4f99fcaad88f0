// A real window for the zoom and magnifier tests: a popup at the screen's
// top left whose paint handler draws a fixed pattern, counting paints and
// erasures, with the client area read back pixel by pixel.
#pragma once

#include "prism32.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace zoom_testing {

using Pixels = std::vector<std::uint32_t>;  // 0xRRGGBB, top row first

// The colour the pattern gives a client pixel: no two neighbours alike.
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
        window_ = CreateWindowExA(0, "PrismZoomTest", "", WS_POPUP, 0, 0, kWidth, kHeight, nullptr, nullptr,
                                  wc.hInstance, nullptr);
        SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        // Shown without activation: under wine, destroying the active
        // window waits two seconds for the focus to move.
        ShowWindow(window_, SW_SHOWNOACTIVATE);
        InvalidateRect(window_, nullptr, TRUE);
        UpdateWindow(window_);
        Drain();
    }
    ~TestWindow() {
        if (IsWindow(window_)) DestroyWindow(window_);
        Drain();
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    HWND get() const { return window_; }
    int paints = 0, erasures = 0;

    // The pattern over the whole client area.
    static Pixels Pattern() {
        Pixels p(kWidth * kHeight);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) p[y * kWidth + x] = PatternAt(x, y);
        return p;
    }

    // The client area as the screen shows it.
    Pixels Screen() const {
        Pixels p(kWidth * kHeight);
        HDC dc = GetDC(window_);
        HDC memory = CreateCompatibleDC(dc);
        HBITMAP copy = CreateCompatibleBitmap(dc, kWidth, kHeight);
        HGDIOBJ old = SelectObject(memory, copy);
        BitBlt(memory, 0, 0, kWidth, kHeight, dc, 0, 0, SRCCOPY);
        SelectObject(memory, old);
        BITMAPINFO info = {};
        info.bmiHeader = BITMAPINFOHEADER{40, kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        GetDIBits(memory, copy, 0, kHeight, p.data(), &info, DIB_RGB_COLORS);
        DeleteObject(copy);
        DeleteDC(memory);
        ReleaseDC(window_, dc);
        for (auto& v : p) v &= 0xFFFFFF;
        return p;
    }

    // Takes every message waiting for this thread, dispatching none.
    static void Drain() {
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        }
    }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (message == WM_ERASEBKGND) {
            if (self) ++self->erasures;
            return 1;
        }
        if (message != WM_PAINT) return DefWindowProcA(window, message, wParam, lParam);
        PAINTSTRUCT ps;
        HDC dc = BeginPaint(window, &ps);
        const Pixels p = Pattern();
        BITMAPINFO info = {};
        info.bmiHeader = BITMAPINFOHEADER{40, kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        SetDIBitsToDevice(dc, 0, 0, kWidth, kHeight, 0, 0, 0, kHeight, p.data(), &info, DIB_RGB_COLORS);
        EndPaint(window, &ps);
        if (self) ++self->paints;
        return 0;
    }

    HWND window_;
};

// Guards a call that blocks in a message loop.  After `rescue` it posts a
// button release (and wakes the loop) so that a faulty loop ends and the
// test fails; if even that does not end it, the program stops with a
// message rather than hang.  Until then it posts WM_NULL every few
// milliseconds: a loop waiting in WaitMessage wakes only for new messages.
class Watchdog {
public:
    Watchdog(HWND window, std::chrono::milliseconds rescue = std::chrono::milliseconds(3000))
        : thread_([this, window, rescue] { Run(window, rescue); }) {}
    ~Watchdog() {
        done_ = true;
        thread_.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    bool fired() const { return fired_; }

private:
    void Run(HWND window, std::chrono::milliseconds rescue) {
        const auto start = std::chrono::steady_clock::now();
        while (!done_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            const auto waited = std::chrono::steady_clock::now() - start;
            if (waited > rescue && !fired_) {
                fired_ = true;
                PostMessageA(window, WM_LBUTTONUP, 0, 0);
            }
            if (waited > 3 * rescue) {
                std::fprintf(stderr, "watchdog: a blocking call did not return; stopping\n");
                std::_Exit(3);
            }
            PostMessageA(window, WM_NULL, 0, 0);
        }
    }

    std::atomic<bool> done_{false}, fired_{false};
    std::thread thread_;
};

}  // namespace zoom_testing
