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

struct Shot {
    int width = 0, height = 0;
    Bytes dib;  // packed, 24 bits
    unsigned At(int u, int v) const { return PixelAt(dib, u, height - 1 - v); }
};

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
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return code;
}

// The screenshot prismview makes of a w-by-h pattern image with the given
// arguments.
Shot Screenshot(int w, int h, const std::string& args) {
    Bytes packed = PackedDib({w, h, 24}, Pattern);
    std::fill(packed.begin() + 24, packed.begin() + 32, 0);  // no resolution: one image pixel a device pixel
    ScratchFile in("viewer-in"), out("viewer-out");
    in.Write(BmpFile(packed));
    const std::string command = std::string(in.path()) + " " + args + " --screenshot " + out.path();
    EXPECT_EQ(RunViewer(command), 0u) << command;
    Shot shot;
    Bytes file = out.Read();
    if (file.size() < 54 || file[0] != 'B') {
        ADD_FAILURE() << "no screenshot from: " << command;
        return shot;
    }
    shot.dib.assign(file.begin() + 14, file.end());
    shot.width = shot.dib[4] | shot.dib[5] << 8;
    shot.height = shot.dib[8] | shot.dib[9] << 8;
    EXPECT_EQ(shot.dib[14], 24);
    return shot;
}

// Counts the pixels that differ from `expected` (u, v from the top left)
// and names the first.
void ExpectPixels(const Shot& shot, const std::function<unsigned(int, int)>& expected) {
    int wrong = 0;
    std::string first;
    for (int v = 0; v < shot.height; ++v)
        for (int u = 0; u < shot.width; ++u)
            if (shot.At(u, v) != expected(u, v) && !wrong++) {
                char text[96];
                std::snprintf(text, sizeof(text), "(%d, %d) is %06X, not %06X", u, v, shot.At(u, v), expected(u, v));
                first = text;
            }
    EXPECT_EQ(wrong, 0) << "of " << shot.width << " x " << shot.height << "; first: " << first;
}

// The image index a 2:1 mapping shows at device position u, or -1.  The
// window origin is the device point p in logical units, rounded to the
// nearest, a half up, as the graphics system converts points.
int AtDoubled(int u, int p, int size) {
    const int origin = static_cast<int>(std::floor(p / 2.0 + 0.5));
    const int i = origin + u / 2;
    return i >= 0 && i < size ? i : -1;
}

TEST(ViewerScripted, CentredDoubledImageSitsInTheClassBrush) {
    const Shot s = Screenshot(16, 8, "--size 200x150 --zoom 2/1 --centre");
    ASSERT_GT(s.width, 32);
    ASSERT_GT(s.height, 16);
    // Nothing to scroll: the position stays at -1, the centring offset is
    // half the difference of image and client, truncated toward zero.
    const int px = -1 + (32 - s.width) / 2, py = -1 + (16 - s.height) / 2;
    ExpectPixels(s, [&](int u, int v) {
        const int x = AtDoubled(u, px, 16), y = AtDoubled(v, py, 8);
        return x < 0 || y < 0 ? kClassBrush : Pattern(x, y);
    });
}

TEST(ViewerScripted, DoubledNegativeImageScrolledToItsLastCorner) {
    const Shot s = Screenshot(100, 80, "--size 160x120 --zoom 2/1 --scroll 10000,10000 --negative");
    ASSERT_LT(s.width, 200);
    ASSERT_LT(s.height, 160);
    // The scroll range ends where the image's last device column meets the
    // client's right edge; it reaches there only if the record holds the
    // client area left once both bars have appeared.
    const int px = 200 - s.width, py = 160 - s.height;
    ExpectPixels(s, [&](int u, int v) {
        const int x = AtDoubled(u, px, 100), y = AtDoubled(v, py, 80);
        return x < 0 || y < 0 ? kClassBrush : ~Pattern(x, y) & 0xFFFFFF;
    });
}

TEST(ViewerScripted, LowMemoryFitSamplesThroughTheSoftwareStretcher) {
    const Shot s = Screenshot(16, 8, "--size 200x150 --lowmem");
    ASSERT_GT(s.width, 16);
    // Fit keeps the proportions; the stretcher takes source column
    // (i + 1/2) * 16 / width rounded down and leaves the rows and columns
    // that would round to the image's size at 0.  Below the picture lies
    // the paint context's own brush, not the class brush.
    const float scale = std::min(static_cast<float>(s.height) / 8.0f, static_cast<float>(s.width) / 16.0f);
    const int w = static_cast<int>(scale * 16.0f), h = static_cast<int>(scale * 8.0f);
    ExpectPixels(s, [&](int u, int v) {
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
