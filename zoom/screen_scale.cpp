// Scale, image position and scroll position of a ScreenZoomState.
#include "zoom/screen_scale.h"

#include "zoom/scale_steps.h"

#include <algorithm>
#include <cstdint>

namespace prism {
namespace {

int Rounded(double v) { return TruncateToInt(v + 0.5); }

int Limited(int v, int high) { return v < 0 ? 0 : v > high ? high : v; }

// a times b / c in integer division (c > 0), into the 32-bit range.
int Proportion(int a, std::int64_t b, std::int64_t c) {
    return TruncateToInt(static_cast<double>(a * b / c));
}

// How far the scaled image reaches past the client area, in screen pixels.
std::int64_t Excess(int size, double scale, LONG client) { return std::int64_t{Rounded(size * scale)} - client; }

}  // namespace

void ScreenLoadScale(const int* numbers, int deviceDpiX, int deviceDpiY, ScreenZoomState* screen) {
    screen->scaleX = screen->scaleY = 1.0;
    screen->deviceDpiX = deviceDpiX;
    screen->deviceDpiY = deviceDpiY;
    if (numbers) {
        if (numbers[0] > 0 && numbers[1] > 0) screen->scaleX = static_cast<double>(numbers[0]) / numbers[1];
        if (numbers[2] > 0 && numbers[3] > 0) screen->scaleY = static_cast<double>(numbers[2]) / numbers[3];
    }
    if (!(screen->flags & kScreenPhysical)) {
        screen->flags |= kScreenPlain;
        return;
    }
    if (deviceDpiX > 0 && screen->imageDpiX > 0) screen->scaleX *= static_cast<double>(deviceDpiX) / screen->imageDpiX;
    if (deviceDpiY > 0 && screen->imageDpiY > 0) screen->scaleY *= static_cast<double>(deviceDpiY) / screen->imageDpiY;
}

void ScreenFromScroll(const RECT& client, ScreenZoomState* screen) {
    screen->imagePosX = screen->imagePosY = 0;
    screen->pixelOffsetX = screen->pixelOffsetY = 0;
    if (screen->scrollMaxX <= 0 || screen->scrollMaxY <= 0) return;
    screen->scrollPosX = Limited(screen->scrollPosX, screen->scrollMaxX);
    screen->scrollPosY = Limited(screen->scrollPosY, screen->scrollMaxY);
    const std::int64_t ex = Excess(screen->imageWidth, screen->scaleX, client.right);
    const std::int64_t ey = Excess(screen->imageHeight, screen->scaleY, client.bottom);
    if (ex > 0) screen->pixelOffsetX = Proportion(screen->scrollPosX, ex, screen->scrollMaxX);
    if (ey > 0) screen->pixelOffsetY = Proportion(screen->scrollPosY, ey, screen->scrollMaxY);
    // The scales are positive: ScreenLoadScale makes them so.
    screen->imagePosX = Rounded(screen->pixelOffsetX / screen->scaleX);
    screen->imagePosY = Rounded(screen->pixelOffsetY / screen->scaleY);
}

void ScreenToScroll(const RECT& client, ScreenZoomState* screen) {
    screen->scrollPosX = screen->scrollPosY = 0;
    screen->barFlags = 0;
    if (screen->scrollMaxX < 0 || screen->scrollMaxY < 0) return;
    screen->pixelOffsetX = Rounded(screen->imagePosX * screen->scaleX);
    screen->pixelOffsetY = Rounded(screen->imagePosY * screen->scaleY);
    const std::int64_t ex = Excess(screen->imageWidth, screen->scaleX, client.right);
    const std::int64_t ey = Excess(screen->imageHeight, screen->scaleY, client.bottom);
    // The offset may lie outside 0..ex; the position is limited afterwards.
    if (ex > 0) {
        screen->barFlags |= 1;
        screen->scrollPosX = Proportion(screen->pixelOffsetX, screen->scrollMaxX, ex);
    }
    if (ey > 0) {
        screen->barFlags |= 2;
        screen->scrollPosY = Proportion(screen->pixelOffsetY, screen->scrollMaxY, ey);
    }
    screen->scrollPosX = Limited(screen->scrollPosX, screen->scrollMaxX);
    screen->scrollPosY = Limited(screen->scrollPosY, screen->scrollMaxY);
}

void ScreenBandToScale(const RECT& client, BZoomState* state, const ScreenZoomState& screen) {
    const RECT& band = state->band;
    const int iw = Rounded((static_cast<double>(band.right) - band.left) / screen.scaleX);
    const int ih = Rounded((static_cast<double>(band.bottom) - band.top) / screen.scaleY);
    double fx = RatioOf(client.right, iw), fy = RatioOf(client.bottom, ih);
    if (screen.flags & kScreenPhysical) {
        if (screen.deviceDpiX > 0 && screen.imageDpiX > 0) fx /= static_cast<double>(screen.deviceDpiX) / screen.imageDpiX;
        if (screen.deviceDpiY > 0 && screen.imageDpiY > 0) fy /= static_cast<double>(screen.deviceDpiY) / screen.imageDpiY;
    }
    RatioToScale(std::min(fx, fy), &state->scaleNumX);
}

void ScreenApplyAtPoint(POINT p, const RECT& client, int deviceDpiX, int deviceDpiY, const BZoomState& state,
                        ScreenZoomState* screen) {
    const std::int64_t px = std::int64_t{Rounded(p.x / screen->scaleX)} + screen->imagePosX;
    const std::int64_t py = std::int64_t{Rounded(p.y / screen->scaleY)} + screen->imagePosY;
    const int scale[4] = {state.scaleNumX, state.scaleDenX, state.scaleNumY, state.scaleDenY};
    ScreenLoadScale(scale, deviceDpiX, deviceDpiY, screen);
    const int cw = Rounded(client.right / screen->scaleX), ch = Rounded(client.bottom / screen->scaleY);
    std::int64_t x = px - cw / 2, y = py - ch / 2;
    if (x + cw >= screen->imageWidth) x = std::int64_t{screen->imageWidth} - cw;
    if (y + ch >= screen->imageHeight) y = std::int64_t{screen->imageHeight} - ch;
    screen->imagePosX = TruncateToInt(static_cast<double>(std::max<std::int64_t>(x, 0)));
    screen->imagePosY = TruncateToInt(static_cast<double>(std::max<std::int64_t>(y, 0)));
}

}  // namespace prism
