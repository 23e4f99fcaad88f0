// Pixel colours read back from the graphics system, the test window, the
// printing tests' image and readers of the printer's output, and the
// watchdog.
#include "support/device_support.h"

#include "device/test_printer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace testing_support {
namespace {

Colors Masked(const std::uint32_t* p, size_t n) {
    Colors c(p, p + n);
    for (auto& v : c) v &= 0xFFFFFF;
    return c;
}

BITMAPINFO TopDown32(LONG width, LONG height) {
    BITMAPINFO info = {};
    info.bmiHeader = BITMAPINFOHEADER{40, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    return info;
}

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


int IntAt(const std::string& text, size_t* at) {
    while (*at < text.size() && (text[*at] == ' ' || text[*at] == '\n')) ++*at;
    char* end = nullptr;
    const double v = std::strtod(text.c_str() + *at, &end);
    *at = static_cast<size_t>(end - text.c_str());
    return static_cast<int>(v < 0 ? v - 0.5 : v + 0.5);
}

}  // namespace

Colors ColorsOf(const Bytes& dib) {
    const int width = static_cast<int>(dib[4] | dib[5] << 8 | dib[6] << 16);
    const int height = static_cast<int>(dib[8] | dib[9] << 8 | dib[10] << 16), depth = dib[14];
    Colors c;
    for (int y = height - 1; y >= 0; --y)
        for (int x = 0; x < width; ++x) {
            const unsigned v = PixelAt(dib, x, y);
            const unsigned char* q = dib.data() + 40 + 4 * v;
            c.push_back(depth > 8 ? v : static_cast<std::uint32_t>(q[2] << 16 | q[1] << 8 | q[0]));
        }
    return c;
}

Colors ColorsOf(HBITMAP bitmap, SIZE* size) {
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
    if (size) *size = SIZE{bm.bmWidth, bm.bmHeight};
    BITMAPINFO info = TopDown32(bm.bmWidth, bm.bmHeight);
    std::vector<std::uint32_t> p(static_cast<size_t>(bm.bmWidth) * bm.bmHeight);
    HDC screen = GetDC(nullptr);
    GetDIBits(screen, bitmap, 0, bm.bmHeight, p.data(), &info, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    return Masked(p.data(), p.size());
}

Colors ColorsOf(HWND window, RECT* clientOut) {
    RECT client;
    GetClientRect(window, &client);
    if (clientOut) *clientOut = client;
    BITMAPINFO info = TopDown32(client.right, client.bottom);
    void* bits = nullptr;
    HDC dc = GetDC(window), memory = CreateCompatibleDC(dc);
    HBITMAP section = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, section);
    BitBlt(memory, 0, 0, client.right, client.bottom, dc, 0, 0, SRCCOPY);
    Colors c = Masked(static_cast<std::uint32_t*>(bits), static_cast<size_t>(client.right) * client.bottom);
    SelectObject(memory, old);
    DeleteObject(section);
    DeleteDC(memory);
    ReleaseDC(window, dc);
    return c;
}

HBITMAP ScreenBitmap(const Colors& colors, int width, int height) {
    HDC screen = GetDC(nullptr);
    HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    BITMAPINFO info = TopDown32(width, height);
    SetDIBits(screen, bitmap, 0, height, colors.data(), &info, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    return bitmap;
}

std::vector<unsigned> PixelsOf(HBITMAP bitmap) {
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
    Bytes bits(static_cast<size_t>(bm.bmWidthBytes) * bm.bmHeight);
    GetBitmapBits(bitmap, static_cast<LONG>(bits.size()), bits.data());
    std::vector<unsigned> v;
    for (int y = 0; y < bm.bmHeight; ++y)
        for (int x = 0; x < bm.bmWidth; ++x) {
            const unsigned char* row = bits.data() + static_cast<size_t>(bm.bmWidthBytes) * y;
            switch (bm.bmBitsPixel) {
                case 1: v.push_back(row[x / 8] >> (7 - x % 8) & 1); break;
                case 4: v.push_back(x % 2 ? row[x / 2] & 15 : row[x / 2] >> 4); break;
                case 8: v.push_back(row[x]); break;
                default: v.push_back(row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16); break;
            }
        }
    return v;
}

std::vector<unsigned> PixelsOf(const Bytes& dib) {
    std::vector<unsigned> v;
    for (int y = Field(dib, 8) - 1; y >= 0; --y)
        for (int x = 0; x < Field(dib, 4); ++x) v.push_back(PixelAt(dib, x, y));
    return v;
}

BITMAP RecordOf(HBITMAP bitmap) {
    BITMAP bm = {};
    GetObjectA(bitmap, sizeof(bm), &bm);
    return bm;
}

HBITMAP DeviceCopy(const Bytes& dib) {
    const int w = Field(dib, 4), h = Field(dib, 8), d = dib[14];
    const size_t wb = (w * d + 15) / 16 * 2, stride = Stride(w, d), at = dib.size() - stride * h;
    Bytes bits(wb * h);
    for (int y = 0; y < h; ++y) std::copy_n(dib.begin() + at + stride * (h - 1 - y), wb, bits.begin() + wb * y);
    return CreateBitmap(w, h, 1, d, bits.data());
}

Bytes SquareMetaFile() {
    HDC dc = CreateMetaFileA(nullptr);
    PatBlt(dc, 0, 0, 10, 10, BLACKNESS);
    HMETAFILE mf = CloseMetaFile(dc);
    Bytes bits(GetMetaFileBitsEx(mf, 0, nullptr));
    GetMetaFileBitsEx(mf, static_cast<UINT>(bits.size()), bits.data());
    DeleteMetaFile(mf);
    return bits;
}

Colors SquareColors(int width, int height) {
    Colors c(static_cast<size_t>(width) * height, 0xFFFFFF);
    for (int i = 0; i < 100; ++i) c[static_cast<size_t>(i / 10) * width + i % 10] = 0;
    return c;
}

void Append(Bytes* b, std::uint32_t v, int n) {
    for (int i = 0; i < n; ++i) b->push_back(static_cast<unsigned char>(v >> (8 * i)));
}

std::uint32_t Le(const Bytes& b, size_t at, int n) { return n == 2 ? b[at] | b[at + 1] << 8 : Get32(b, at); }

Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }

int ScreenCaps(int index) {
    HDC screen = GetDC(nullptr);
    const int value = GetDeviceCaps(screen, index);
    ReleaseDC(nullptr, screen);
    return value;
}

Bytes ClipFile(const std::vector<std::pair<int, Bytes>>& entries) {
    Bytes b;
    Append(&b, 50000, 2), Append(&b, static_cast<std::uint32_t>(entries.size()), 2);
    std::uint32_t offset = static_cast<std::uint32_t>(4 + 89 * entries.size());
    for (const auto& e : entries) {
        Append(&b, e.first, 2), Append(&b, static_cast<std::uint32_t>(e.second.size()), 4), Append(&b, offset, 4);
        b.insert(b.end(), 79, 0);
        offset += static_cast<std::uint32_t>(e.second.size());
    }
    for (const auto& e : entries) b.insert(b.end(), e.second.begin(), e.second.end());
    return b;
}

Colors DrawnText(const std::string& text, SIZE* size) {
    HDC dc = CreateCompatibleDC(nullptr);
    RECT r = {0, 0, 0, 0};
    DrawTextA(dc, text.c_str(), -1, &r, DT_CALCRECT | DT_EXTERNALLEADING);
    HBITMAP bitmap = CreateBitmap(r.right, r.bottom, 1, 1, nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    PatBlt(dc, 0, 0, r.right, r.bottom, WHITENESS);
    DrawTextA(dc, text.c_str(), -1, &r, DT_NOCLIP | DT_EXTERNALLEADING);
    SelectObject(dc, old);
    DeleteDC(dc);
    const Colors c = ColorsOf(bitmap, size);
    DeleteObject(bitmap);
    return c;
}

TestWindow::TestWindow(Hook hook, HBRUSH background) : hook_(std::move(hook)) {
    WNDCLASSA wc = {};
    wc.lpfnWndProc = &Procedure;
    wc.hInstance = GetModuleHandleA(nullptr);
    wc.hbrBackground = background;
    wc.lpszClassName = background ? "PrismTestWindowBrush" : "PrismTestWindow";
    RegisterClassA(&wc);  // fails harmlessly once registered
    window_ = CreateWindowExA(0, wc.lpszClassName, "", WS_POPUP | WS_HSCROLL | WS_VSCROLL, 0, 0, kWidth, kHeight,
                              nullptr, nullptr, wc.hInstance, nullptr);
    SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ShowScrollBar(window_, SB_BOTH, FALSE);
    ShowWindow(window_, SW_SHOWNOACTIVATE);
    UpdateWindow(window_);
}

TestWindow::~TestWindow() {
    if (IsWindow(window_)) DestroyWindow(window_);
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
    }
}

std::uint32_t TestWindow::PatternAt(int x, int y) {
    return static_cast<std::uint32_t>((x * 7 & 0xFF) << 16 | (y * 5 & 0xFF) << 8 | ((x ^ y) & 0xFF));
}

Colors TestWindow::Pattern() {
    Colors p(kWidth * kHeight);
    for (int i = 0; i < kWidth * kHeight; ++i) p[i] = PatternAt(i % kWidth, i / kWidth);
    return p;
}

LRESULT CALLBACK TestWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<TestWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    LRESULT result = 0;
    if (self && self->hook_ && self->hook_(window, message, wParam, lParam, &result)) return result;
    if (message == WM_ERASEBKGND) return self ? ++self->erasures : 1;
    if (message != WM_PAINT) return DefWindowProcA(window, message, wParam, lParam);
    PAINTSTRUCT ps;
    HDC dc = BeginPaint(window, &ps);
    const Colors p = Pattern();
    BITMAPINFO info = TopDown32(kWidth, kHeight);
    SetDIBitsToDevice(dc, 0, 0, kWidth, kHeight, 0, 0, 0, kHeight, p.data(), &info, DIB_RGB_COLORS);
    EndPaint(window, &ps);
    if (self) ++self->paints;
    return 0;
}

ShownImage::ShownImage(HWND w, DisplayState* s, const Bytes& bytes, const int* zoom, UINT flags)
    : window(w), state(s), dib(BlockFrom(bytes)) {
    DisplayWmCreate(window, 0, 0, state);
    DisplayDIBStart(window, dib, nullptr, zoom, flags, state);
    Settle(window);
}

ShownImage::~ShownImage() {
    DisplayWmDestroy(window, 0, 0, state);
    GlobalFree(dib);
}

void Settle(HWND window) {
    MSG m;
    while (PeekMessageA(&m, window, 0, 0, PM_REMOVE)) DispatchMessageA(&m);
    UpdateWindow(window);
}

HDIB TwoTone(int width, int height, int headerSize) {
    Bytes b = PackedDib({width, height, 8, 2, 2});
    Put32(b, 0, static_cast<std::uint32_t>(headerSize));
    Put32(b, 24, 11811), Put32(b, 28, 11811);
    std::fill_n(b.begin() + 40, 8, 0);
    b[44] = b[45] = b[46] = 96;
    const auto grey = b.begin() + 48 + static_cast<long>(Stride(width, 8)) * (height / 2);
    std::fill(b.begin() + 48, grey, 1);  // the bottom rows come first
    std::fill(grey, b.end(), 0);
    return BlockFrom(b);
}

std::string TextOf(HWND window) {
    char text[256] = {};
    SendMessageA(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
    return text;
}

std::string ControlText(HWND dialog, int id) { return TextOf(GetDlgItem(dialog, id)); }

std::string ListText(HWND dialog, int id, LRESULT index) {
    char text[512] = {};
    SendDlgItemMessageA(dialog, id, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
    return text;
}

bool Checked(HWND dialog, int id) { return SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED; }

void Press(HWND dialog, int id, int notification) {
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

Watchdog::Watchdog(HWND window, int rescueMs, const char* title, Action act)
    : thread_([this, window, rescueMs, name = std::string(title ? title : ""), act] {
          const auto start = std::chrono::steady_clock::now();
          HWND handled = nullptr;
          while (!done_) {
              std::this_thread::sleep_for(std::chrono::milliseconds(10));
              const auto waited = std::chrono::steady_clock::now() - start;
              if (waited > std::chrono::milliseconds(rescueMs) && !fired_.exchange(true) && window)
                  PostMessageA(window, WM_LBUTTONUP, 0, 0);
              if (waited > std::chrono::milliseconds(3 * rescueMs)) {
                  std::fprintf(stderr, "watchdog: a blocking call did not return (window \"%s\")\n", name.c_str());
                  std::fflush(stderr);
                  std::_Exit(3);
              }
              if (window) PostMessageA(window, WM_NULL, 0, 0);
              HWND found = name.empty() ? nullptr : FindWindowA(MAKEINTATOM(32770), name.c_str());
              if (found && found != handled && IsWindowVisible(found)) {
                  handled = found;
                  ++seen_;
                  if (act) act(found);
              }
          }
      }) {}

Watchdog::~Watchdog() {
    done_ = true;
    thread_.join();
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

int Off(const RECT& a, const RECT& b) {
    return std::max({std::abs(a.left - b.left), std::abs(a.top - b.top), std::abs(a.right - b.right),
                     std::abs(a.bottom - b.bottom)});
}

RECT DarkBox(const Rendered& page, int threshold) {
    RECT box = {page.width, page.height, 0, 0};
    for (int y = 0; y < page.height; ++y)
        for (int x = 0; x < page.width; ++x)
            if (page.at(x, y) < threshold)
                box = {std::min<LONG>(box.left, x), std::min<LONG>(box.top, y), std::max<LONG>(box.right, x + 1),
                       std::max<LONG>(box.bottom, y + 1)};
    return box;
}

}  // namespace testing_support
