#include "viewer/window/front_image.h"

#include "platform/surface.h"
#include "viewer/window/drawing.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"

namespace vistel {

namespace {

constexpr int bandRows = 20;
constexpr int bandTextX = 6;  // from the band's left edge
constexpr int bandTextY = 6;

void drawFrontImage(const FrontImage& front) {
    platform::setScissorTest(windowContext().window, false);
    platform::drawPixels(windowContext().window, 0, 0,
                         {front.pixels.data(), front.width, 0, 0, front.width, front.height}, 1);
}

}  // namespace

void saveFrontImage() {
    WindowContext& context = windowContext();
    FrontImage& front = context.front;
    if (front.valid || !context.drawPass || !platform::surfaceExists(windowContext().window))
        return;
    clientSize(front.width, front.height);
    const size_t pixels = size_t(front.width) * front.height;
    if (front.pixels.size() < pixels) front.pixels.resize(pixels);
    context.drawPass();
    platform::readPixels(windowContext().window, 0, 0, front.width, front.height,
                         front.pixels.data());
    front.valid = true;
}

void restoreFrontImage() {
    const FrontImage& front = windowContext().front;
    if (!front.valid || !platform::surfaceExists(windowContext().window)) return;
    drawFrontImage(front);
    showDrawing();
}

void showOverlay(const std::function<void()>& draw) {
    if (!platform::surfaceExists(windowContext().window)) return;
    saveFrontImage();
    FrontImage& front = windowContext().front;
    if (!front.valid) return;
    drawFrontImage(front);
    draw();
    showDrawing();
    front.overlaid = true;
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
    windowContext().front.valid = false;
    windowContext().front.overlaid = false;
    showDrawing();
}

}  // namespace vistel
