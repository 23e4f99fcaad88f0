// The viewer's scripted mode, run as a user runs it: prismview opens a BMP
// this test writes, paints it, saves its client area and exits; the saved
// pixels are compared with what the display's mapping must give.  Runs
// under wine, where prismview.exe sits beside this program.
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

using namespace testing_support;

namespace {

constexpr unsigned kClassBrush = 0x404040;  // the viewer's dark grey class brush
constexpr unsigned kPaintBrush = 0xFFFFFF;  // a paint context's own brush

// Image pixels: red is x, green is y, blue 0xC0, so no pixel and no
// inverted pixel equals either brush.
unsigned Pattern(int x, int y) { return static_cast<unsigned>(x) << 16 | static_cast<unsigned>(y) << 8 | 0xC0; }

// Runs prismview.exe, found beside this program, with the arguments; its
// exit code, or a failure when it hangs.
DWORD RunViewer(const std::string& args) {
    char exe[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string path = exe;
    path = path.substr(0, path.find_last_of("\\/") + 1) + "prismview.exe";
    std::string command = "\"" + path + "\" " + args;
    STARTUPINFOA si = {};
    si.cb = sizeof(si);
    PROCESS_INFORMATION pi = {};
    if (!CreateProcessA(path.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) {
        ADD_FAILURE() << "cannot start " << path;
        return 97;
    }
    DWORD code = 99;
    if (WaitForSingleObject(pi.hProcess, 60000) != WAIT_OBJECT_0) {
        TerminateProcess(pi.hProcess, 98);
        ADD_FAILURE() << "prismview did not finish within 60 s: " << command;
    }
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hThread), CloseHandle(pi.hProcess);
    return code;
}

// Runs prismview on a w-by-h pattern image with the arguments, checks the
// screenshot's size with `fits` and compares its pixels (u, v from the top
// left) with `expected(u, v, width, height)`: counts those that differ and
// names the first.
void ExpectScreenshot(int w, int h, const std::string& args, bool (*fits)(int width, int height),
                      const std::function<unsigned(int, int, int, int)>& expected) {
    Bytes packed = PackedDib({w, h, 24}, Pattern);
    std::fill(packed.begin() + 24, packed.begin() + 32, 0);  // no resolution: one image pixel a device pixel
    ScratchFile in("viewer-in"), out("viewer-out");
    in.Write(BmpFile(packed));
    const std::string command = std::string(in.path()) + " " + args + " --screenshot " + out.path();
    ASSERT_EQ(RunViewer(command), 0u) << command;
    const Bytes file = out.Read();
    ASSERT_TRUE(file.size() >= 54 && file[0] == 'B') << "no screenshot from: " << command;
    const Bytes shot(file.begin() + 14, file.end());
    const int width = Field(shot, 4), height = Field(shot, 8);
    ASSERT_EQ(shot[14], 24);
    ASSERT_TRUE(fits(width, height)) << width << " x " << height;
    int wrong = 0;
    char first[96] = {};
    for (int v = 0; v < height; ++v)
        for (int u = 0; u < width; ++u) {
            const unsigned got = PixelAt(shot, u, height - 1 - v), want = expected(u, v, width, height);
            if (got != want && !wrong++) std::snprintf(first, sizeof(first), "(%d, %d) is %06X, not %06X", u, v, got, want);
        }
    EXPECT_EQ(wrong, 0) << "of " << width << " x " << height << "; first: " << first;
}

// The image index a 2:1 mapping shows at device position u, or -1.  The
// window origin is the device point p in logical units, rounded to the
// nearest, a half up, as the graphics system converts points.
int AtDoubled(int u, int p, int size) {
    const int i = static_cast<int>(std::floor(p / 2.0 + 0.5)) + u / 2;
    return i >= 0 && i < size ? i : -1;
}

TEST(ViewerScripted, CentredDoubledImageSitsInTheClassBrush) {
    // Nothing to scroll: the position stays at -1, the centring offset is
    // half the difference of image and client, truncated toward zero.
    auto fits = [](int width, int height) { return width > 32 && height > 16; };
    ExpectScreenshot(16, 8, "--size 200x150 --zoom 2/1 --centre", fits, [](int u, int v, int width, int height) {
        const int x = AtDoubled(u, -1 + (32 - width) / 2, 16), y = AtDoubled(v, -1 + (16 - height) / 2, 8);
        return x < 0 || y < 0 ? kClassBrush : Pattern(x, y);
    });
}

TEST(ViewerScripted, DoubledNegativeImageScrolledToItsLastCorner) {
    // The scroll range ends where the image's last device column meets the
    // client's right edge; it reaches there only if the record holds the
    // client area left once both bars have appeared.
    auto fits = [](int width, int height) { return width < 200 && height < 160; };
    ExpectScreenshot(100, 80, "--size 160x120 --zoom 2/1 --scroll 10000,10000 --negative", fits,
                     [](int u, int v, int width, int height) {
                         const int x = AtDoubled(u, 200 - width, 100), y = AtDoubled(v, 160 - height, 80);
                         return x < 0 || y < 0 ? kClassBrush : ~Pattern(x, y) & 0xFFFFFF;
                     });
}

TEST(ViewerScripted, LowMemoryFitSamplesThroughTheSoftwareStretcher) {
    // Fit keeps the proportions; the stretcher takes source column
    // (i + 1/2) * 16 / width rounded down and leaves the rows and columns
    // that would round to the image's size at 0.  Below the picture lies
    // the paint context's own brush, not the class brush.
    auto fits = [](int width, int) { return width > 16; };
    ExpectScreenshot(16, 8, "--size 200x150 --lowmem", fits, [](int u, int v, int width, int height) {
        const float scale = std::min(static_cast<float>(height) / 8.0f, static_cast<float>(width) / 16.0f);
        const int w = static_cast<int>(scale * 16.0f), h = static_cast<int>(scale * 8.0f);
        if (u >= w || v >= h) return kPaintBrush;
        const int x = (4 * w + 8 * 16 * u) / (8 * w), y = (4 * h + 8 * 8 * v) / (8 * h);
        return x >= 16 || y >= 8 ? 0u : Pattern(x, y);
    });
}

TEST(ViewerScripted, AFileTheLibraryRefusesGivesExitCodeOneAndNoScreenshot) {
    ScratchFile bad("viewer-bad"), out("viewer-none");
    bad.Write(Bytes(64, 'x'));
    EXPECT_EQ(RunViewer(std::string(bad.path()) + " --screenshot " + out.path()), 1u);
    EXPECT_TRUE(out.Read().empty());
}

}  // namespace
