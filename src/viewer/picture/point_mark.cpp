#include "viewer/picture/point_mark.h"

#include "platform/text.h"
#include "viewer/window/drawing.h"

namespace vistel {

namespace {

// At usual density, window pixels from the point.
constexpr int armStart = 4, armEnd = 11;

// The four arms, wider and longer by `border` on each side.
void drawArms(const WindowPoint& at, int border) {
    const int from = platform::scaledForText(armStart) - border;
    const int to = platform::scaledForText(armEnd) + border;
    fillRectangle(at.x - to, at.y - border, at.x - from, at.y + border);
    fillRectangle(at.x + from, at.y - border, at.x + to, at.y + border);
    fillRectangle(at.x - border, at.y - to, at.x + border, at.y - from);
    fillRectangle(at.x - border, at.y + from, at.x + border, at.y + to);
}

}  // namespace

void drawPointMark(const PictureLayout& layout, const ImagePoint& point) {
    const WindowPoint at = windowPoint(layout, point);
    setColourIndex(2);
    drawArms(at, 1);
    setColourIndex(3);
    drawArms(at, 0);
}

void drawTrackingMark(ShownPicture& picture) {
    const Tracking& tracking = picture.tracking;
    const Pick* pick = tracking.find(int64_t{picture.currentFrame} - picture.firstFrame);
    if (!tracking.on || !pick) return;
    const double scale = double(pick->shrink) / picture.shown->shrink;
    drawPointMark(picture.layout, {pick->x * scale, pick->y * scale});
    picture.layout.clearWanted = true;  // it may reach into the margins
}

}  // namespace vistel
