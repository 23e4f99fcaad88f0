// A small host for the main job: prints one BMP through PRISM32.DLL on the
// tests' PostScript printer (made the default printer for the run),
// centred and scaled to fit the page.  Usage: print_sample IMAGE.bmp
// The PostScript lands in printed.ps in the working directory.
#include "device/test_printer.h"
#include "prism32.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: print_sample IMAGE.bmp\n");
        return 2;
    }
    std::string why;
    if (!testing_support::InstallTestPrinter(&why)) {
        std::fprintf(stderr, "no printer: %s\n", why.c_str());
        return 1;
    }
    HDIB dib = LoadDIBFromFile(argv[1]);
    if (!dib) {
        std::fprintf(stderr, "cannot load %s (code %d)\n", argv[1], ImgError());
        return 1;
    }
    testing_support::DefaultPrinter printer(testing_support::TestPrinterDevice().c_str());
    PrintOptions options = {0, 1, 1, 1, 1, 0, 0, 1, 0};  // centred, scaled to fit, page text
    const int result = PrintDIB(nullptr, nullptr, dib, argv[1], nullptr, &options, 0);
    GlobalFree(dib);
    std::printf("PrintDIB: %d, %s\n", result, testing_support::PrinterOutput().c_str());
    return result == 0 ? 0 : 1;
}
