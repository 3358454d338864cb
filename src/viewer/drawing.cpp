#include "viewer/drawing.h"

#include "host/font.h"
#include "platform/surface.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

constexpr int bandRows = 20;
constexpr int bandTextX = 6;  // from the band's left edge
constexpr int bandTextY = 6;

// Shows what was drawn over or instead of the picture.
void showDrawn() {
    if (windowContext().doubleBuffer)
        platform::swapBuffers(windowContext().window);
    else
        platform::flushSurface(windowContext().window);
}

void drawSavedImage() {
    const WindowContext& context = windowContext();
    platform::setScissorTest(windowContext().window, false);
    platform::drawPixels(windowContext().window, 0, 0,
                         {context.savedImage.data(), context.savedWidth, 0, 0, context.savedWidth,
                          context.savedHeight},
                         1);
}

}  // namespace

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

void saveFrontImage() {
    WindowContext& context = windowContext();
    if (context.savedImageValid || !context.drawPass ||
        !platform::surfaceExists(windowContext().window))
        return;
    clientSize(context.savedWidth, context.savedHeight);
    const size_t pixels = size_t(context.savedWidth) * context.savedHeight;
    if (context.savedImage.size() < pixels) context.savedImage.resize(pixels);
    context.drawPass();
    platform::readPixels(windowContext().window, 0, 0, context.savedWidth, context.savedHeight,
                         context.savedImage.data());
    context.savedImageValid = true;
}

void restoreFrontImage() {
    if (!windowContext().savedImageValid || !platform::surfaceExists(windowContext().window))
        return;
    drawSavedImage();
    showDrawn();
}

void showOverlay(const std::function<void()>& draw) {
    if (!platform::surfaceExists(windowContext().window)) return;
    saveFrontImage();
    if (!windowContext().savedImageValid) return;
    drawSavedImage();
    draw();
    showDrawn();
    windowContext().overlaid = true;
}

void showMessageBand(const std::string& text) {
    int width, height;
    clientSize(width, height);
    showMessageBand(text, 0, width);
}

void showMessageBand(const std::string& text, int left, int columns) {
    showOverlay([&] {
        setColourIndex(2);
        fillRectangle(left, 0, left + columns - 1, bandRows - 1);
        setColourIndex(3);
        drawText(left + bandTextX, bandTextY, text);
    });
}

void swapDrawing() {
    windowContext().savedImageValid = false;
    windowContext().overlaid = false;
    showDrawn();
}

}  // namespace vistel
