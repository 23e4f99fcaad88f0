// Palette objects: nearest-colour answers that both builds agree on.
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A LOGPALETTE record: version 768, count, then red, green, blue, flags.
std::vector<unsigned char> LogPalette(const std::vector<std::uint32_t>& rgb, unsigned version = 0x300) {
    std::vector<unsigned char> p(4 + 4 * rgb.size(), 0);
    p[0] = static_cast<unsigned char>(version);
    p[1] = static_cast<unsigned char>(version >> 8);
    p[2] = static_cast<unsigned char>(rgb.size());
    p[3] = static_cast<unsigned char>(rgb.size() >> 8);
    for (size_t i = 0; i < rgb.size(); ++i) {
        p[4 + 4 * i] = static_cast<unsigned char>(rgb[i] >> 16);     // red
        p[4 + 4 * i + 1] = static_cast<unsigned char>(rgb[i] >> 8);  // green
        p[4 + 4 * i + 2] = static_cast<unsigned char>(rgb[i]);       // blue
    }
    return p;
}

std::uint32_t ColorRef(unsigned r, unsigned g, unsigned b) { return b << 16 | g << 8 | r; }

TEST(PaletteObjects, NearestEntryForClearCases) {
    // black, white, red, green, blue, grey
    auto record = LogPalette({0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0x808080});
    HPALETTE palette = plat::CreatePalette(record.data());
    ASSERT_NE(palette, nullptr);
    struct Case {
        unsigned r, g, b;
        std::uint32_t index;
    } cases[] = {
        {0, 0, 0, 0},       {255, 255, 255, 1}, {255, 0, 0, 2},   {0, 255, 0, 3},   {0, 0, 255, 4},
        {128, 128, 128, 5}, {240, 10, 12, 2},   {8, 230, 20, 3},  {20, 12, 220, 4}, {10, 12, 9, 0},
        {245, 250, 240, 1}, {120, 135, 126, 5}, {240, 10, 12, 2},  // asked again: same answer
    };
    for (const Case& c : cases)
        EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(c.r, c.g, c.b)), c.index)
            << c.r << "," << c.g << "," << c.b;
    EXPECT_TRUE(plat::DeletePalette(palette));
}

TEST(PaletteObjects, NullAndMissingHandles) {
    EXPECT_EQ(plat::CreatePalette(nullptr), nullptr);
    EXPECT_EQ(plat::NearestPaletteIndex(nullptr, 0), plat::kNoPaletteIndex);
    EXPECT_FALSE(plat::DeletePalette(nullptr));
}

#ifndef _WIN32
// The system's own search decides ties and bad records on Windows; these
// are the promises of the POSIX build.
TEST(PaletteObjects, PosixTiesGoToTheLowestIndexAndRecordsAreChecked) {
    auto record = LogPalette({0x0A0A0A, 0x141414, 0x0A0A0A, 0x000000});
    HPALETTE palette = plat::CreatePalette(record.data());
    ASSERT_NE(palette, nullptr);
    EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(15, 15, 15)), 0u);  // 0 and 1 equally far
    EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(10, 10, 10)), 0u);  // 0 and 2 equal
    EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(1, 0, 0)), 3u);
    EXPECT_TRUE(plat::DeletePalette(palette));
    EXPECT_FALSE(plat::DeletePalette(palette));  // already gone
    EXPECT_EQ(plat::NearestPaletteIndex(palette, 0), plat::kNoPaletteIndex);

    auto wrongVersion = LogPalette({0x000000}, 0x200);
    EXPECT_EQ(plat::CreatePalette(wrongVersion.data()), nullptr);
    auto empty = LogPalette({});
    EXPECT_EQ(plat::CreatePalette(empty.data()), nullptr);
}
#endif

}  // namespace
