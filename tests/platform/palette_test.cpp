// Palette objects: nearest-colour answers that both builds agree on.
#include "support/test_support.h"

namespace {

// A LOGPALETTE record: version, count, then red, green, blue, flags.
std::vector<unsigned char> LogPalette(const std::vector<std::uint32_t>& rgb, unsigned version = 0x300) {
    std::vector<unsigned char> p = {static_cast<unsigned char>(version), static_cast<unsigned char>(version >> 8),
                                    static_cast<unsigned char>(rgb.size()), 0};
    for (std::uint32_t c : rgb) p.insert(p.end(), {static_cast<unsigned char>(c >> 16), static_cast<unsigned char>(c >> 8), static_cast<unsigned char>(c), 0});
    return p;
}
std::uint32_t ColorRef(std::uint32_t rgb) { return (rgb & 0xFF) << 16 | (rgb & 0xFF00) | rgb >> 16; }

TEST(PaletteObjects, NearestEntryForClearCasesAndNullHandles) {
    auto record = LogPalette({0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0x808080});
    HPALETTE palette = plat::CreatePalette(record.data());
    ASSERT_NE(palette, nullptr);
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {0x000000, 0}, {0xFFFFFF, 1}, {0xFF0000, 2}, {0x00FF00, 3}, {0x0000FF, 4}, {0x808080, 5}, {0xF00A0C, 2},
        {0x08E614, 3}, {0x140CDC, 4}, {0x0A0C09, 0}, {0xF5FAF0, 1}, {0x78877E, 5}, {0xF00A0C, 2}};  // asked again
    for (const auto& [rgb, index] : cases) EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(rgb)), index) << rgb;
    EXPECT_TRUE(plat::DeletePalette(palette));
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
    EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(0x0F0F0F)), 0u);  // 0 and 1 equally far
    EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(0x0A0A0A)), 0u);  // 0 and 2 equal
    EXPECT_EQ(plat::NearestPaletteIndex(palette, ColorRef(0x010000)), 3u);
    EXPECT_TRUE(plat::DeletePalette(palette));
    EXPECT_FALSE(plat::DeletePalette(palette));  // already gone
    EXPECT_EQ(plat::NearestPaletteIndex(palette, 0), plat::kNoPaletteIndex);
    EXPECT_EQ(plat::CreatePalette(LogPalette({0x000000}, 0x200).data()), nullptr);
    EXPECT_EQ(plat::CreatePalette(LogPalette({}).data()), nullptr);
}
#endif

}  // namespace
