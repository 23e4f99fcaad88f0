// Page layout in inches and the printer profile texts, without a printer.
#include "print/print_layout.h"
#include "print/printer_list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace prism;

namespace {

struct LayoutCase {
    const char* name;
    LayoutRequest request;
    InchRect image;  // expected, inches
    float scale;
    bool banded;
};

// A Letter page at 300 dots per inch is 8.5 by 11 inches.
constexpr float kW = 8.5f, kH = 11.0f;

TEST(PrintLayout, PlacesAndScalesTheImage) {
    const LayoutCase cases[] = {
        {"one dot per pixel", {300, 150, 300, 300, kW, kH, false, false, false, false}, {0, 0, 1, 0.5f}, 1, false},
        {"centred", {300, 150, 300, 300, kW, kH, false, false, true, true}, {3.75f, 5.25f, 4.75f, 5.75f}, 1, false},
        {"fit enlarges", {300, 150, 300, 300, kW, kH, true, false, false, false}, {0, 0, 8.5f, 4.25f}, 8.5f, false},
        {"fit reduces, banded", {3000, 3000, 300, 300, kW, kH, true, false, false, true},
         {0, 1.25f, 8.5f, 9.75f}, 0.85f, true},
        {"stretch", {300, 150, 300, 300, kW, kH, false, true, false, false}, {0, 0, 8.5f, 11}, 1, false},
        // The proportional scale still multiplies the stretched size.
        {"fit and stretch", {300, 150, 300, 300, kW, kH, true, true, false, false}, {0, 0, 72.25f, 93.5f}, 8.5f,
         false},
        {"empty image keeps scale 1", {0, 0, 300, 300, kW, kH, true, false, false, false}, {0, 0, 0, 0}, 1, false},
    };
    for (const LayoutCase& c : cases) {
        SCOPED_TRACE(c.name);
        const PageLayout l = LayOutPage(c.request);
        const float got[] = {l.scale, l.image.left, l.image.top, l.image.right, l.image.bottom};
        const float want[] = {c.scale, c.image.left, c.image.top, c.image.right, c.image.bottom};
        for (int i = 0; i < 5; ++i) EXPECT_FLOAT_EQ(got[i], want[i]) << "scale, left, top, right, bottom: " << i;
        EXPECT_EQ(l.banded, c.banded);
        // The source rectangle of the whole image is the whole image.
        const PixelRect all = SourcePixels(l.image, l);
        EXPECT_EQ(all.right - all.left, static_cast<int>(c.request.width));
        EXPECT_EQ(all.bottom - all.top, static_cast<int>(c.request.height));
    }
}

TEST(PrintLayout, ImageResolutionSources) {
    const int pair[2] = {150, 75};
    struct Case {
        bool useImage;
        const int* dpi;
        int xPels, yPels;
        float x, y;
    } cases[] = {
        {false, pair, 11811, 11811, 300, 600},      // device resolution
        {true, pair, 11811, 11811, 150, 75},        // the caller's pair first
        {true, nullptr, 11811, 5906, 300, 150.01271f},  // pels per metre over 39.37
        {true, nullptr, 0, 5906, 300, 600},         // one of them 0: the device's
    };
    for (const Case& c : cases) {
        float x = 0, y = 0;
        ImageResolution(300, 600, c.useImage, c.dpi, c.xPels, c.yPels, &x, &y);
        EXPECT_FLOAT_EQ(x, c.x);
        EXPECT_FLOAT_EQ(y, c.y);
    }
}

TEST(PrintLayout, NamesAndDeviceProfile) {
    EXPECT_STREQ(FileNamePart("C:\\docs\\page one.bmp"), "page one.bmp");
    EXPECT_STREQ(FileNamePart("plain.bmp"), "plain.bmp");
    EXPECT_STREQ(FileNamePart("dir\\"), "");
    // Name to a comma; driver and port to a comma or blank; empty tokens skipped.
    const char* cases[][4] = {{"Office Laser,WINEPS.DRV,LPT1:", "Office Laser", "WINEPS.DRV", "LPT1:"},
                              {",,Laser,,DRV LPT1:,", "Laser", "DRV", "LPT1:"}};
    for (auto& c : cases) {
        char text[64], *name, *driver, *port;
        std::strcpy(text, c[0]);
        ASSERT_TRUE(SplitDeviceProfile(text, &name, &driver, &port)) << c[0];
        EXPECT_EQ((std::vector<std::string>{name, driver, port}), (std::vector<std::string>{c[1], c[2], c[3]}));
    }
    char partial[] = "Laser,WINEPS.DRV", *name, *driver, *port;
    EXPECT_FALSE(SplitDeviceProfile(partial, &name, &driver, &port));
}

TEST(PrinterList, LinesEntriesAndProfileValues) {
    EXPECT_EQ(PrinterListLines("Laser", "WINEPS.DRV,LPT1:,FILE:"),
              (std::vector<std::string>{"Laser on LPT1:\tLaser=WINEPS.DRV,LPT1:",
                                        "Laser on FILE:\tLaser=WINEPS.DRV,FILE:"}));
    EXPECT_TRUE(PrinterListLines("Laser", "WINEPS.DRV").empty());
    const PrinterEntry e = SplitPrinterEntry("Laser=WINEPS.DRV,LPT1:", false);
    EXPECT_EQ((std::vector<std::string>{e.name, e.driver, e.port}), (std::vector<std::string>{"Laser", "WINEPS.DRV", "LPT1:"}));
    EXPECT_EQ(SplitPrinterEntry("Laser,WINEPS,LPT1:", true).driver, "WINEPS.DRV");
    EXPECT_EQ(SplitPrinterEntry("Laser,WINEPS,LPT1:", false).driver, "WINEPS");
    EXPECT_EQ(PrinterEntryToProfile("Laser on LPT1:\tLaser=WINEPS.DRV,LPT1:"), "Laser,WINEPS.DRV,LPT1:");
    EXPECT_EQ(PrinterEntryToProfile("no tab=here"), "");
}

TEST(PrinterList, CutOffNameIsCleared) {
    char keys[16] = "one\0two\0thr";  // a list cut inside its third name
    ClearCutOffName(keys, sizeof keys);
    EXPECT_EQ(std::string(keys, 12), std::string("one\0two\0\0\0\0\0", 12));
}

}  // namespace
