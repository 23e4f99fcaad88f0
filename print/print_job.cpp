// The print job: PrepareToPrint, PrintDIBPage with its copies and bands,
// EndPrint, and the one-image jobs PrintDIB and PrintImage.
#include "core/dib.h"
#include "platform/export.h"
#include "platform/gdi.h"
#include "print/print_dialogs.h"
#include "print/print_ids.h"
#include "print/print_job_state.h"
#include "print/print_layout.h"

#include <cstdio>
#include <cstring>

namespace prism {

namespace {

// Set while the job holds PrintDC and its cancel dialog, so that a second
// EndPrint does not delete handles the system may have given out again.
bool HandlesLive = false;
// The default printer's context when PrintDC is a compatible context made
// from it: deleted by EndPrint, where it would otherwise stay behind.
HDC DefaultPrinterDC = nullptr;

void CopyText(char* to, size_t size, const char* from) {
    // Longer names are cut to the field.
    std::snprintf(to, size, "%s", from ? from : "");
}

HDC CreateDefaultPrinterDC() {
    PrintJobState& job = PrintJob;
    gdi::GetProfileStringA("windows", "device", "", job.DeviceProfile, sizeof job.DeviceProfile);
    char *name, *driver, *port;
    const bool complete = SplitDeviceProfile(job.DeviceProfile, &name, &driver, &port);
    CopyText(job.PrinterName, sizeof job.PrinterName, name);
    if (!complete) return nullptr;
    return gdi::CreateDCA(driver, name, port, nullptr);
}

// Can the job draw this image?  The pixels are found behind a 40-byte
// header and its colour table, and every row (or the coded stream) must
// lie inside the block; a null, freed or short block is refused here.
bool PrintableDib(HDIB dib, BITMAPINFOHEADER* header) {
    BlockLock lock(dib);
    DibView v;
    if (!lock || ViewDib(lock.get(), lock.size(), &v) != DibStatus::kOk) return false;
    if (!v.infoHeader || v.headerBytes != kInfoHeaderSize || v.width <= 0 || v.height <= 0) return false;
    if (v.bitCount != 1 && v.bitCount != 4 && v.bitCount != 8 && v.bitCount != 24) return false;
    std::memcpy(header, v.header, sizeof *header);
    if (v.compression == 0) return v.RowsFit();
    const bool rle = (v.compression == 1 && v.bitCount == 8) || (v.compression == 2 && v.bitCount == 4);
    return rle && header->biSizeImage <= v.pixelBytes;
}

// Draws one rectangle of the image: inches on the page, pixels of the
// source.  The result is 0 whatever the stretch did.
int DrawPrintRect(HDC dc, HDIB dib, const InchRect& rect, const PixelRect& source, HPALETTE palette) {
    const std::uintptr_t cursor = plat::BeginWaitCursor();
    if (cursor) gdi::ShowCursor(TRUE);
    const PixelRect target = DeviceDots(rect, static_cast<float>(gdi::GetDeviceCaps(dc, LOGPIXELSX)),
                                        static_cast<float>(gdi::GetDeviceCaps(dc, LOGPIXELSY)));
    {
        gdi::PaletteSelection selected(dc, palette);
        BlockLock lock(dib);
        if (lock) {
            const auto* header = static_cast<const BITMAPINFOHEADER*>(lock.get());
            const unsigned char* bits = lock.bytes() + kInfoHeaderSize + DibColorCount(header) * 4ull;
            // DIB rows run upward: the source's top edge counts from the bottom.
            gdi::StretchDIBits(dc, target.left, target.top, target.right - target.left,
                               target.bottom - target.top, source.left, header->biHeight - source.bottom,
                               source.right - source.left, source.bottom - source.top, bits,
                               reinterpret_cast<const BITMAPINFO*>(header), DIB_RGB_COLORS, SRCCOPY);
        }
    }
    plat::EndWaitCursor(cursor);
    if (cursor) gdi::ShowCursor(TRUE);
    return 0;
}

// One copy in one stretch, clipped to the page.
void PrintWholeCopy(HDIB dib, const PageLayout& layout, HPALETTE palette) {
    PrintJobState& job = PrintJob;
    InchRect hit;
    const InchRect page = {0.0f, 0.0f, job.PageWidthInches, job.PageHeightInches};
    if (!IntersectPrintRect(&hit, layout.image, page)) return;
    job.PrintError = DrawPrintRect(job.PrintDC, dib, hit, SourcePixels(hit, layout), palette);
    PrintAbortProc(job.PrintDC, 0);
}

// Asks for the next band; a failure becomes the page's result.
void NextBand(RECT* band, int* result) {
    PrintJobState& job = PrintJob;
    *band = RECT{};
    const int r = gdi::Escape(job.PrintDC, NEXTBAND, 0, nullptr, band);
    if (r < 0) {
        *result = r;
        job.PrintError = r;
    }
}

// One copy band by band, as long as the device gives bands and nobody
// cancels.
void PrintBandedCopy(HDIB dib, const PageLayout& layout, HPALETTE palette, int* result) {
    PrintJobState& job = PrintJob;
    RECT band;
    NextBand(&band, result);
    while (!gdi::IsRectEmpty(&band) && job.PrintError == 0 && job.UserAbort == 0) {
        PrintAbortProc(job.PrintDC, 0);
        if (job.PrintError == 0) {
            const InchRect inches = {band.left / job.DeviceDpiX, band.top / job.DeviceDpiY,
                                     band.right / job.DeviceDpiX, band.bottom / job.DeviceDpiY};
            InchRect hit;
            if (IntersectPrintRect(&hit, layout.image, inches)) {
                job.PrintError = DrawPrintRect(job.PrintDC, dib, hit, SourcePixels(hit, layout), palette);
                PrintAbortProc(job.PrintDC, 0);
            }
        }
        if (job.PrintError == 0) NextBand(&band, result);
    }
}

PageLayout LayOutImage(const BITMAPINFOHEADER& header, const int* dpi) {
    PrintJobState& job = PrintJob;
    float resX, resY;
    ImageResolution(static_cast<float>(gdi::GetDeviceCaps(job.PrintDC, LOGPIXELSX)),
                    static_cast<float>(gdi::GetDeviceCaps(job.PrintDC, LOGPIXELSY)), job.Options.UseImageDPI != 0,
                    dpi, header.biXPelsPerMeter, header.biYPelsPerMeter, &resX, &resY);
    const LayoutRequest request = {static_cast<std::uint32_t>(header.biWidth),
                                   static_cast<std::uint32_t>(header.biHeight),
                                   resX,
                                   resY,
                                   job.PageWidthInches,
                                   job.PageHeightInches,
                                   job.Options.ScaleToFit != 0,
                                   job.Options.StretchToFit != 0,
                                   job.Options.CenterHorizontally != 0,
                                   job.Options.CenterVertically != 0};
    const PageLayout layout = LayOutPage(request);
    job.ImageWidthInches = layout.imageWidth;
    job.ImageHeightInches = layout.imageHeight;
    return layout;
}

// Steps of PrepareToPrint once the device context is known and accepted:
// the drawing context, the cancel dialog, the abort procedure, the
// document and the page measures.
int StartJob(HWND owner, HDC dc, HDC createdDC, const char* baseName) {
    PrintJobState& job = PrintJob;
    job.BitsPerPixel = gdi::GetDeviceCaps(dc, BITSPIXEL);
    job.Planes = gdi::GetDeviceCaps(dc, PLANES);
    job.IsMonochrome = job.BitsPerPixel == 1 && job.Planes == 1;
    job.PrintDC = dc;
    if (job.Options.UseCompatibleDC && !job.IsMonochrome) {
        // Should the memory context fail, the job draws on the printer's own.
        if (HDC memory = gdi::CreateCompatibleDC(dc)) {
            job.PrintDC = memory;
            DefaultPrinterDC = createdDC;
        }
    }
    HandlesLive = true;
    job.CancelDialog = gdi::CreateDialogParamA(LibraryInstance(), PRINT_CANCEL_DIALOG, owner, PrintCancelDlgProc,
                                               reinterpret_cast<LPARAM>(baseName));
    if (!job.CancelDialog) return -5;
    gdi::UpdateWindow(job.CancelDialog);
    job.CancelDialogProc = reinterpret_cast<void*>(&PrintCancelDlgProc);
    job.AbortProc = reinterpret_cast<void*>(&PrintAbortProc);
    const int abortResult = gdi::SetAbortProc(job.PrintDC, PrintAbortProc);
    if (abortResult < 0) return abortResult;
    gdi::SendMessageA(job.CancelDialog, PRINT_MSG_UPDATE_CANCEL_TEXT, 0, reinterpret_cast<LPARAM>(baseName));
    // The type fields stay empty; the size is this build's record size (20
    // bytes in a 32-bit process).
    DOCINFOA doc = {sizeof(DOCINFOA), baseName, nullptr, nullptr, 0};
    if (gdi::StartDocA(job.PrintDC, &doc) < 0) return -1;
    job.DeviceDpiX = static_cast<float>(gdi::GetDeviceCaps(job.PrintDC, LOGPIXELSX));
    job.DeviceDpiY = static_cast<float>(gdi::GetDeviceCaps(job.PrintDC, LOGPIXELSY));
    job.PageWidthInches = static_cast<float>(gdi::GetDeviceCaps(job.PrintDC, HORZRES)) / job.DeviceDpiX;
    job.PageHeightInches = static_cast<float>(gdi::GetDeviceCaps(job.PrintDC, VERTRES)) / job.DeviceDpiY;
    gdi::SetMapMode(job.PrintDC, MM_TEXT);
    return 0;
}

}  // namespace

}  // namespace prism

using namespace prism;

// Starts a job: options copied, the default printer's context made when
// none is given, the PRINTPAGE dialog on request, the cancel dialog and the
// document started.  0, or 23 (no printer), 30 (dialog cancelled), 1 (the
// device cannot stretch pixels), -5 (no cancel dialog), a negative
// SetAbortProc value, or -1 (no document).  LastImgError is not touched.
PRISM_API int WINAPI PrepareToPrint(HWND owner, HDC printerDC, PrintOptions* options, LPCSTR documentName,
                                     int pageTotal) {
    PrintJobState& job = PrintJob;
    // One job at a time: a second start while one runs is refused and
    // leaves the running job alone.
    if (job.JobRunning) return -1;
    job.PageClosed = 1;
    job.Options = PrintOptions{};
    if (options) job.Options = *options;
    job.UserAbort = 0;
    job.PrintError = 0;
    job.CancelDialog = nullptr;
    DefaultPrinterDC = nullptr;
    const char* baseName = FileNamePart(documentName);
    CopyText(job.DocumentName, sizeof job.DocumentName, baseName);
    job.TotalPages = pageTotal;
    HDC dc = printerDC ? printerDC : CreateDefaultPrinterDC();
    if (!dc) return 23;
    // The context is the job's now: refused, it is deleted.
    gdi::OwnedDC refused(dc);
    if (job.Options.ShowDialog && ShowLibraryDialog(owner, PRINT_PAGE_DIALOG, PrintPageProc) == IDCANCEL) return 30;
    if (!(gdi::GetDeviceCaps(dc, RASTERCAPS) & RC_BITBLT)) return 1;
    refused.Release();
    const int started = StartJob(owner, dc, printerDC ? nullptr : dc, job.DocumentName);
    if (started != 0) return started;
    job.ShowPageText = job.Options.PrintAllPage;
    if (options) *options = job.Options;
    job.JobRunning = 1;
    return 0;
}

// Prints one image, `Copies` times, on a new sheet unless PrintPageContinue
// came before.  0, or a negative failure of the device's band escape or of
// ABORTDOC after a cancel; -1 for an image the job cannot draw.
PRISM_API int WINAPI PrintDIBPage(HDIB dib, const int* dpi, int, int pageIndex, int xOffset, int yOffset) {
    PrintJobState& job = PrintJob;
    // A context that EndPrint has deleted is never drawn on again.
    if (!job.PrintDC || !HandlesLive) return 0;
    BITMAPINFOHEADER header;
    if (!PrintableDib(dib, &header)) return -1;
    if (!job.PageClosed) gdi::EndPage(job.PrintDC);
    job.PageClosed = 0;
    if (job.ShowPageText) {
        char text[kDocumentNameChars + 40];
        std::snprintf(text, sizeof text, "%s  Page: %lld / %d", job.DocumentName, pageIndex + 1LL, job.TotalPages);
        gdi::SendMessageA(job.CancelDialog, PRINT_MSG_UPDATE_CANCEL_TEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    gdi::SetMapMode(job.PrintDC, MM_TEXT);
    gdi::SetWindowOrgEx(job.PrintDC, -xOffset, -yOffset, nullptr);
    job.PrintError = 0;
    const PageLayout layout = LayOutImage(header, dpi);
    int result = 0;
    {
        gdi::Owned<HPALETTE> palette(CreateDIBPalette(dib));
        for (int copy = 0; copy < job.Options.Copies; ++copy) {
            gdi::StartPage(job.PrintDC);
            if (layout.banded)
                PrintBandedCopy(dib, layout, palette.get(), &result);
            else
                PrintWholeCopy(dib, layout, palette.get());
        }
    }
    if (job.UserAbort) {
        result = 0;
        job.PrintError = 0;
        const int aborted = gdi::Escape(job.PrintDC, ABORTDOC, 0, nullptr, nullptr);
        if (aborted < 0) {
            result = aborted;
            job.PrintError = aborted;
        }
    }
    return result;
}

// Ends the job: last page, document, the contexts and the cancel dialog.
// 0, or -1 when EndDoc fails (or no job holds a context any more).
PRISM_API int WINAPI EndPrint(HDC dc) {
    PrintJobState& job = PrintJob;
    int result = -1;
    if (HandlesLive) {
        gdi::EndPage(job.PrintDC);
        result = gdi::EndDoc(job.PrintDC) < 0 ? -1 : 0;
    }
    job.CancelDialogProc = nullptr;
    job.AbortProc = nullptr;
    if (dc) gdi::DeleteDC(dc);
    if (HandlesLive) {
        if (job.PrintDC && job.PrintDC != dc) gdi::DeleteDC(job.PrintDC);
        if (DefaultPrinterDC && DefaultPrinterDC != dc) gdi::DeleteDC(DefaultPrinterDC);
        if (job.CancelDialog) gdi::DestroyWindow(job.CancelDialog);
    }
    DefaultPrinterDC = nullptr;
    HandlesLive = false;
    job.JobRunning = 0;
    return result;
}

// One image as a one-page job.
PRISM_API int WINAPI PrintDIB(HWND owner, HDC printerDC, HDIB dib, LPCSTR documentName, const int* dpi,
                               PrintOptions* options, int unused) {
    // Inside a running job (a host window called back from the abort
    // procedure's message loop) the request is refused and the job goes on.
    if (PrintJob.JobRunning) return -1;
    const int prepared = PrepareToPrint(owner, printerDC, options, documentName, 1);
    if (prepared != 0) {
        EndPrint(printerDC);
        return prepared;
    }
    PrintDIBPage(dib, dpi, unused, 1, 0, 0);
    return EndPrint(printerDC);
}

// A device bitmap as a one-page job, through a DIB made for it.
PRISM_API int WINAPI PrintImage(HWND owner, HDC printerDC, HBITMAP bitmap, HPALETTE palette, LPCSTR documentName,
                                 const int* dpi, PrintOptions* options, int unused) {
    OwnedBlock dib(ConvertBitmapToDIB(bitmap, palette));
    if (!dib) return 1;
    return PrintDIB(owner, printerDC, dib.get(), documentName, dpi, options, unused);
}
