// Files that lie about their sizes or stop short: every reader gives no
// image (and, where it has one, the status of a damaged file) instead of
// rows of nothing.
#include "modules/module_files.h"

#include <cstring>

using namespace module_tests;

namespace {

void Put16(Bytes& b, size_t at, unsigned v) { b[at] = v & 255, b[at + 1] = (v >> 8) & 255; }
void CutToHalf(Bytes& b) { b.resize(b.size() / 2); }
void CutLastBytes(Bytes& b) { b.resize(b.size() - 8); }
void TallPcx(Bytes& b) { Put16(b, 10, 20000); }  // last row number
void WidePcx(Bytes& b) { Put16(b, 8, 60000), Put16(b, 66, 60002); }
void TallTga(Bytes& b) { Put16(b, 14, 20000); }
void TallGifFrame(Bytes& b) { Put16(b, 13 + (b[10] & 0x80 ? 3u * (2u << (b[10] & 7)) : 0) + 7, 20000); }
void TallCals(Bytes& b) {
    char* at = std::strstr(reinterpret_cast<char*>(b.data()), "rpelcnt: 000045,000029");
    if (at) std::memcpy(at + 16, "009999", 6);
}
void PageOffsetPastEnd(Bytes& b) { b[4] = 0xFF, b[5] = 0xFF, b[6] = 0xFF, b[7] = 0x00; }

// Each file is first loaded as written (a round trip), then spoilt.
const FileCase kDamages[] = {
    {"cut_g4.tif", PRISM_FORMAT_TIFF, 1, 0, 0, 1, CutToHalf, -1},     {"cut_lzw.tif", PRISM_FORMAT_TIFF, 24, 0, 0, 24, CutToHalf, -1},
    {"cut_raw.tif", PRISM_FORMAT_TIFF, 8, 0, 1, 8, CutToHalf, -1},    {"cut.cal", PRISM_FORMAT_CALS, 1, 0, 0, 1, CutLastBytes, -1},
    {"tall.cal", PRISM_FORMAT_CALS, 1, 0, 0, 1, TallCals, -1},        {"cut.pcx", PRISM_FORMAT_PCX, 24, 0, 0, 24, CutToHalf, 2},
    {"tall.pcx", PRISM_FORMAT_PCX, 8, 0, 0, 8, TallPcx, 2},           {"wide.pcx", PRISM_FORMAT_PCX, 1, 0, 0, 1, WidePcx, 2},
    {"cut.dcx", PRISM_FORMAT_DCX, 4, 0, 0, 4, CutToHalf, 2},          {"lost.dcx", PRISM_FORMAT_DCX, 4, 0, 0, 4, PageOffsetPastEnd, 2},
    {"cut.gif", PRISM_FORMAT_GIF, 8, 0, 0, 8, CutToHalf, 2},          {"tall.gif", PRISM_FORMAT_GIF, 8, 0, 0, 8, TallGifFrame, 2},
    {"cut.TGA", PRISM_FORMAT_TGA, 24, 0, 0, 24, CutToHalf, -1},       {"cutrle.TGA", PRISM_FORMAT_TGA, 8, 0, 1, 8, CutToHalf, -1},
    {"tall.TGA", PRISM_FORMAT_TGA, 24, 0, 0, 24, TallTga, -1},
};

INSTANTIATE_TEST_SUITE_P(Damaged, ModuleFile, ::testing::ValuesIn(kDamages), NameOf);

}  // namespace
