/* prism32.h - public interface of the PRISM32 raster imaging library.
 *
 * Images travel as packed DIBs (header, colour table, pixel rows stored
 * bottom first) in movable memory blocks named by an HDIB.  Every export
 * has C linkage and, on 32-bit Windows, the WINAPI calling convention and
 * a fixed ordinal.  On POSIX the library supplies the Win32 types it uses
 * and exports the six Global* block functions itself, so hosts lock and
 * free images the same way everywhere.
 */
#ifndef PRISM32_H
#define PRISM32_H

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#define PRISM32_HAS_GRAPHICS 1
#else
#include <stddef.h>
#include <stdint.h>

#ifndef WINAPI
#define WINAPI
#endif
#ifndef CALLBACK
#define CALLBACK
#endif

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef uint32_t DWORD;
typedef unsigned int UINT;
typedef int32_t LONG;
typedef char CHAR;
typedef char *LPSTR;
typedef const char *LPCSTR;
typedef void *LPVOID;
typedef intptr_t INT_PTR;
typedef uintptr_t UINT_PTR;
typedef intptr_t LONG_PTR;
typedef size_t SIZE_T;
typedef UINT_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef void *HANDLE;
typedef HANDLE HGLOBAL;
typedef HANDLE HINSTANCE;
typedef HANDLE HMODULE;
typedef HANDLE HWND;
typedef HANDLE HDC;
typedef HANDLE HBITMAP;
typedef HANDLE HPALETTE;
typedef HANDLE HMETAFILE;
typedef int HFILE;              /* a file descriptor; -1 is invalid */

#define HFILE_ERROR ((HFILE)-1)
#define GMEM_FIXED 0x0000
#define GMEM_MOVEABLE 0x0002
#define GMEM_ZEROINIT 0x0040
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)

typedef struct tagPOINT { LONG x; LONG y; } POINT;
typedef struct tagRECT { LONG left; LONG top; LONG right; LONG bottom; } RECT;
typedef struct tagRGBQUAD {
    BYTE rgbBlue; BYTE rgbGreen; BYTE rgbRed; BYTE rgbReserved;
} RGBQUAD;
typedef struct tagRGBTRIPLE { BYTE rgbtBlue; BYTE rgbtGreen; BYTE rgbtRed; } RGBTRIPLE;

#pragma pack(push, 2)
typedef struct tagBITMAPFILEHEADER {
    WORD bfType; DWORD bfSize; WORD bfReserved1; WORD bfReserved2; DWORD bfOffBits;
} BITMAPFILEHEADER;
#pragma pack(pop)

typedef struct tagBITMAPINFOHEADER {
    DWORD biSize; LONG biWidth; LONG biHeight; WORD biPlanes; WORD biBitCount;
    DWORD biCompression; DWORD biSizeImage; LONG biXPelsPerMeter;
    LONG biYPelsPerMeter; DWORD biClrUsed; DWORD biClrImportant;
} BITMAPINFOHEADER;
typedef struct tagBITMAPCOREHEADER {
    DWORD bcSize; WORD bcWidth; WORD bcHeight; WORD bcPlanes; WORD bcBitCount;
} BITMAPCOREHEADER;

#ifdef __cplusplus
extern "C" {
#endif
/* Movable memory blocks with Win32 semantics, exported by the library. */
HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);
HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags);
LPVOID GlobalLock(HGLOBAL block);
BOOL GlobalUnlock(HGLOBAL block);
HGLOBAL GlobalFree(HGLOBAL block);
SIZE_T GlobalSize(HGLOBAL block);
#ifdef __cplusplus
}
#endif
#endif /* _WIN32 */

/* An image: a movable block holding one packed DIB; 0 means none. */
typedef HGLOBAL HDIB;

/* Display flags kept in DisplayState.displayFlags. */
#define DF_ZOOMED 0x04
#define DF_FIT 0x08
#define DF_NEGATIVE 0x20
#define DF_PHYSICAL 0x40
#define DF_CENTRE 0x80
#define DF_STRETCH 0x100
#define DF_NO_VSCROLL 0x200
#define DF_NO_HSCROLL 0x400
#define DF_MAKE_BITMAP 0x800

/* Format codes of GetImageFormat and SaveDIBInImageFormat. */
#define PRISM_FORMAT_NONE 0
#define PRISM_FORMAT_TIFF 1
#define PRISM_FORMAT_PCX 2
#define PRISM_FORMAT_DCX 3
#define PRISM_FORMAT_GIF 4
#define PRISM_FORMAT_TGA 5
#define PRISM_FORMAT_BMP 6
#define PRISM_FORMAT_METAFILE 7
#define PRISM_FORMAT_CLIPBOARD 8
#define PRISM_FORMAT_COLORFAX 9
#define PRISM_FORMAT_TEXT 10
#define PRISM_FORMAT_CALS 12
#define PRISM_FORMAT_JPEG 13

/* Modes of ComputeHistogram and ComputeLUT. */
#define PRISM_TABLE_CREATE 30
#define PRISM_TABLE_UPDATE 31
#define PRISM_TABLE_FREE 32

/* Per-window display record kept by the host (at least 142 bytes). */
typedef struct DisplayState {
    int viewLeft, viewTop;
    int originX, originY;
    UINT displayFlags;
    int scrollMinX, scrollMinY, scrollMaxX, scrollMaxY;
    int scrollX, scrollY;
    int zoomNumX, zoomDenX, zoomNumY, zoomDenY;
    int centreX, centreY;
    int imageWidth, imageHeight;
    int bitCount;
    RECT clientRect;
    int windowOrgX, windowOrgY;
    int deviceDpiX, deviceDpiY;
    int imageDpiX, imageDpiY;
    HPALETTE palette;
    HDIB dib;
    HBITMAP bitmap;
    int ownership;
    BYTE reserved[6];
} DisplayState;

/* Record of one stepped-zoom gesture. */
typedef struct BZoomState {
    int mode;
    int scaleNumX, scaleDenX, scaleNumY, scaleDenY;
    int targetX, targetY;
    int screenCoords;
    RECT band;
    int startScale[4];
    int bandVisible;
} BZoomState;

/* A 64-bit float at an 8-byte boundary in records, as on Windows; the
 * 32-bit System V ABI would place it at 4. */
#if defined(__GNUC__) && defined(__i386__) && !defined(_WIN32)
typedef double PRISM_F64 __attribute__((aligned(8)));
#else
typedef double PRISM_F64;
#endif

/* Screen zoom record kept by the host for the BZoomScreen calls. */
typedef struct ScreenZoomState {
    int flags;
    PRISM_F64 scaleX, scaleY;
    int imageWidth, imageHeight;
    int deviceDpiX, deviceDpiY;
    int imageDpiX, imageDpiY;
    int pixelOffsetX, pixelOffsetY;
    int imagePosX, imagePosY;
    int scrollPosX, scrollPosY;
    int scrollMaxX, scrollMaxY;
    int barFlags;
} ScreenZoomState;

/* Options of one print job. */
typedef struct PrintOptions {
    int ShowDialog;
    int CenterVertically;
    int CenterHorizontally;
    int ScaleToFit;
    int Copies;
    int UseCompatibleDC;
    int StretchToFit;
    int PrintAllPage;
    int UseImageDPI;
} PrintOptions;

#ifdef __cplusplus
extern "C" {
#endif

/* Exports, in ordinal order (the ordinal stands before each).  Those that
 * need a graphics system are declared only where one exists. */

#ifdef PRISM32_HAS_GRAPHICS
/* 2 */ HBITMAP WINAPI LoadBitmapFromFile(LPCSTR fileName);
/* 3 */ HANDLE WINAPI LoadClipboardFormat(LPCSTR fileName, WORD format);
/* 4 */ BOOL WINAPI SaveClipboardFormat(LPCSTR fileName, HBITMAP bitmap);
/* 5 */ HBITMAP WINAPI DuplicateBitmap(HBITMAP bitmap);
/* 6 */ HBITMAP WINAPI ConvertToMonochromeBitmap(HBITMAP bitmap);
/* 7 */ HBITMAP WINAPI ConvertDIBToBitmap(HDIB dib);
/* 8 */ HDIB WINAPI ConvertBitmapToDIB(HBITMAP bitmap, HPALETTE palette);
/* 9 */ BOOL WINAPI GetSystemPalette(RGBQUAD *entries);
/* 10 */ HPALETTE WINAPI GetCurrentPalette(void);
/* 11 */ BOOL WINAPI SaveBitmap(LPCSTR fileName, HBITMAP bitmap, HPALETTE palette);
/* 12 */ HBITMAP WINAPI DrawMetaFileIntoBitmap(HMETAFILE metafile, int width, int height);
/* 13 */ HBITMAP WINAPI LoadMetaFileIntoBitmap(LPCSTR fileName);
/* 14 */ BOOL WINAPI SaveBitmapIntoMetaFile(HDC dc, HBITMAP bitmap, LPCSTR fileName);
/* 15 */ HBITMAP WINAPI LoadASCIIFile(LPCSTR fileName, BOOL notOem);
/* 16 */ HBITMAP WINAPI RotateBitmap90(HBITMAP bitmap);
/* 17 */ BOOL WINAPI RotateBitmap180(HBITMAP bitmap);
/* 18 */ HBITMAP WINAPI RotateBitmap270(HBITMAP bitmap);
/* 19 */ BOOL WINAPI InvertBitmap(HBITMAP bitmap);
/* 20 */ BOOL WINAPI FlipBitmapVertical(HBITMAP bitmap);
/* 21 */ BOOL WINAPI FlipBitmapHorizontal(HBITMAP bitmap);
#endif
/* 22 */ HDIB WINAPI RotateDIB90(HDIB dib);
/* 23 */ HDIB WINAPI RotateDIB180(HDIB dib);
/* 24 */ HDIB WINAPI RotateDIB270(HDIB dib);
/* 25 */ HDIB WINAPI FlipDIBVertical(HDIB dib);
/* 26 */ HDIB WINAPI FlipDIBHorizontal(HDIB dib);
/* 27 */ LPSTR WINAPI ImgErrorString(LPSTR buffer, int code);
/* 28 */ int WINAPI ImgError(void);
/* 29 */ int WINAPI SetImgError(int code);
#ifdef PRISM32_HAS_GRAPHICS
/* 30 */ INT_PTR CALLBACK PrintCancelDlgProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
/* 31 */ BOOL CALLBACK PrintAbortProc(HDC dc, int code);
/* 32 */ int WINAPI PrintImage(HWND owner, HDC printerDC, HBITMAP bitmap, HPALETTE palette, LPCSTR documentName, const int *dpi, PrintOptions *options, int unused);
/* 33 */ HGLOBAL WINAPI PrinterSetup(HWND parent);
/* 34 */ INT_PTR CALLBACK PrintPageProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
/* 35 */ INT_PTR CALLBACK PrinterSetupProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
#endif
/* 36 */ INT_PTR WINAPI GetImageVersion(LPSTR buffer, int size);
#ifdef PRISM32_HAS_GRAPHICS
/* 37 */ HBITMAP WINAPI LoadASCIIIntoBitmap(HGLOBAL text);
#endif
/* 38 */ HDIB WINAPI ConvMonoDIBtoGrayscale(HDIB dib, int smoothing);
/* 39 */ HDIB WINAPI ScaleDIB(HDIB dib, int mode, int newWidth, int newHeight);
/* 40 */ HDIB WINAPI RotateDIB(HDIB dib, int angle, int walkMode, int *error, int *corners);
/* 41 */ HDIB WINAPI SkewDIB(HDIB dib, BOOL horizontal, int skew, int *error, int *corners);
#ifdef PRISM32_HAS_GRAPHICS
/* 42 */ HPALETTE WINAPI CreateDIBPalette(HDIB dib);
#endif
/* 43 */ HDIB WINAPI LoadDIBFromFile(LPCSTR fileName);
/* 44 */ BOOL WINAPI SaveDIB(LPCSTR fileName, HDIB dib);
/* 45 */ HDIB WINAPI DitherFS4(HDIB dib, int bits);
/* 46 */ HDIB WINAPI DitherJJN(HDIB dib, int bits);
/* 47 */ HDIB WINAPI DitherSmooth(HDIB dib, int bits);
/* 48 */ HDIB WINAPI DitherSharp(HDIB dib, int bits);
/* 49 */ HDIB WINAPI ExpandCompressedDIB(HDIB dib);
/* 50 */ HDIB WINAPI CompressDIB(HDIB dib);
/* 51 */ int WINAPI SaveDIBInImageFormat(LPCSTR fileName, HDIB dib, int format, int option1, int option2);
/* 52 */ HDIB WINAPI LoadImageIntoDIB(LPCSTR fileName, UINT page, int *status);
/* 53 */ int WINAPI GetImageFormat(LPCSTR fileName);
/* 54 */ HDIB WINAPI LoadColorFaxPage(LPCSTR descriptor, int page, int *status);
#ifdef PRISM32_HAS_GRAPHICS
/* 55 */ void WINAPI Zoom(HWND window, LPARAM lParam, int *zoom);
/* 56 */ HBITMAP WINAPI PlaceMetaFileIntoBMPFromCLP(HWND window);
#endif
/* 57 */ int WINAPI GetNumberOfImagesInFaxFile(LPCSTR descriptor);
#ifdef PRISM32_HAS_GRAPHICS
/* 58 */ int WINAPI PrintDIB(HWND owner, HDC printerDC, HDIB dib, LPCSTR documentName, const int *dpi, PrintOptions *options, int unused);
/* 59 */ BOOL WINAPI SaveDIBIntoMetaFile(LPCSTR fileName, HDIB dib);
/* 60 */ HDIB WINAPI PlaceMetaFileIntoDIBFromCLP(HWND window);
#endif
/* 61 */ HDIB WINAPI ScaleGrayDIB(HDIB dib, int x0, int y0, int w, int h, int zx, int zy, int mode);
/* 62 */ HDIB WINAPI ApplyLUT(HDIB dib, HGLOBAL lut, BOOL copy, int *error);
/* 63 */ HGLOBAL WINAPI ComputeLUT(HGLOBAL histogram, int mode, HGLOBAL lut, int contrast, int brightness, int *error);
/* 64 */ HGLOBAL WINAPI ComputeHistogram(HDIB dib, int mode, HGLOBAL histogram, const int *position, int *error);
/* 65 */ HDIB WINAPI Convolve(HDIB dib, BOOL copy, int kind, int size, LPCSTR kernelFile, const int *matrix, int *error);
/* 66 */ BOOL WINAPI InvertDIBPalette(HDIB dib);
/* 67 */ HDIB WINAPI ConvColorDIBtoGrayscale(HDIB dib, int smoothing, BOOL weighted);
/* 68 */ HDIB WINAPI Convert8to24(HDIB dib);
/* 69 */ HDIB WINAPI ColorConvolution(HDIB dib, BOOL copy, int brightnessMode, WORD kind, short size, LPCSTR kernelFile, const short *matrix, int *error);
/* 70 */ HDIB WINAPI ColorBrightnessContrast(HDIB dib, short brightness, short contrast);
#ifdef PRISM32_HAS_GRAPHICS
/* 71 */ int WINAPI EndPrint(HDC dc);
/* 72 */ int WINAPI PrintDIBPage(HDIB dib, const int *dpi, int unused, int pageIndex, int xOffset, int yOffset);
#endif
/* 73 */ void WINAPI PrintPageContinue(void);
#ifdef PRISM32_HAS_GRAPHICS
/* 74 */ int WINAPI PrepareToPrint(HWND owner, HDC printerDC, PrintOptions *options, LPCSTR documentName, int pageTotal);
/* 100 */ UINT WINAPI DisplayStart(HWND window, HBITMAP bitmap, HPALETTE palette, const int *dpi, int *origin, const int *zoom, UINT flags, DisplayState *state);
/* 101 */ UINT WINAPI DisplayDIBStart(HWND window, HDIB dib, int *origin, const int *zoom, UINT flags, DisplayState *state);
/* 102 */ int WINAPI DisplayWmPaint(HWND window, DisplayState *state);
/* 103 */ int WINAPI DisplayWmSize(HWND window, WPARAM wParam, LPARAM lParam, DisplayState *state);
/* 104 */ int WINAPI DisplayWmHorzScroll(HWND window, WPARAM wParam, LPARAM lParam, DisplayState *state);
/* 105 */ int WINAPI DisplayWmVertScroll(HWND window, WPARAM wParam, LPARAM lParam, DisplayState *state);
/* 106 */ UINT WINAPI DisplayImageDC(HDC dc, DisplayState *state);
/* 107 */ UINT WINAPI DisplayDIBImageDC(HDC dc, DisplayState *state);
/* 108 */ int WINAPI DisplayImage(HWND window, HBITMAP bitmap, HPALETTE palette, int *position, const int *dpi, const int *zoom, WORD flags);
/* 109 */ int WINAPI DisplayDIBImage(HWND window, HDIB dib, const int *position, const int *zoom, WORD flags);
/* 110 */ UINT WINAPI DisplayCPPImage(HWND window, HDIB dib, int *position, const int *zoom, WORD flags);
/* 111 */ UINT WINAPI DisplayCPPSize(HWND window, HDIB dib, int *position, const int *zoom, WORD flags, LPARAM lParam);
/* 112 */ UINT WINAPI DisplayCPPVScroll(HWND window, HDIB dib, int *position, const int *zoom, WORD flags, UINT scrollCode, WORD thumb);
/* 113 */ UINT WINAPI DisplayCPPHScroll(HWND window, HDIB dib, int *position, const int *zoom, WORD flags, UINT scrollCode, WORD thumb);
/* 114 */ int WINAPI DisplayWmDestroy(HWND window, WPARAM wParam, LPARAM lParam, DisplayState *state);
#endif
/* 115 */ int WINAPI DisplayWmCreate(HWND window, WPARAM wParam, LPARAM lParam, DisplayState *state);
#ifdef PRISM32_HAS_GRAPHICS
/* 116 */ void WINAPI MapDisplayDC(HDC dc, DisplayState *state);
/* 117 */ int WINAPI DisplaySetScrollPos(HWND window, DisplayState *state, const int *position);
#endif
/* 120 */ int WINAPI GetLowMemStretch(void);
/* 121 */ int WINAPI SetLowMemStretch(int value);
/* 130 */ HDIB WINAPI ReadDIBInfo(HFILE file);
#ifdef PRISM32_HAS_GRAPHICS
/* 150 */ void WINAPI BZoomStart(HWND window, const POINT *point, const int *scale, int mode, BZoomState *state, BOOL screenCoords);
/* 151 */ void WINAPI BZoomUpdate(HWND window, const POINT *point, BZoomState *state);
/* 152 */ void WINAPI BZoomEnd(HWND window, POINT *point, BZoomState *state, DisplayState *display);
/* 153 */ void WINAPI BZoomStep(HWND window, const int *scale, int mode, BZoomState *state, DisplayState *display);
#endif
/* 154 */ BOOL WINAPI BZoomSetScaleSteps(int base, const int *inSteps, const int *outSteps);
/* 155 */ int WINAPI BZoomGetScaleSteps(int *inSteps, int *outSteps);
#ifdef PRISM32_HAS_GRAPHICS
/* 156 */ void WINAPI BZoomScreenEnd(HWND window, POINT *point, BZoomState *state, ScreenZoomState *screen);
/* 157 */ void WINAPI BZoomScreenStep(HWND window, const int *scale, int mode, BZoomState *state, ScreenZoomState *screen);
#endif
/* 180 */ HDIB WINAPI Halftone(HDIB dib, WORD method, int brightness, WORD *error);
/* 200 */ BOOL WINAPI M_SetSizes(UINT width, UINT height);
#ifdef PRISM32_HAS_GRAPHICS
/* 201 */ void WINAPI M_CopyBitmap(HWND window, int x, int y);
/* 202 */ BOOL WINAPI M_StartMagnify(HWND window, HPALETTE palette);
/* 203 */ BOOL WINAPI M_StopMagnify(void);
/* 204 */ void WINAPI M_StretchBitmap(HBITMAP bitmap, int x, int y, int width, int height);
#endif
/* 205 */ UINT WINAPI M_GetWidth(void);
/* 206 */ UINT WINAPI M_GetHeight(void);
/* 207 */ BOOL WINAPI M_CalcRect(int x, int y, int *zoom, RECT *rect);

#ifdef __cplusplus
}
#endif

#endif /* PRISM32_H */
