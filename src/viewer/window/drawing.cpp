#include "viewer/window/drawing.h"

#include "host/font.h"
#include "platform/surface.h"
#include "platform/window.h"
#include "viewer/window/window_context.h"

namespace vistel {

bool createDrawing() {
    if (!platform::createSurface(windowContext().window)) return false;
    int width, height;
    platform::clientArea(windowContext().window, width, height);
    platform::setViewport(windowContext().window, width, height);
    platform::setDoubleBuffered(windowContext().window, windowContext().doubleBuffer);
    return true;
}

void setDoubleBuffer(bool on) {
    windowContext().doubleBuffer = on;
    if (platform::surfaceExists(windowContext().window))
        platform::setDoubleBuffered(windowContext().window, on);
}

void setColourIndex(int index) {
    switch (index) {
        case 1:
            return platform::setColour(windowContext().window, 255, 0, 0, 255);
        case 2:
            return platform::setColour(windowContext().window, 0, 0, 0, 255);
        case 3:
            return platform::setColour(windowContext().window, 255, 255, 255, 255);
    }
}

void setColourPacked(uint32_t packed) {
    platform::setColour(windowContext().window, static_cast<uint8_t>(packed),
                        static_cast<uint8_t>(packed >> 16), static_cast<uint8_t>(packed >> 8),
                        static_cast<uint8_t>(packed >> 24));
}

void clearDrawing() {
    platform::clearSurface(windowContext().window);
    platform::flushSurface(windowContext().window);
}

void setUnpackRowLength(int which, int pixels) {
    if (which == 1) windowContext().unpackRowLength = pixels;
}

void drawPixelRectangle(int x0, int y0, int x1, int y1, const uint32_t* pixels) {
    const int width = x1 - x0 + 1, height = y1 - y0 + 1;
    const int rowLength = windowContext().unpackRowLength ? windowContext().unpackRowLength : width;
    platform::drawPixels(windowContext().window, x0, y0, {pixels, rowLength, 0, 0, width, height},
                         1);
}

void fillRectangle(int x0, int y0, int x1, int y1) {
    platform::fillRectangle(windowContext().window, x0, y0, x1, y1);
}

void penMove(int x, int y) {
    windowContext().penX = x;
    windowContext().penY = y;
}

void penDraw(int x, int y) {
    platform::drawLine(windowContext().window, windowContext().penX, windowContext().penY, x, y);
    penMove(x, y);
}

int textWidth(std::string_view text) { return qdGR::viewerFont().width(text); }
void drawText(int x, int y, std::string_view text) {
    qdGR::viewerFont().draw(windowContext().window, x, y, text);
}

void showDrawing() {
    if (windowContext().doubleBuffer)
        platform::swapBuffers(windowContext().window);
    else
        platform::flushSurface(windowContext().window);
}

}  // namespace vistel
