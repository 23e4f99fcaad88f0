// What the Windows tests share: pixel colours read back from DIBs, device
// bitmaps and windows (0xRRGGBB, top row first), a popup test window, the
// images the printing tests print, and a watchdog for calls that block.
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

// The library's code after a call that must fail; -1 when it gave a result.
template <class Result>
int FailureCode(Result result) {
    return result ? -1 : ImgError();
}

// A bitmap of the screen's form holding the colours, top row first.
HBITMAP ScreenBitmap(const Colors& colors, int width, int height);

// Pixel values of a device bitmap of depth 1 to 24, and of a packed DIB,
// top row first; the bitmap's record (size, depth, row bytes).
std::vector<unsigned> PixelsOf(HBITMAP bitmap);
std::vector<unsigned> PixelsOf(const Bytes& dib);
BITMAP RecordOf(HBITMAP bitmap);
// A device bitmap of the DIB's depth holding its pixels: rows top first,
// ending on 16-bit boundaries.
HBITMAP DeviceCopy(const Bytes& dib);

// A metafile body that blackens the square (0, 0)-(10, 10), and what a
// width x height picture of it shows: black in that square, white elsewhere.
Bytes SquareMetaFile();
Colors SquareColors(int width, int height);
// Appends the low n bytes of v, least significant first; reads n (2 or 4)
// bytes so; the bytes of a text.
void Append(Bytes* b, std::uint32_t v, int n);
std::uint32_t Le(const Bytes& b, size_t at, int n);
Bytes Text(const std::string& s);
// A capability of the screen (GetDeviceCaps).
int ScreenCaps(int index);
// A clipboard file of entries (format, data) laid out one after another.
Bytes ClipFile(const std::vector<std::pair<int, Bytes>>& entries);
// What DrawTextA draws of the text into a 1-bit bitmap in a memory
// context, at the size it measures; also that size.
Colors DrawnText(const std::string& text, SIZE* size);

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
    static std::uint32_t PatternAt(int x, int y);
    static Colors Pattern();
    int paints = 0, erasures = 0;

private:
    static LRESULT CALLBACK Procedure(HWND, UINT, WPARAM, LPARAM);
    Hook hook_;
    HWND window_;
};

// A DIB shown in a window through the host's record, as a host shows it:
// the record made, the image started with the zoom and flags and the window
// brought up to date; at the end the record closed and the block freed.
struct ShownImage {
    ShownImage(HWND window, DisplayState* state, const Bytes& dib, const int* zoom, UINT flags);
    ~ShownImage();
    HWND window;
    DisplayState* state;
    HDIB dib;
};

// Pumps what a window has queued, so that sizes and paints happen.
void Settle(HWND window);

// What the tests' printer (device/test_printer.h) wrote, read from its
// output file.
struct Stretch {
    int x, y, width, height;  // device dots
    int sourceWidth, sourceHeight;
};
struct Printed {
    std::string text;
    int pages = 0;
    std::string title;
    std::vector<Stretch> stretches;
    std::vector<int> stretchPage;  // page of each stretch, from 1
};
Printed ReadPrinted();

// One page of the output rendered by ghostscript at 300 dots per inch:
// 8-bit grey, top row first.
struct Rendered {
    int width = 0, height = 0;
    std::vector<unsigned char> grey;
    unsigned char at(int x, int y) const { return grey[static_cast<size_t>(y) * width + x]; }
};
bool RenderPage(int page, Rendered* out, std::string* error);
// The box of pixels darker than `threshold`; right and bottom exclusive.
RECT DarkBox(const Rendered& page, int threshold = 160);
// The largest difference between two rectangles' sides.
int Off(const RECT& a, const RECT& b);

// An 8-bit DIB of two table entries at 300 dots per inch: the top half
// black, the bottom half grey 96.
HDIB TwoTone(int width, int height, int headerSize = 40);

// Text of a window, of a dialog control, of a list box line, whether a button is
// checked, and a button pressed (or a notification sent) as a user would.
std::string TextOf(HWND window);
std::string ControlText(HWND dialog, int id);
std::string ListText(HWND dialog, int id, LRESULT index);
bool Checked(HWND dialog, int id);
void Press(HWND dialog, int id, int notification = BN_CLICKED);

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
