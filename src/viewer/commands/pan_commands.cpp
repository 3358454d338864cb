#include "viewer/commands/pan_commands.h"

#include <algorithm>

#include "viewer/commands/show_frame.h"
#include "viewer/picture/display_setup.h"
#include "viewer/playback/stepping.h"
#include "viewer/window/window_context.h"

namespace vistel {

namespace {

constexpr int largestZoom = 1024;

// Image pixels that one press moves the picture by.
int panIncrement(const Modifiers& held) {
    if (held.control()) return 0;
    if (held.shift()) return held.alt() ? 20 : 5;
    return held.alt() ? 10 : 1;
}

// Window pixels of mouse travel that are one step of the animation.
float travelPerStep(const ShownPicture& picture) {
    const int64_t frames = int64_t{picture.lastFrame} - picture.firstFrame;
    if (frames == 0) return 1;
    const float width = float(picture.layout.width - 8 + 2 * picture.layout.marginX);
    return std::clamp(width * float(stepSize(picture)) / float(frames), 2.0f, 20.0f);
}

// Keeps the picture's centre: the pan's change between a zoom and the one above it.
float centringPan(int visible, int upperZoom) {
    return float(visible) / (float(upperZoom - 1) * float(upperZoom)) * 0.5f;
}

}  // namespace

bool movePicture(Viewer& viewer, const Press& press, int) {
    PictureLayout& layout = viewer.layout;
    const int digit = press.code - keyPad0;
    if (digit == 5) {
        if (!press.modifiers.control()) return false;
        layout.zoom = layout.startZoom;
        layOutInWindow(viewer, layout.width, layout.height);
        layout.panX = layout.panY = 0;
        return true;
    }
    // The keypad's columns and rows: -1, 0, 1 from the left and from the bottom.
    const int column = (digit - 1) % 3 - 1, row = (digit - 1) / 3 - 1;
    layout.panX -= float(column * panIncrement(press.modifiers));
    layout.panY -= float(row * panIncrement(press.modifiers));
    return true;
}

bool zoomPicture(Viewer& viewer, const Press&, int direction) {
    PictureLayout& layout = viewer.layout;
    const int zoom = layout.zoom + direction;
    if (zoom < layout.startZoom || zoom > largestZoom) return false;
    const int upper = std::max(zoom, layout.zoom);
    layout.panX += float(direction) * centringPan(layout.visibleWidth, upper);
    layout.panY += float(direction) * centringPan(layout.visibleHeight, upper);
    layout.zoom = zoom;
    layOutInWindow(viewer, layout.width, layout.height);
    return true;
}

bool beginDrag(Viewer& viewer, const Press& press, int) {
    Dragging& drag = viewer.dragging;
    drag.cursorX = windowContext().cursor.x;
    drag.cursorY = windowContext().cursor.y;
    if (!viewer.animation || press.modifiers.any()) {
        drag.pan = true;
        return false;
    }
    drag.scrub = true;
    drag.frame = viewer.currentFrame;
    drag.playMode = viewer.playMode;
    viewer.playMode = PlayMode::stopped;
    return true;
}

bool endDrag(Viewer& viewer, const Press&, int) {
    const Dragging drag = viewer.dragging;
    viewer.dragging = {};
    if (drag.scrub) viewer.playMode = drag.playMode;
    viewer.clock.reset();
    return drag.scrub;
}

bool dragPicture(Viewer& viewer, const Press& press) {
    Dragging& drag = viewer.dragging;
    PictureLayout& layout = viewer.layout;
    const Cursor& cursor = windowContext().cursor;
    const float scale = press.modifiers.alt() ? 1.0f : float(layout.zoom);
    layout.panX += float(drag.cursorX - cursor.x) / scale;
    layout.panY += float(drag.cursorY - cursor.y) / scale;
    drag.cursorX = cursor.x;
    drag.cursorY = cursor.y;
    return true;
}

bool scrub(Viewer& viewer) {
    const Dragging& drag = viewer.dragging;
    const int steps =
        static_cast<int>(float(windowContext().cursor.x - drag.cursorX) / travelPerStep(viewer));
    const int64_t wanted = drag.frame + int64_t{steps} * stepSize(viewer);
    const auto frame = static_cast<int32_t>(
        std::clamp<int64_t>(wanted, viewer.playFirst, lastReachableFrame(viewer)));
    if (frame == viewer.currentFrame) return false;
    viewer.currentFrame = frame;
    viewer.playMode = PlayMode::stopped;  // a key may have started it meanwhile
    return showFrame(viewer);
}

}  // namespace vistel
