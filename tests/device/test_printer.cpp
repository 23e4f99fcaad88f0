// The tests' printer: the PostScript driver of the system with a small
// printer description, installed into the running prefix.
#include "device/test_printer.h"

#include <winspool.h>

#include <cstdio>

namespace testing_support {

namespace {

const char kDriver[] = "PrismTestDriver";

// 300 dots per inch, Letter, printable to the edges.
const char kDescription[] =
    "*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n*LanguageVersion: English\n"
    "*LanguageEncoding: ISOLatin1\n*PCFileName: \"PRISMTST.PPD\"\n*Manufacturer: \"Test\"\n*Product: \"(Test)\"\n"
    "*ModelName: \"Test Printer\"\n*ShortNickName: \"Test Printer\"\n*NickName: \"Test Printer\"\n"
    "*PSVersion: \"(3010.000) 0\"\n*LanguageLevel: \"3\"\n*ColorDevice: True\n*DefaultColorSpace: RGB\n"
    "*FileSystem: False\n*Throughput: \"1\"\n*LandscapeOrientation: Plus90\n*TTRasterizer: Type42\n"
    "*DefaultResolution: 300dpi\n*Resolution 300dpi/300 DPI: \"<</HWResolution[300 300]>>setpagedevice\"\n"
    "*OpenUI *PageSize/Page Size: PickOne\n*OrderDependency: 10 AnySetup *PageSize\n*DefaultPageSize: Letter\n"
    "*PageSize Letter/US Letter: \"<</PageSize[612 792]/ImagingBBox null>>setpagedevice\"\n*CloseUI: *PageSize\n"
    "*OpenUI *PageRegion: PickOne\n*OrderDependency: 10 AnySetup *PageRegion\n*DefaultPageRegion: Letter\n"
    "*PageRegion Letter/US Letter: \"<</PageSize[612 792]/ImagingBBox null>>setpagedevice\"\n"
    "*CloseUI: *PageRegion\n*DefaultImageableArea: Letter\n*ImageableArea Letter/US Letter: \"0 0 612 792\"\n"
    "*DefaultPaperDimension: Letter\n*PaperDimension Letter/US Letter: \"612 792\"\n";

bool Install(std::string* error) {
    char dir[MAX_PATH] = {};
    DWORD need = 0;
    // The driver reads its description from the driver folder of its version.
    if (!GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(dir), sizeof dir, &need)) {
        *error = "no printer driver folder";
        return false;
    }
    const std::string folder = std::string(dir) + "\\3", description = folder + "\\prism_test.ppd";
    CreateDirectoryA(folder.c_str(), nullptr);
    if (FILE* f = std::fopen(description.c_str(), "wb")) {
        std::fputs(kDescription, f);
        std::fclose(f);
    }
    auto text = [](const char* t) { return const_cast<char*>(t); };
    DRIVER_INFO_3A driver = {3, text(kDriver), nullptr, text("wineps.drv"), text(description.c_str()),
                             text("wineps.drv"), nullptr, nullptr, nullptr, text("RAW")};
    if (!AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&driver), APD_COPY_NEW_FILES) &&
        GetLastError() != ERROR_PRINTER_DRIVER_ALREADY_INSTALLED) {
        *error = "AddPrinterDriverExA failed: " + std::to_string(GetLastError());
        return false;
    }
    const std::string port = PrinterOutput();
    PRINTER_INFO_2A printer = {};
    printer.pPrinterName = text(kTestPrinter);
    printer.pPortName = text(port.c_str());
    printer.pDriverName = text(kDriver);
    printer.pPrintProcessor = text("WinPrint");
    printer.pDatatype = text("RAW");
    HANDLE added = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&printer));
    if (!added && GetLastError() != ERROR_PRINTER_ALREADY_EXISTS) {
        *error = "AddPrinterA failed: " + std::to_string(GetLastError());
        return false;
    }
    if (added) ClosePrinter(added);
    return true;
}

}  // namespace

bool InstallTestPrinter(std::string* error) {
    static std::string reason;
    static const bool installed = Install(&reason);  // once per process
    *error = reason;
    return installed;
}

std::string PrinterOutput() {
    char dir[MAX_PATH] = {};
    GetCurrentDirectoryA(MAX_PATH, dir);
    return std::string(dir) + "\\printed.ps";
}

HDC CreateTestPrinterDC() {
    return CreateDCA("WINEPS.DRV", kTestPrinter, PrinterOutput().c_str(), nullptr);
}

std::string TestPrinterDevice() { return std::string(kTestPrinter) + ",WINEPS.DRV," + PrinterOutput(); }

DefaultPrinter::DefaultPrinter(const char* device) {
    char saved[256] = {};
    GetProfileStringA("windows", "device", "", saved, sizeof saved);
    saved_ = saved;
    WriteProfileStringA("windows", "device", device);
}

DefaultPrinter::~DefaultPrinter() {
    WriteProfileStringA("windows", "device", saved_.empty() ? nullptr : saved_.c_str());
}

}  // namespace testing_support
