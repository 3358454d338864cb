#include "viewer/window/front_image.h"

#include <algorithm>

#include "platform/surface.h"
#include "platform/text.h"
#include "viewer/window/drawing.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"

namespace vistel {

namespace {

// At usual density.
constexpr int bandRows = 20;
constexpr int bandTextPlace = 6;  // from the band's left edge and from its foot

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
    int width, height;
    clientSize(width, height);
    const int textPlace = platform::scaledForText(bandTextPlace);
    const int needed = textWidth(text) + 2 * textPlace;
    const int wide = std::min(std::max(columns, needed), width);
    const int first = std::clamp(left - (wide - columns) / 2, 0, width - wide);
    showOverlay([&] {
        setColourIndex(2);
        fillRectangle(first, 0, first + wide - 1, platform::scaledForText(bandRows) - 1);
        setColourIndex(3);
        drawText(first + textPlace, textPlace, text);
    });
}

void swapDrawing() {
    windowContext().front.valid = false;
    windowContext().front.overlaid = false;
    showDrawing();
}

}  // namespace vistel
