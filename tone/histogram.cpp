// The histogram of a moving 256 by 256 window, the tone curve computed
// from it, and the look-up that pushes an 8-bit image through the curve.
#include "platform/export.h"
#include "tone/histogram.h"
#include "tone/tone_internal.h"

#include <algorithm>
#include <cstring>

namespace prism {
namespace tone {

int HistWindowLeft = -256;
int HistWindowTop = -256;
int HistTableBytes = 0;
int LutEntries = 0;

namespace {

constexpr int kWindow = 256;
constexpr std::uint64_t kHistogramBytes = 512;
constexpr std::uint64_t kLutBytes = 256;

// Where the pixel rows of an 8-bit image start: behind the header and
// biClrUsed entries, or 256 when that is 0.
std::uint64_t PixelOffset8(const BITMAPINFOHEADER& h) {
    std::uint64_t n = h.biClrUsed ? h.biClrUsed : 256;
    return kInfoHeaderSize + n * 4;
}

// The pixels of an 8-bit image, rows counted from the top.
struct Plane8 {
    const unsigned char* bits;
    std::int64_t width, height;
    std::uint64_t stride;
    const unsigned char* RowFromTop(std::int64_t y) const {
        return bits + static_cast<size_t>(height - 1 - y) * stride;
    }
};

// Adds `delta` (wrapping, 16-bit) to the bins of the pixels in columns
// [x0, x1) of rows [y0, y1) from the top.  Parts outside the image are left
// out, so a window kept from another image never reads outside this one.
void CountRect(std::uint16_t* bins, const Plane8& p, std::int64_t x0, std::int64_t x1,
               std::int64_t y0, std::int64_t y1, std::uint16_t delta) {
    x0 = std::max<std::int64_t>(x0, 0);
    y0 = std::max<std::int64_t>(y0, 0);
    x1 = std::min(x1, p.width);
    y1 = std::min(y1, p.height);
    if (x0 >= x1 || y0 >= y1) return;
    for (std::int64_t y = y0; y < y1; ++y) {
        const unsigned char* row = p.RowFromTop(y);
        for (std::int64_t x = x0; x < x1; ++x) bins[row[x]] = static_cast<std::uint16_t>(bins[row[x]] + delta);
    }
}

constexpr std::uint16_t kAdd = 1;
constexpr std::uint16_t kSub = 0xFFFF;

HGLOBAL CreateTable(std::uint64_t bytes, int* error, bool identity) {
    HGLOBAL table = AllocBlock(bytes);
    if (!table) {
        SetWord(error, kErrMemory);
        return nullptr;
    }
    BlockLock lock(table);
    if (!lock) {
        GlobalFree(table);
        SetWord(error, kErrLock);
        return nullptr;
    }
    std::memset(lock.get(), 0, static_cast<size_t>(bytes));
    if (identity)
        for (int i = 0; i < 256; ++i) lock.bytes()[i] = static_cast<unsigned char>(i);
    return table;
}

HGLOBAL UpdateHistogram(HDIB dib, HGLOBAL histogram, const int* position, int* error) {
    if (!histogram || !dib) {
        SetWord(error, kErrParameter);
        return nullptr;
    }
    BlockLock image(dib);
    if (!image) {
        SetWord(error, kErrLock);
        return nullptr;
    }
    BITMAPINFOHEADER h = HeaderOf(image);
    int code = CheckGreyHeader(h);
    if (!code && !position) code = kErrParameter;
    Plane8 p{};
    if (!code) {
        p.width = h.biWidth;
        p.height = h.biHeight;
        p.stride = DibRowBytes(p.width, 8);
        std::uint64_t offset = PixelOffset8(h);
        // A block too small for its rows is refused rather than read past.
        if (p.width < 0 || p.height < 0 ||
            !RowsInside(offset, p.height, p.stride, static_cast<std::uint64_t>(p.width), image.size()))
            code = kErrDibSize;
        else
            p.bits = image.bytes() + offset;
    }
    if (code) {
        SetWord(error, code);
        return nullptr;
    }

    const std::int64_t W = p.width, H = p.height;
    std::int64_t x = position[0], y = position[1];
    x = W >= kWindow ? std::min<std::int64_t>(std::max<std::int64_t>(x, 0), W - kWindow) : 0;
    y = H >= kWindow ? std::min<std::int64_t>(std::max<std::int64_t>(y, 0), H - kWindow) : 0;
    if (x == HistWindowLeft && y == HistWindowTop) return histogram;

    BlockLock table(histogram);
    if (!table) {
        SetWord(error, kErrLock);
        return nullptr;
    }
    if (table.size() < kHistogramBytes) {
        SetWord(error, kErrParameter);
        return nullptr;
    }
    std::uint16_t bins[256];
    std::memcpy(bins, table.get(), sizeof(bins));

    const std::int64_t oldLeft = HistWindowLeft, oldTop = HistWindowTop;
    const std::int64_t dx = oldLeft - x, dy = oldTop - y;
    if (dx > 128 || dx < -128 || dy > 128 || dy < -128) {
        int clear = std::min(std::max(HistTableBytes / 2, 0), 256);
        std::memset(bins, 0, static_cast<size_t>(clear) * 2);
        CountRect(bins, p, x, x + std::min<std::int64_t>(W, kWindow), y, y + std::min<std::int64_t>(H, kWindow), kAdd);
    } else {
        // Columns first, on the old rows; then rows, on the new columns.
        const std::int64_t rows = std::min<std::int64_t>(H - y, kWindow);
        if (dx > 0) {
            CountRect(bins, p, x, oldLeft, oldTop, oldTop + rows, kAdd);
            CountRect(bins, p, x + kWindow, std::min(oldLeft + kWindow, W), oldTop, oldTop + rows, kSub);
        } else if (dx < 0) {
            CountRect(bins, p, oldLeft, x, oldTop, oldTop + rows, kSub);
            CountRect(bins, p, oldLeft + kWindow, std::min(x + kWindow, W), oldTop, oldTop + rows, kAdd);
        }
        const std::int64_t cols = std::min<std::int64_t>(W - x, kWindow);
        if (dy > 0) {
            CountRect(bins, p, x, x + cols, y, oldTop, kAdd);
            std::int64_t n = std::min(H - y - kWindow, dy);
            CountRect(bins, p, x, x + cols, y + kWindow, y + kWindow + n, kSub);
        } else if (dy < 0) {
            CountRect(bins, p, x, x + cols, oldTop, y, kSub);
            std::int64_t n = std::min(H - oldTop - kWindow, -dy);
            if (n >= 1) CountRect(bins, p, x, x + cols, oldTop + kWindow, oldTop + kWindow + n, kAdd);
        }
    }
    std::memcpy(table.get(), bins, sizeof(bins));
    HistWindowLeft = static_cast<int>(x);
    HistWindowTop = static_cast<int>(y);
    return histogram;
}

HGLOBAL ComputeCurve(HGLOBAL histogram, HGLOBAL lut, int contrast, int brightness, int* error) {
    if (!lut) {
        SetWord(error, kErrParameter);
        return nullptr;
    }
    BlockLock table(lut);
    if (!table) {  // an unlocked table cannot be written
        SetWord(error, kErrLock);
        return nullptr;
    }
    std::uint32_t centre = 128;
    if (histogram) {
        BlockLock hist(histogram);
        if (hist && hist.size() >= kHistogramBytes) {
            std::uint16_t bins[256];
            std::memcpy(bins, hist.get(), sizeof(bins));
            std::uint32_t count = 0, sum = 0;
            for (std::uint32_t i = 0; i < 256; ++i) {
                count += bins[i];
                sum += i * bins[i];
            }
            // An all-zero table has no mean: refused instead of dividing by 0.
            if (count == 0) {
                SetWord(error, kErrParameter);
                return nullptr;
            }
            centre = (sum / count) & 0xFF;
        }
    }
    const double k = 0.00392156862745098;
    // The products wrap in 32 bits, as the signed arguments are unchecked.
    std::int32_t product = static_cast<std::int32_t>(centre * static_cast<std::uint32_t>(contrast));
    std::int32_t slope = static_cast<std::int32_t>(static_cast<std::uint32_t>(contrast) + 255u);
    double a = -static_cast<double>(product) * k;
    const double step = static_cast<double>(slope) * k;
    const double offset = static_cast<double>(brightness);
    const std::int64_t entries = std::min<std::int64_t>(LutEntries, static_cast<std::int64_t>(table.size()));
    for (std::int64_t i = 0; i < entries; ++i) {
        double v = a + offset;
        // Truncation toward zero, then the clamp; done in this order of
        // tests so that huge values never reach an integer conversion.
        table.bytes()[i] = v >= 255.0 ? 255 : (v <= 0.0 ? 0 : static_cast<unsigned char>(static_cast<int>(v)));
        a += step;
    }
    return lut;
}

}  // namespace

void WriteGreyRamp(unsigned char* at, const unsigned char* end) {
    for (int i = 0; i < 256 && at + 4 <= end; ++i, at += 4) {
        at[0] = at[1] = at[2] = static_cast<unsigned char>(i);
        at[3] = 0;
    }
}

}  // namespace tone
}  // namespace prism

using namespace prism;
using namespace prism::tone;

// Keeps a histogram of an 8-bit image's raw values over a 256 by 256 window.
// mode 30 makes a table (result: its handle), 31 updates it for the window at
// *position (x, y from the top-left; result: the table or 0), 32 frees it
// (result 0).  Errors go to *error, which is cleared first.
PRISM_API HGLOBAL WINAPI ComputeHistogram(HDIB dib, int mode, HGLOBAL histogram, const int* position,
                                         int* error) {
    SetWord(error, 0);
    switch (mode) {
        case PRISM_TABLE_CREATE: {
            HistTableBytes = static_cast<int>(kHistogramBytes);
            HGLOBAL table = CreateTable(kHistogramBytes, error, false);
            if (!table) return nullptr;
            HistWindowLeft = -256;
            HistWindowTop = -256;
            return table;
        }
        case PRISM_TABLE_UPDATE:
            return UpdateHistogram(dib, histogram, position, error);
        case PRISM_TABLE_FREE:
            if (histogram) GlobalFree(histogram);
            return nullptr;
        default:
            return nullptr;
    }
}

// Makes (30), computes (31) or frees (32) a 256-byte tone curve: a line of
// slope 1 + contrast/255 through (C, C + brightness), C being the mean of
// the histogram, or 128 without one.  Errors go to *error, cleared first.
PRISM_API HGLOBAL WINAPI ComputeLUT(HGLOBAL histogram, int mode, HGLOBAL lut, int contrast, int brightness,
                                   int* error) {
    SetWord(error, 0);
    switch (mode) {
        case PRISM_TABLE_CREATE:
            LutEntries = 256;
            return CreateTable(kLutBytes, error, true);
        case PRISM_TABLE_UPDATE:
            return ComputeCurve(histogram, lut, contrast, brightness, error);
        case PRISM_TABLE_FREE:
            // The handle freed is handed back, unlike the histogram's free.
            if (lut) GlobalFree(lut);
            return lut;
        default:
            return nullptr;
    }
}

// Maps an 8-bit image through a tone curve and leaves it grey: each colour
// entry's mean picks the curve entry, the table becomes a 256-step ramp.
// In place the result is the image handle, with `copy` a new DIB; 0 on
// error, with the code in *error.
PRISM_API HDIB WINAPI ApplyLUT(HDIB dib, HGLOBAL lut, BOOL copy, int* error) {
    SetWord(error, 0);
    if (!dib || !lut) {
        SetWord(error, kErrParameter);
        return nullptr;
    }
    BlockLock image(dib);
    if (!image) {
        SetWord(error, kErrLock);
        return nullptr;
    }
    BITMAPINFOHEADER h = HeaderOf(image);
    int code = CheckGreyHeader(h);
    if (code) {
        SetWord(error, code);
        return nullptr;
    }
    BlockLock table(lut);
    if (!table) {
        SetWord(error, kErrLock);
        return nullptr;
    }
    const std::uint64_t colors = h.biClrUsed ? h.biClrUsed : 256;
    const std::uint64_t offset = kInfoHeaderSize + colors * 4;
    const std::int64_t W = h.biWidth, H = h.biHeight;
    const std::uint64_t stride = DibRowBytes(W, 8);
    // Blocks too small for what they claim, and short curves, are refused.
    if (W < 0 || H < 0 || table.size() < kLutBytes ||
        !RowsInside(offset, H, stride, static_cast<std::uint64_t>(W), image.size())) {
        SetWord(error, table.size() < kLutBytes ? kErrParameter : kErrDibSize);
        return nullptr;
    }

    HDIB result = dib;
    if (copy) {
        std::uint64_t imageBytes = h.biSizeImage ? h.biSizeImage : stride * static_cast<std::uint64_t>(H);
        if (imageBytes < stride * static_cast<std::uint64_t>(H)) {  // the copy could not hold the rows
            SetWord(error, kErrDibSize);
            return nullptr;
        }
        result = AllocTwice(imageBytes + colors * 4 + kInfoHeaderSize);
        if (!result) {
            SetWord(error, kErrMemory);
            return nullptr;
        }
    }
    BlockLock made(copy ? result : nullptr);
    if (copy) {
        if (!made) {
            GlobalFree(result);
            SetWord(error, kErrLock);
            return nullptr;
        }
        std::memcpy(made.get(), image.get(), kInfoHeaderSize);
    }

    HGLOBAL workBlock = AllocTwice(512);
    BlockLock work(workBlock);
    if (!work) {
        // These exits leave the curve locked and a new copy allocated: the
        // caller sees a plain error, and that is the behaviour kept here.
        if (workBlock) GlobalFree(workBlock);
        table.Release();
        made.Unlock();
        SetWord(error, workBlock ? kErrLock : kErrMemory);
        return nullptr;
    }
    const unsigned char* curve = table.bytes();
    const unsigned char* src = image.bytes();
    const std::uint64_t srcBytes = image.size();
    // Always 256 colour entries, whatever biClrUsed says; bytes past the
    // block read as 0.
    for (std::uint64_t i = 0; i < 256; ++i) {
        unsigned sum = 1;
        for (std::uint64_t c = 0; c < 3; ++c) {
            std::uint64_t at = kInfoHeaderSize + i * 4 + c;
            sum += at < srcBytes ? src[at] : 0;
        }
        work.bytes()[i] = curve[sum / 3];
    }
    table.Unlock();

    unsigned char* dst = copy ? made.bytes() : image.bytes();
    const std::uint64_t dstBytes = copy ? made.size() : image.size();
    WriteGreyRamp(dst + kInfoHeaderSize, dst + dstBytes);
    const unsigned char* map = work.bytes();
    for (std::int64_t y = 0; y < H; ++y) {
        const unsigned char* s = src + offset + static_cast<size_t>(y) * stride;
        unsigned char* d = dst + offset + static_cast<size_t>(y) * stride;
        for (std::int64_t x = 0; x < W; ++x) d[x] = map[s[x]];
    }
    work.Unlock();
    GlobalFree(workBlock);
    return result;
}
