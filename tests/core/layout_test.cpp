// Compile-time checks of the records hosts share with the library, for the
// pointer size of this build: every offset as documented (handles as wide
// as a pointer), scalars of fixed width on every platform.
#include "prism32.h"

#include <cstddef>

namespace {

constexpr size_t P = sizeof(void*);  // a handle
#define PRISM_AT(T, field, offset) static_assert(offsetof(T, field) == (offset), #T "." #field)

static_assert(sizeof(HDIB) == P && sizeof(INT_PTR) == P && sizeof(SIZE_T) == P && sizeof(LPARAM) == P);
static_assert(sizeof(LONG) == 4 && sizeof(DWORD) == 4 && sizeof(UINT) == 4 && sizeof(BOOL) == 4 && sizeof(WORD) == 2);
static_assert(sizeof(POINT) == 8 && sizeof(RECT) == 16 && sizeof(RGBQUAD) == 4 && sizeof(RGBTRIPLE) == 3);
static_assert(sizeof(BITMAPFILEHEADER) == 14 && sizeof(BITMAPINFOHEADER) == 40 && sizeof(BITMAPCOREHEADER) == 12);
PRISM_AT(BITMAPFILEHEADER, bfOffBits, 10);
PRISM_AT(BITMAPINFOHEADER, biBitCount, 14);
PRISM_AT(BITMAPINFOHEADER, biSizeImage, 20);
PRISM_AT(BITMAPINFOHEADER, biClrUsed, 32);
PRISM_AT(BITMAPCOREHEADER, bcBitCount, 10);

PRISM_AT(DisplayState, displayFlags, 16);
PRISM_AT(DisplayState, scrollMinX, 20);
PRISM_AT(DisplayState, scrollX, 36);
PRISM_AT(DisplayState, zoomNumX, 44);
PRISM_AT(DisplayState, zoomDenY, 56);
PRISM_AT(DisplayState, centreX, 60);
PRISM_AT(DisplayState, imageWidth, 68);
PRISM_AT(DisplayState, bitCount, 76);
PRISM_AT(DisplayState, clientRect, 80);
PRISM_AT(DisplayState, windowOrgX, 96);
PRISM_AT(DisplayState, deviceDpiX, 104);
PRISM_AT(DisplayState, imageDpiY, 116);
PRISM_AT(DisplayState, palette, 120);
PRISM_AT(DisplayState, dib, 120 + P);
PRISM_AT(DisplayState, bitmap, 120 + 2 * P);
PRISM_AT(DisplayState, ownership, 120 + 3 * P);
PRISM_AT(DisplayState, reserved, 124 + 3 * P);
// 142 bytes at 32 bits (144 with the tail padding); hosts provide at least 142.
static_assert(sizeof(DisplayState) == (130 + 3 * P + P - 1) / P * P && sizeof(DisplayState) >= 142);

PRISM_AT(BZoomState, scaleNumX, 4);
PRISM_AT(BZoomState, targetX, 20);
PRISM_AT(BZoomState, screenCoords, 28);
PRISM_AT(BZoomState, band, 32);
PRISM_AT(BZoomState, startScale, 48);
PRISM_AT(BZoomState, bandVisible, 64);
static_assert(sizeof(BZoomState) == 68);

PRISM_AT(ScreenZoomState, scaleX, 8);
PRISM_AT(ScreenZoomState, scaleY, 16);
PRISM_AT(ScreenZoomState, imageWidth, 24);
PRISM_AT(ScreenZoomState, deviceDpiX, 32);
PRISM_AT(ScreenZoomState, imageDpiX, 40);
PRISM_AT(ScreenZoomState, pixelOffsetX, 48);
PRISM_AT(ScreenZoomState, imagePosX, 56);
PRISM_AT(ScreenZoomState, scrollPosX, 64);
PRISM_AT(ScreenZoomState, scrollMaxX, 72);
PRISM_AT(ScreenZoomState, barFlags, 80);
static_assert(sizeof(ScreenZoomState) == 88 && alignof(ScreenZoomState) == 8);

PRISM_AT(PrintOptions, Copies, 16);
PRISM_AT(PrintOptions, UseImageDPI, 32);
static_assert(sizeof(PrintOptions) == 36);

}  // namespace
