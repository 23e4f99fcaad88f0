// The magnifying lens over a real window: the enlarged source and the frame
// in the lens, light grey beyond the image, the screen under an old lens
// position restored exactly, and calls that come without a start.
#include "tests/device/zoom_window.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace zoom_testing;

namespace {

constexpr int kLensW = 48, kLensH = 40;  // twice a source rectangle of 24 x 20
constexpr std::uint32_t kGrey = 0xC0C0C0;

std::uint32_t SourceAt(int x, int y) {
    return x < 0 || y < 0 || x >= 64 || y >= 48 ? kGrey : static_cast<std::uint32_t>(x * 4 << 16 | y * 5 << 8 | 0x64);
}

class Magnifier : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(M_SetSizes(kLensW, kLensH), 1);
        Pixels bits(64 * 48);
        for (int i = 0; i < 64 * 48; ++i) bits[i] = SourceAt(i % 64, i / 64);
        HDC screen = GetDC(nullptr);
        source_ = CreateCompatibleBitmap(screen, 64, 48);
        BITMAPINFO info = {{40, 64, -48, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
        SetDIBits(screen, source_, 0, 48, bits.data(), &info, DIB_RGB_COLORS);
        ReleaseDC(nullptr, screen);
    }
    void TearDown() override {
        M_StopMagnify();
        M_SetSizes(180, 80);
        SetCursor(LoadCursor(nullptr, IDC_ARROW));
        DeleteObject(source_);
    }
    // Every client pixel: the pattern, or inside the frame of the lens at
    // (lx, ly) the source from (x, y) enlarged twice.
    void ExpectLensAt(int lx, int ly, int x, int y) {
        const Pixels screen = window_.Screen();
        int wrong = 0;
        for (int py = 0; py < TestWindow::kHeight; ++py)
            for (int px = 0; px < TestWindow::kWidth; ++px) {
                const int i = px - lx, j = py - ly;
                const bool lens = i >= 0 && j >= 0 && i < kLensW && j < kLensH;
                if (lens && (i < 4 || j < 4 || i >= kLensW - 4 || j >= kLensH - 4)) continue;  // the frame
                const std::uint32_t want = lens ? SourceAt(x + i / 2, y + j / 2) : PatternAt(px, py);
                if (screen[py * TestWindow::kWidth + px] != want && ++wrong <= 3)
                    ADD_FAILURE() << "pixel " << px << "," << py << ": " << std::hex
                                  << screen[py * TestWindow::kWidth + px] << " not " << want;
            }
        EXPECT_EQ(wrong, 0);
    }
    TestWindow window_;
    HBITMAP source_ = nullptr;
};

TEST_F(Magnifier, LensShowsTheEnlargedSourceInItsFrameAndRestoresTheScreen) {
    HCURSOR cross = LoadCursor(nullptr, IDC_CROSS);
    SetCursor(cross);
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    EXPECT_EQ(GetCursor(), nullptr);  // the pointer is hidden while the lens is up
    const struct {
        int x, y, lx, ly;  // source rectangle corner, lens position
    } steps[] = {
        {8, 6, 10, 10},
        {8, 6, 30, 20},     // moved by less than its size: the strip it left is restored
        {-6, -4, 150, 90},  // past the image's top left: grey there, the image's edge in place
        {50, 40, 0, 0},     // past its bottom right
    };
    for (const auto& s : steps) {
        M_StretchBitmap(source_, s.x, s.y, kLensW / 2, kLensH / 2);
        M_CopyBitmap(window_.get(), s.lx, s.ly);
        SCOPED_TRACE(testing::Message() << "source " << s.x << "," << s.y << " lens " << s.lx << "," << s.ly);
        ExpectLensAt(s.lx, s.ly, s.x, s.y);
    }
    // The frame: black outside and at the fourth ring, lit and shaded between.
    const Pixels screen = window_.Screen();
    const int w = kLensW, h = kLensH, x = w / 2, y = h / 2;
    const std::uint32_t k = 0, W = 0xFFFFFF, G = 0x808080;
    const std::tuple<int, int, std::uint32_t> probes[] = {
        {0, 0, k}, {w - 1, h - 1, k}, {x, 0, k}, {0, y, k}, {3, 3, k}, {w - 4, h - 4, k}, {x, h - 4, k}, {w - 4, y, k},
        {1, 1, W}, {x, 1, W}, {1, y, W}, {1, h - 3, W}, {w - 2, 1, G}, {w - 2, y, G}, {x, h - 2, G}, {1, h - 2, G},
        {2, 2, G}, {x, 2, G}, {2, y, G}, {2, h - 4, G}, {w - 3, 2, W}, {w - 3, y, W}, {x, h - 3, W}, {2, h - 3, W}};
    for (const auto& [px, py, want] : probes)
        EXPECT_EQ(screen[py * TestWindow::kWidth + px], want) << std::hex << "at " << std::dec << px << "," << py;
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(window_.Screen(), TestWindow::Pattern());
    EXPECT_EQ(GetCursor(), cross);
}

TEST_F(Magnifier, NoStartBadSourcesHugeLensesDestroyedWindows) {
    const Pixels pattern = TestWindow::Pattern();
    M_StretchBitmap(source_, 0, 0, 24, 20);  // before a start: nothing
    M_CopyBitmap(window_.get(), 10, 10);
    EXPECT_EQ(window_.Screen(), pattern);
    ASSERT_EQ(M_StartMagnify(window_.get(), nullptr), 1);
    // No bitmap, no size, negative size, not a bitmap, far outside: all grey.
    for (auto [bitmap, w, h] : {std::tuple<HBITMAP, int, int>{nullptr, 24, 20}, {source_, 0, 0}, {source_, -24, -20},
                                {reinterpret_cast<HBITMAP>(window_.get()), 24, 20}, {source_, 0x7FFFFFFF, 0x7FFFFFFF}}) {
        M_StretchBitmap(bitmap, 0x7FFFFFF0, 5, w, h);
        M_CopyBitmap(window_.get(), 100, 50);
        EXPECT_EQ(window_.Screen()[(50 + 20) * TestWindow::kWidth + 100 + 24], kGrey) << w;
    }
    M_CopyBitmap(window_.get(), 0x7FFFFFFF, -0x7FFFFFFF);
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(window_.Screen(), pattern);
    M_StretchBitmap(source_, 0, 0, 24, 20);  // after a stop: nothing
    M_CopyBitmap(window_.get(), 10, 10);
    EXPECT_EQ(window_.Screen(), pattern);
    M_SetSizes(100000, 100000);  // a lens too large to make, over a window that goes
    TestWindow doomed;
    ASSERT_EQ(M_StartMagnify(doomed.get(), nullptr), 1);
    DestroyWindow(doomed.get());
    M_StretchBitmap(source_, 0, 0, 24, 20);
    M_CopyBitmap(doomed.get(), 5, 5);
    EXPECT_EQ(M_StopMagnify(), 1);
    EXPECT_EQ(M_StopMagnify(), 1);
}

}  // namespace
