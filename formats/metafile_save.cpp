// Raster pictures written as metafile files: one stretch of the DIB into a
// recording, with the placeable header put in front of it.
#include "core/dib.h"
#include "core/errors.h"
#include "formats/file_holder.h"
#include "formats/metafile_layout.h"
#include "platform/export.h"
#include "platform/gdi.h"

#include <cstring>
#include <vector>

namespace prism {
namespace {

struct DeviceValues {
    int planes;
    int bitsPerPixel;
    int resX;
    int resY;
};

DeviceValues ValuesOf(HDC dc) {
    return {gdi::GetDeviceCaps(dc, PLANES), gdi::GetDeviceCaps(dc, BITSPIXEL), gdi::GetDeviceCaps(dc, LOGPIXELSX),
            gdi::GetDeviceCaps(dc, LOGPIXELSY)};
}

// A 40-byte header and colour table for the stretch, with the table's
// entry count and the pixel bytes written out: the recorder stores no
// more table entries than biClrUsed and no more pixels than biSizeImage,
// and 0 in either ("computed") would leave them out.  A core header is
// widened to 40 bytes.  False when the image cannot be handed over whole.
bool StretchHeader(const DibView& v, std::vector<unsigned char>* info) {
    if (v.bitCount != 1 && v.bitCount != 4 && v.bitCount != 8 && v.bitCount != 16 && v.bitCount != 24 &&
        v.bitCount != 32)
        return false;
    BITMAPINFOHEADER h = {};
    if (v.infoHeader) std::memcpy(&h, v.header, sizeof(h));
    h.biSize = kInfoHeaderSize;
    h.biWidth = static_cast<LONG>(v.width);
    h.biHeight = static_cast<LONG>(v.height);
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(v.bitCount);
    if (v.compression == BI_RGB) {
        if (!v.RowsFit()) return false;
        h.biSizeImage = static_cast<DWORD>(v.stride * static_cast<std::uint64_t>(v.height));
    } else if (v.compression == BI_RLE8 || v.compression == BI_RLE4) {
        if (h.biSizeImage > v.pixelBytes) return false;
    } else {
        return false;  // bit-field masks are not carried over
    }
    h.biClrUsed = v.colors;
    info->assign(kInfoHeaderSize + 4 * static_cast<size_t>(v.colors), 0);
    std::memcpy(info->data(), &h, sizeof(h));
    for (std::uint32_t i = 0; i < v.colors; ++i) {
        const unsigned char* entry = v.palette + (v.infoHeader ? 4 : 3) * static_cast<size_t>(i);
        std::memcpy(info->data() + kInfoHeaderSize + 4 * i, entry, 3);
    }
    return true;
}

// Records a white blank of the picture's size and the stretch of the DIB
// into a metafile file.  Nothing is selected back: the recording ends with
// the stretch.  Gives the picture's size.
void RecordDib(HDC recording, HDIB dib, HPALETTE palette, const DeviceValues& device, std::int32_t* width,
               std::int32_t* height) {
    *width = *height = 0;
    BlockLock lock(dib);
    DibView v;
    std::vector<unsigned char> info;
    if (!lock || ViewDib(lock.get(), lock.size(), &v) != DibStatus::kOk || !StretchHeader(v, &info)) return;
    *width = static_cast<std::int32_t>(v.width);
    *height = static_cast<std::int32_t>(v.height);
    gdi::Owned<HBITMAP> blank(gdi::CreateBitmap(*width, *height, static_cast<UINT>(device.planes),
                                                static_cast<UINT>(device.bitsPerPixel), nullptr));
    if (!recording) return;
    gdi::SetMapMode(recording, MM_TEXT);
    if (palette) {
        gdi::SelectPalette(recording, palette, FALSE);
        gdi::RealizePalette(recording);
    }
    gdi::SelectObject(recording, gdi::GetStockObject(WHITE_BRUSH));
    if (blank) gdi::SelectObject(recording, blank.get());
    gdi::PatBlt(recording, 0, 0, *width, *height, PATCOPY);
    gdi::StretchDIBits(recording, 0, 0, *width, *height, 0, 0, *width, *height, v.bits,
                       reinterpret_cast<const BITMAPINFO*>(info.data()), DIB_RGB_COLORS, SRCCOPY);
}

// Moves the file's contents up by 22 bytes and puts the placeable header
// in front of them.
void PrependPlaceableHeader(const char* fileName, std::int32_t width, std::int32_t height,
                            const DeviceValues& device) {
    unsigned char header[kPlaceableBytes];
    MakePlaceableHeader(header, width, height, device.resX, device.resY);
    std::vector<unsigned char> body;
    {
        FileHolder in(fileName, plat::kOpenRead);
        if (!in) return;
        const long size = FileSizeOf(in.get());
        if (size <= 0) return;
        body.resize(static_cast<size_t>(size));
        if (plat::FileRead(in.get(), body.data(), size) != size) return;
    }
    FileHolder out(fileName, plat::kOpenWrite);
    if (!out) return;
    plat::FileWrite(out.get(), header, kPlaceableBytes);
    plat::FileWrite(out.get(), body.data(), static_cast<long>(body.size()));
}

void SaveDibAsMetaFile(const char* fileName, HDIB dib, const DeviceValues& device) {
    plat::WaitCursor wait;
    // Deleted only once the recording is closed, so that its deletion is
    // not recorded.
    gdi::Owned<HPALETTE> palette(CreateDIBPalette(dib));
    HDC recording = gdi::CreateMetaFileA(fileName);
    std::int32_t width, height;
    RecordDib(recording, dib, palette.get(), device, &width, &height);
    // The recording is in the file once it is closed; the handle is not needed.
    if (recording) gdi::DeleteMetaFile(gdi::CloseMetaFile(recording));
    PrependPlaceableHeader(fileName, width, height, device);
}

}  // namespace
}  // namespace prism

using namespace prism;

// SaveBitmapIntoMetaFile(dc, bitmap, fileName): writes the bitmap as a
// placeable metafile holding one stretch of its pixels, measured in the
// resolution of `dc`.  Always 1: no step reports a failure.
PRISM_API BOOL WINAPI SaveBitmapIntoMetaFile(HDC dc, HBITMAP bitmap, LPCSTR fileName) {
    DeviceValues device;
    {
        gdi::MemoryDC compatible(dc);
        device = ValuesOf(compatible.get());
    }
    OwnedBlock dib(ConvertBitmapToDIB(bitmap, nullptr));
    SaveDibAsMetaFile(fileName, dib.get(), device);
    return 1;
}

// SaveDIBIntoMetaFile(fileName, dib): as SaveBitmapIntoMetaFile, in the
// active window's resolution; the image stays the caller's.  Always 1.
PRISM_API BOOL WINAPI SaveDIBIntoMetaFile(LPCSTR fileName, HDIB dib) {
    DeviceValues device;
    {
        gdi::WindowDC active(gdi::GetActiveWindow());
        device = ValuesOf(active.get());
    }
    SaveDibAsMetaFile(fileName, dib, device);
    return 1;
}
