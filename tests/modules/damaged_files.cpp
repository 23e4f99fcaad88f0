// Files that lie about their sizes or stop short: every reader gives no
// image (and, where it has one, the status of a damaged file) instead of
// rows of nothing.
#include "modules/module_files.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace module_tests;

namespace {

struct Damage {
    const char* file;
    int format;
    int depth;
    int option2;
    void (*spoil)(Bytes&);
    int status;  // expected status; -1 where the entry has none
};

void CutToHalf(Bytes& b) { b.resize(b.size() / 2); }
void CutLastBytes(Bytes& b) { b.resize(b.size() - 8); }
void Put16(Bytes& b, size_t at, unsigned v) { b[at] = v & 255, b[at + 1] = (v >> 8) & 255; }
void TallPcx(Bytes& b) { Put16(b, 10, 20000); }  // last row number
void WidePcx(Bytes& b) { Put16(b, 8, 60000), Put16(b, 66, 60002); }
void TallTga(Bytes& b) { Put16(b, 14, 20000); }
void TallGifFrame(Bytes& b) {
    const size_t desc = 13 + (b[10] & 0x80 ? 3u * (2u << (b[10] & 7)) : 0);
    Put16(b, desc + 7, 20000);  // the frame's height
}
void TallCals(Bytes& b) {
    const char* at = std::strstr(reinterpret_cast<const char*>(b.data()), "rpelcnt: 000045,000029");
    if (at) std::memcpy(const_cast<char*>(at) + 16, "009999", 6);
}
void PageOffsetPastEnd(Bytes& b) { b[4] = 0xFF, b[5] = 0xFF, b[6] = 0xFF, b[7] = 0x00; }

const Damage kDamages[] = {
    {"cut_g4.tif", PRISM_FORMAT_TIFF, 1, 0, CutToHalf, -1},
    {"cut_lzw.tif", PRISM_FORMAT_TIFF, 24, 0, CutToHalf, -1},
    {"cut_raw.tif", PRISM_FORMAT_TIFF, 8, 1, CutToHalf, -1},
    {"cut.cal", PRISM_FORMAT_CALS, 1, 0, CutLastBytes, -1},
    {"tall.cal", PRISM_FORMAT_CALS, 1, 0, TallCals, -1},
    {"cut.pcx", PRISM_FORMAT_PCX, 24, 0, CutToHalf, 2},
    {"tall.pcx", PRISM_FORMAT_PCX, 8, 0, TallPcx, 2},
    {"wide.pcx", PRISM_FORMAT_PCX, 1, 0, WidePcx, 2},
    {"cut.dcx", PRISM_FORMAT_DCX, 4, 0, CutToHalf, 2},
    {"lost.dcx", PRISM_FORMAT_DCX, 4, 0, PageOffsetPastEnd, 2},
    {"cut.gif", PRISM_FORMAT_GIF, 8, 0, CutToHalf, 2},
    {"tall.gif", PRISM_FORMAT_GIF, 8, 0, TallGifFrame, 2},
    {"cut.TGA", PRISM_FORMAT_TGA, 24, 0, CutToHalf, -1},
    {"cutrle.TGA", PRISM_FORMAT_TGA, 8, 1, CutToHalf, -1},
    {"tall.TGA", PRISM_FORMAT_TGA, 24, 0, TallTga, -1},
};

class DamagedFile : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedFile, GivesNoImage) {
    const Damage& d = GetParam();
    if (!ModuleBuilt(d.format)) GTEST_SKIP() << "module not built";
    TempFile file(d.file);
    HDIB source = Picture(d.depth, 45, 29);
    ASSERT_NE(0, SaveDIBInImageFormat(file.path(), source, d.format, 0, d.option2));
    GlobalFree(source);
    // the file as written loads; the spoilt one does not
    int status = -1;
    HDIB good = LoadImageIntoDIB(file.path(), 1, &status);
    ASSERT_NE(nullptr, good);
    GlobalFree(good);
    Bytes bytes = testing_support::ReadFile(file.name);
    d.spoil(bytes);
    testing_support::WriteFile(file.name, bytes);
    status = -1;
    EXPECT_EQ(nullptr, LoadImageIntoDIB(file.path(), 1, &status));
    EXPECT_EQ(d.status, status);
}

INSTANTIATE_TEST_SUITE_P(Readers, DamagedFile, ::testing::ValuesIn(kDamages), [](const auto& info) {
    std::string n = info.param.file;
    for (char& c : n) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return n;
});

}  // namespace
