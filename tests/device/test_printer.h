// A real printer of the graphics system for the tests: the PostScript
// driver with a small description (300 dots per inch, Letter, the whole
// page printable) writing to a file, and ways to read what came out.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace testing_support {

constexpr const char* kTestPrinter = "PrismTestPrinter";

// Installs the driver and the printer once per process; false with the
// reason when the system refuses.
bool InstallTestPrinter(std::string* error);
// Where the printer writes (a Windows path in the working directory).
std::string PrinterOutput();
// A fresh printer context writing to PrinterOutput().
HDC CreateTestPrinterDC();
// The "device" value that makes the test printer the default.
std::string TestPrinterDevice();

// Sets (or with null, removes) "device" of "windows" for a scope.
class DefaultPrinter {
public:
    explicit DefaultPrinter(const char* device);
    ~DefaultPrinter();

private:
    std::string saved_;
};

// What the printer wrote, read from its output file.
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

// Keeps a test from hanging: calls `act` on its own thread for each
// top-level window of that title as it appears, and ends the process with
// a message if the test runs past `limitMs`.
class Watchdog {
public:
    using Action = void (*)(HWND window, void* context);
    Watchdog(const char* title, Action act, void* context, int limitMs = 20000);
    ~Watchdog();
    int seen() const { return seen_; }

private:
    static DWORD WINAPI Run(void* self);
    std::string title_;
    Action act_;
    void* context_;
    int limitMs_;
    volatile LONG stop_ = 0;
    volatile LONG seen_ = 0;
    HANDLE thread_ = nullptr;
};

// Text of a dialog control, read from another thread.
std::string ControlText(HWND dialog, int id);

}  // namespace testing_support
