// The magnifying lens over a real window: the enlarged source in the lens,
// its frame, light grey beyond the image, the screen under an old lens
// position restored exactly, and the calls that come without a start.
#include "tests/device/zoom_window.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace zoom_testing;

namespace {

constexpr int kLensW = 48, kLensH = 40;  // twice a source rectangle of 24 x 20
constexpr std::uint32_t kGrey = 0xC0C0C0;

std::uint32_t SourceAt(int x, int y) { return static_cast<std::uint32_t>(x * 4 << 16 | y * 5 << 8 | 0x64); }

// A display-format bitmap of 64 x 48 holding SourceAt.
HBITMAP SourceBitmap() {
    std::vector<std::uint32_t> bits(64 * 48);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) bits[y * 64 + x] = SourceAt(x, y);
    HDC screen = GetDC(nullptr);
    HBITMAP b = CreateCompatibleBitmap(screen, 64, 48);
    BITMAPINFO info = {};
    info.bmiHeader = BITMAPINFOHEADER{40, 64, -48, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    SetDIBits(screen, b, 0, 48, bits.data(), &info, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    return b;
}

// Lens pixel (i, j) inside the frame, for a source rectangle at (x, y)
// enlarged twice: light grey outside the image.
std::uint32_t LensInside(int x, int y, int i, int j) {
    const int sx = x + i / 2, sy = y + j / 2;
    return sx < 0 || sy < 0 || sx >= 64 || sy >= 48 ? kGrey : SourceAt(sx, sy);
}

class Magnifier : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(M_SetSizes(kLensW, kLensH), 1); }
    void TearDown() override {
        M_StopMagnify();
        M_SetSizes(180, 80);
        SetCursor(LoadCursor(nullptr, IDC_ARROW));
        DeleteObject(source_);
    }
    // Each client pixel: the lens at (lx, ly) where it stands, else the pattern.
    void ExpectLensAt(int lx, int ly, int x, int y) {
        const Pixels screen = window_.Screen();
        int wrong = 0;
        for (int py = 0; py < TestWindow::kHeight; ++py)
            for (int px = 0; px < TestWindow::kWidth; ++px) {
                const int i = px - lx, j = py - ly;
                std::uint32_t want = PatternAt(px, py);
                if (i >= 0 && j >= 0 && i < kLensW && j < kLensH) {
                    if (i < 4 || j < 4 || i >= kLensW - 4 || j >= kLensH - 4) continue;  // the frame
                    want = LensInside(x, y, i, j);
                }
                if (screen[py * TestWindow::kWidth + px] != want && ++wrong <= 3)
                    ADD_FAILURE() << "pixel " << px << "," << py << ": " << std::hex << screen[py * TestWindow::kWidth + px]
                                  << " not " << want;
            }
        EXPECT_EQ(wrong, 0);
    }
    TestWindow window_;
    HBITMAP source_ = SourceBitmap();
};

TEST_F(Magnifier, LensShowsTheEnlargedSourceAndRestoresTheScreen) {
    HCURSOR cross = LoadCursor(nullptr, IDC_CROSS);
    SetCursor(cross);
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    EXPECT_EQ(GetCursor(), nullptr);  // the pointer is hidden while the lens is up
    struct Step {
        int x, y, lx, ly;  // source rectangle corner, lens position
    } steps[] = {
        {8, 6, 10, 10},
        {8, 6, 30, 20},     // moved by less than its size: the strip it left is restored
        {-6, -4, 150, 90},  // past the image's top left: grey there, the image's edge in place
        {50, 40, 0, 0},     // past its bottom right
    };
    for (const Step& s : steps) {
        M_StretchBitmap(source_, s.x, s.y, kLensW / 2, kLensH / 2);
        M_CopyBitmap(window_.get(), s.lx, s.ly);
        SCOPED_TRACE(testing::Message() << "source " << s.x << "," << s.y << " lens " << s.lx << "," << s.ly);
        ExpectLensAt(s.lx, s.ly, s.x, s.y);
    }
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(window_.Screen(), TestWindow::Pattern());
    EXPECT_EQ(GetCursor(), cross);
}

TEST_F(Magnifier, FrameOfFourRings) {
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    M_StretchBitmap(source_, 0, 0, kLensW / 2, kLensH / 2);
    M_CopyBitmap(window_.get(), 0, 0);
    const Pixels screen = window_.Screen();
    const int w = kLensW, h = kLensH;
    struct Probe {
        int x, y;
        std::uint32_t want;
    } probes[] = {
        {0, 0, 0},          {w - 1, h - 1, 0},    {w / 2, 0, 0},        {0, h / 2, 0},          // ring 0
        {3, 3, 0},          {w - 4, h - 4, 0},    {w / 2, h - 4, 0},    {w - 4, h / 2, 0},      // ring 3
        {1, 1, 0xFFFFFF},   {w / 2, 1, 0xFFFFFF}, {1, h / 2, 0xFFFFFF}, {1, h - 3, 0xFFFFFF},  // ring 1 lit
        {w - 2, 1, 0x808080}, {w - 2, h / 2, 0x808080}, {w / 2, h - 2, 0x808080}, {1, h - 2, 0x808080},
        {2, 2, 0x808080},   {w / 2, 2, 0x808080}, {2, h / 2, 0x808080}, {2, h - 4, 0x808080},  // ring 2 shaded
        {w - 3, 2, 0xFFFFFF}, {w - 3, h / 2, 0xFFFFFF}, {w / 2, h - 3, 0xFFFFFF}, {2, h - 3, 0xFFFFFF},
        {4, 4, SourceAt(2, 2)}, {w - 5, h - 5, SourceAt((w - 5) / 2, (h - 5) / 2)},  // the picture inside
    };
    for (const Probe& p : probes)
        EXPECT_EQ(screen[p.y * TestWindow::kWidth + p.x], p.want) << std::hex << "at " << std::dec << p.x << "," << p.y;
}

TEST_F(Magnifier, CallsWithoutAStartOrAfterAStopChangeNothing) {
    const Pixels pattern = TestWindow::Pattern();
    M_StretchBitmap(source_, 0, 0, 24, 20);
    M_CopyBitmap(window_.get(), 10, 10);
    EXPECT_EQ(window_.Screen(), pattern);
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    ASSERT_EQ(M_StopMagnify(), 1);
    M_StretchBitmap(source_, 0, 0, 24, 20);
    M_CopyBitmap(window_.get(), 10, 10);
    EXPECT_EQ(window_.Screen(), pattern);
    EXPECT_EQ(M_StopMagnify(), 1);  // a second stop
}

TEST_F(Magnifier, HostileSourcesSizesAndWindows) {
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    // No bitmap, a source of no size, a huge one: the lens is all grey.
    for (auto [bitmap, w, h] : {std::tuple<HBITMAP, int, int>{nullptr, 24, 20}, {source_, 0, 0}, {source_, -24, -20},
                                {reinterpret_cast<HBITMAP>(window_.get()), 24, 20}, {source_, 0x7FFFFFFF, 0x7FFFFFFF}}) {
        M_StretchBitmap(bitmap, 0x7FFFFFF0, 5, w, h);
        M_CopyBitmap(window_.get(), 100, 50);
        EXPECT_EQ(window_.Screen()[(50 + 20) * TestWindow::kWidth + 100 + 24], kGrey) << w;
    }
    M_CopyBitmap(window_.get(), 0x7FFFFFFF, -0x7FFFFFFF);
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(window_.Screen(), TestWindow::Pattern());
    // A lens too large to make, and a window destroyed under a started lens.
    M_SetSizes(100000, 100000);
    TestWindow doomed;
    ASSERT_EQ(M_StartMagnify(doomed.get(), nullptr), 1);
    M_StretchBitmap(source_, 0, 0, 24, 20);
    DestroyWindow(doomed.get());
    M_StretchBitmap(source_, 0, 0, 24, 20);
    M_CopyBitmap(doomed.get(), 5, 5);
    EXPECT_EQ(M_StopMagnify(), 1);
}

}  // namespace
