// What the Windows tests share: pixel colours read back from DIBs, device
// bitmaps and windows (0xRRGGBB, top row first), a popup test window, and a
// watchdog for calls that block.
#pragma once

#include "support/test_support.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace testing_support {

using Colors = std::vector<std::uint32_t>;

// Every pixel of a packed DIB with a 40-byte header, through its table.
Colors ColorsOf(const Bytes& dib);
// As the graphics system reads a device bitmap; also its size.
Colors ColorsOf(HBITMAP bitmap, SIZE* size = nullptr);
// The client area of a window as the screen shows it, and its rectangle.
Colors ColorsOf(HWND window, RECT* client = nullptr);

// A device bitmap's record (size, depth, row bytes); a capability of the
// screen (GetDeviceCaps).
BITMAP RecordOf(HBITMAP bitmap);
int ScreenCaps(int index);

// The message boxes a recorder saw, each as "text|caption|style".
std::vector<std::string> Shown(const MessageRecorder& recorder);

// The library's code after a call that must fail; -1 when it gave a result.
template <class Result>
int FailureCode(Result result) {
    return result ? -1 : ImgError();
}

// A popup of 240 x 160 at the screen's top left, shown without activation
// (under wine, destroying the active window waits two seconds for the
// focus), with hidden bars.  It paints Pattern() and counts paints and
// erasures, unless `hook` takes the message (returning true).  With a
// background brush it is of a class of its own that erases with it.
class TestWindow {
public:
    static constexpr int kWidth = 240, kHeight = 160;
    using Hook = std::function<bool(HWND, UINT, WPARAM, LPARAM, LRESULT*)>;
    explicit TestWindow(Hook hook = nullptr, HBRUSH background = nullptr);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    HWND get() const { return window_; }
    Colors Screen() const { return ColorsOf(window_); }
    static Colors Pattern();
    int paints = 0, erasures = 0;

private:
    static LRESULT CALLBACK Procedure(HWND, UINT, WPARAM, LPARAM);
    Hook hook_;
    HWND window_;
};

// Guards a call that blocks in a message loop.  Every 10 ms it posts
// WM_NULL to `window` (a loop in WaitMessage wakes only for new messages)
// and hands each new visible dialog titled `title` to `act` on its own
// thread; after `rescueMs` it posts a button release to `window`, so that
// a faulty loop ends and the test fails; after three times that it stops
// the program rather than hang.
class Watchdog {
public:
    using Action = std::function<void(HWND dialog)>;
    explicit Watchdog(HWND window, int rescueMs = 3000, const char* title = nullptr, Action act = nullptr);
    Watchdog(const char* title, Action act) : Watchdog(nullptr, 7000, title, std::move(act)) {}
    ~Watchdog();
    bool fired() const { return fired_; }
    int seen() const { return seen_; }

private:
    std::atomic<bool> done_{false}, fired_{false};
    std::atomic<int> seen_{0};
    std::thread thread_;
};

}  // namespace testing_support
