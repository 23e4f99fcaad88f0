// The tests' printer: the PostScript driver of the system with a small
// printer description, installed into the running prefix, and readers for
// its output (the PostScript text, and pages rendered by ghostscript).
#include "device/test_printer.h"

#include <winspool.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

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

std::string WorkPath(const char* name) {
    char dir[MAX_PATH] = {};
    GetCurrentDirectoryA(MAX_PATH, dir);
    return std::string(dir) + "\\" + name;
}

// The host path of a file, for programs of the host system.
std::string HostPath(const std::string& path) {
    using ToUnix = char* (*)(LPCWSTR);
    auto toUnix = reinterpret_cast<ToUnix>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
    wchar_t wide[MAX_PATH];
    MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, wide, MAX_PATH);
    char* unix = toUnix ? toUnix(wide) : nullptr;
    if (!unix) return path;
    std::string out(unix);
    HeapFree(GetProcessHeap(), 0, unix);
    return out;
}

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
    DRIVER_INFO_3A driver = {};
    driver.cVersion = 3;
    driver.pName = const_cast<char*>(kDriver);
    driver.pDriverPath = const_cast<char*>("wineps.drv");
    driver.pConfigFile = const_cast<char*>("wineps.drv");
    driver.pDataFile = const_cast<char*>(description.c_str());
    driver.pDefaultDataType = const_cast<char*>("RAW");
    if (!AddPrinterDriverExA(nullptr, 3, reinterpret_cast<BYTE*>(&driver), APD_COPY_NEW_FILES) &&
        GetLastError() != ERROR_PRINTER_DRIVER_ALREADY_INSTALLED) {
        *error = "AddPrinterDriverExA failed: " + std::to_string(GetLastError());
        return false;
    }
    const std::string port = PrinterOutput();
    PRINTER_INFO_2A printer = {};
    printer.pPrinterName = const_cast<char*>(kTestPrinter);
    printer.pPortName = const_cast<char*>(port.c_str());
    printer.pDriverName = const_cast<char*>(kDriver);
    printer.pPrintProcessor = const_cast<char*>("WinPrint");
    printer.pDatatype = const_cast<char*>("RAW");
    HANDLE added = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&printer));
    if (!added && GetLastError() != ERROR_PRINTER_ALREADY_EXISTS) {
        *error = "AddPrinterA failed: " + std::to_string(GetLastError());
        return false;
    }
    if (added) ClosePrinter(added);
    return true;
}

int IntAt(const std::string& text, size_t* at) {
    while (*at < text.size() && (text[*at] == ' ' || text[*at] == '\n')) ++*at;
    char* end = nullptr;
    const double v = std::strtod(text.c_str() + *at, &end);
    *at = static_cast<size_t>(end - text.c_str());
    return static_cast<int>(v < 0 ? v - 0.5 : v + 0.5);
}

}  // namespace

bool InstallTestPrinter(std::string* error) {
    static int state = 0;  // 0 not tried, 1 installed, 2 refused
    static std::string reason;
    if (state == 0) state = Install(&reason) ? 1 : 2;
    *error = reason;
    return state == 1;
}

std::string PrinterOutput() { return WorkPath("printed.ps"); }

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

Printed ReadPrinted() {
    Printed p;
    std::ifstream in(PrinterOutput(), std::ios::binary);
    std::stringstream all;
    all << in.rdbuf();
    p.text = all.str();
    const std::string& t = p.text;
    const size_t title = t.find("%%Title: ");
    if (title != std::string::npos) p.title = t.substr(title + 9, t.find('\n', title) - title - 9);
    // Each stretch: "x y translate", "w h scale", then the image dictionary.
    for (size_t at = 0; (at = t.find("\n%%Page: ", at)) != std::string::npos; ++at) ++p.pages;
    for (size_t at = 0; (at = t.find(" translate\n", at)) != std::string::npos; ++at) {
        const size_t line = t.rfind('\n', at) + 1;
        size_t pos = line;
        Stretch s = {};
        s.x = IntAt(t, &pos);
        s.y = IntAt(t, &pos);
        pos = at + 11;
        s.width = IntAt(t, &pos);
        s.height = IntAt(t, &pos);
        // The page's own set-up also translates and scales; images follow
        // their scale with a dictionary.
        if (t.compare(pos, 9, " scale\n<<") != 0) continue;
        const size_t w = t.find("/Width ", pos), h = t.find("/Height ", pos);
        if (w == std::string::npos || h == std::string::npos) continue;
        size_t wp = w + 7, hp = h + 8;
        s.sourceWidth = IntAt(t, &wp);
        s.sourceHeight = IntAt(t, &hp);
        int page = 0;
        for (size_t q = 0; (q = t.find("\n%%Page: ", q)) != std::string::npos && q < at; ++q) ++page;
        p.stretches.push_back(s);
        p.stretchPage.push_back(page);
    }
    return p;
}

bool RenderPage(int page, Rendered* out, std::string* error) {
    const std::string image = WorkPath("printed.pgm"), part = WorkPath("printed.part");
    DeleteFileA(image.c_str());
    // A program of the host gives no process to wait for here: it renders
    // to a side file and renames it when done, and the test waits for the name.
    std::string command = "/bin/sh -c \"/usr/bin/gs -q -dBATCH -dNOPAUSE -dSAFER -r300 -sDEVICE=pgmraw -dFirstPage=" +
                          std::to_string(page) + " -dLastPage=" + std::to_string(page) + " -sOutputFile='" +
                          HostPath(part) + "' '" + HostPath(PrinterOutput()) + "'; mv -f '" + HostPath(part) +
                          "' '" + HostPath(image) + "'\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        *error = "cannot run ghostscript (/usr/bin/gs)";
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    for (int waited = 0; GetFileAttributesA(image.c_str()) == INVALID_FILE_ATTRIBUTES; waited += 50) {
        if (waited > 60000) {
            *error = "ghostscript gave no page " + std::to_string(page);
            return false;
        }
        Sleep(50);
    }
    std::ifstream in(image, std::ios::binary);
    std::string magic;
    int maxValue = 0;
    in >> magic >> std::ws;
    while (in.peek() == '#') in.ignore(1 << 20, '\n');  // the renderer's comment line
    in >> out->width >> out->height >> maxValue;
    in.get();
    if (magic != "P5" || out->width <= 0 || out->height <= 0) {
        *error = "ghostscript gave no page " + std::to_string(page);
        return false;
    }
    out->grey.resize(static_cast<size_t>(out->width) * out->height);
    in.read(reinterpret_cast<char*>(out->grey.data()), static_cast<std::streamsize>(out->grey.size()));
    return static_cast<bool>(in);
}

RECT DarkBox(const Rendered& page, int threshold) {
    RECT box = {page.width, page.height, 0, 0};
    for (int y = 0; y < page.height; ++y)
        for (int x = 0; x < page.width; ++x)
            if (page.at(x, y) < threshold) {
                box.left = x < box.left ? x : box.left;
                box.top = y < box.top ? y : box.top;
                box.right = x + 1 > box.right ? x + 1 : box.right;
                box.bottom = y + 1 > box.bottom ? y + 1 : box.bottom;
            }
    return box;
}

Watchdog::Watchdog(const char* title, Action act, void* context, int limitMs)
    : title_(title ? title : ""), act_(act), context_(context), limitMs_(limitMs) {
    thread_ = CreateThread(nullptr, 0, &Run, this, 0, nullptr);
}

Watchdog::~Watchdog() {
    InterlockedExchange(&stop_, 1);
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
}

DWORD WINAPI Watchdog::Run(void* self) {
    auto* w = static_cast<Watchdog*>(self);
    HWND handled = nullptr;
    for (int waited = 0; !w->stop_; waited += 20) {
        if (waited > w->limitMs_) {
            std::fprintf(stderr, "watchdog: test still running after %d ms (window \"%s\"); giving up\n",
                         w->limitMs_, w->title_.c_str());
            std::fflush(stderr);
            ExitProcess(3);
        }
        HWND found = w->title_.empty() ? nullptr : FindWindowA(MAKEINTATOM(32770), w->title_.c_str());
        if (found && found != handled && IsWindowVisible(found)) {
            handled = found;
            InterlockedIncrement(&w->seen_);
            if (w->act_) w->act_(found, w->context_);
        }
        Sleep(20);
    }
    return 0;
}

std::string ControlText(HWND dialog, int id) {
    char text[256] = {};
    SendMessageA(GetDlgItem(dialog, id), WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

}  // namespace testing_support
