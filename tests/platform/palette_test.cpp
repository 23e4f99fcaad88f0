// Palette objects: nearest-colour answers that both builds agree on.
#include "support/test_support.h"

namespace {

// A palette made from a LOGPALETTE record: version, count, then red,
// green, blue, flags.
HPALETTE Palette(const std::vector<std::uint32_t>& rgb, unsigned version = 0x300) {
    std::vector<unsigned char> p = {static_cast<unsigned char>(version), static_cast<unsigned char>(version >> 8),
                                    static_cast<unsigned char>(rgb.size()), 0};
    for (std::uint32_t c : rgb) p.insert(p.end(), {static_cast<unsigned char>(c >> 16), static_cast<unsigned char>(c >> 8), static_cast<unsigned char>(c), 0});
    return plat::CreatePalette(p.data());
}
std::uint32_t Nearest(HPALETTE palette, std::uint32_t rgb) {
    return plat::NearestPaletteIndex(palette, (rgb & 0xFF) << 16 | (rgb & 0xFF00) | rgb >> 16);
}

TEST(PaletteObjects, NearestEntryForClearCasesAndNullHandles) {
    HPALETTE palette = Palette({0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0x808080});
    ASSERT_NE(palette, nullptr);
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {0x000000, 0}, {0xFFFFFF, 1}, {0xFF0000, 2}, {0x00FF00, 3}, {0x0000FF, 4}, {0x808080, 5}, {0xF00A0C, 2},
        {0x08E614, 3}, {0x140CDC, 4}, {0x0A0C09, 0}, {0xF5FAF0, 1}, {0x78877E, 5}, {0xF00A0C, 2}};  // asked again
    for (const auto& [rgb, index] : cases) EXPECT_EQ(Nearest(palette, rgb), index) << rgb;
    EXPECT_TRUE(plat::DeletePalette(palette));
    EXPECT_EQ(plat::CreatePalette(nullptr), nullptr);
    EXPECT_EQ(plat::NearestPaletteIndex(nullptr, 0), plat::kNoPaletteIndex);
    EXPECT_FALSE(plat::DeletePalette(nullptr));
}

#ifndef _WIN32
// The system's own search decides ties and bad records on Windows; these
// are the promises of the POSIX build: the lowest index wins a tie.
TEST(PaletteObjects, PosixTiesGoToTheLowestIndexAndRecordsAreChecked) {
    HPALETTE palette = Palette({0x0A0A0A, 0x141414, 0x0A0A0A, 0x000000});
    ASSERT_NE(palette, nullptr);
    for (auto [rgb, index] : {std::pair<std::uint32_t, std::uint32_t>{0x0F0F0F, 0}, {0x0A0A0A, 0}, {0x010000, 3}})
        EXPECT_EQ(Nearest(palette, rgb), index) << rgb;
    EXPECT_TRUE(plat::DeletePalette(palette));
    EXPECT_FALSE(plat::DeletePalette(palette));  // already gone
    EXPECT_EQ(plat::NearestPaletteIndex(palette, 0), plat::kNoPaletteIndex);
    EXPECT_TRUE(!Palette({0x000000}, 0x200) && !Palette({}));
}
#endif

}  // namespace
