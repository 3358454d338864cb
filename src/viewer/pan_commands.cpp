#include "viewer/pan_commands.h"

#include <algorithm>

#include "app/viewer_state.h"
#include "viewer/display_setup.h"
#include "viewer/frame_display.h"
#include "viewer/stepping.h"

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
float travelPerStep() {
    const PictureLayout& layout = viewerSession().layout;
    const int64_t frames = int64_t{viewerState.lastFrame} - viewerState.firstFrame;
    if (frames == 0) return 1;
    const float width = float(layout.width - 8 + 2 * layout.marginX);
    return std::clamp(width * float(std::max(viewerState.frameStep, 1)) / float(frames), 2.0f,
                      20.0f);
}

// Keeps the picture's centre: the pan's change between a zoom and the one above it.
float centringPan(int visible, int upperZoom) {
    return float(visible) / (float(upperZoom - 1) * float(upperZoom)) * 0.5f;
}

}  // namespace

void resetView() {
    PictureLayout& layout = viewerSession().layout;
    layout.zoom = layout.startZoom;
    layOutInWindow(layout.width, layout.height);
    layout.panX = layout.panY = 0;
}

bool movePicture(const KeyPress& press, int) {
    const int digit = press.code - keyPad0;
    if (digit == 5) {
        if (press.modifiers.control()) resetView();
        return press.modifiers.control();
    }
    // The keypad's columns and rows: -1, 0, 1 from the left and from the bottom.
    const int column = (digit - 1) % 3 - 1, row = (digit - 1) / 3 - 1;
    PictureLayout& layout = viewerSession().layout;
    layout.panX -= float(column * panIncrement(press.modifiers));
    layout.panY -= float(row * panIncrement(press.modifiers));
    return true;
}

bool zoomPicture(const KeyPress&, int direction) {
    PictureLayout& layout = viewerSession().layout;
    const int zoom = layout.zoom + direction;
    if (zoom < layout.startZoom || zoom > largestZoom) return false;
    const int upper = std::max(zoom, layout.zoom);
    layout.panX += float(direction) * centringPan(layout.visibleWidth, upper);
    layout.panY += float(direction) * centringPan(layout.visibleHeight, upper);
    layout.zoom = zoom;
    layOutInWindow(layout.width, layout.height);
    return true;
}

bool beginDrag(const KeyPress& press, int) {
    ViewerSession& session = viewerSession();
    Dragging& drag = session.dragging;
    drag.cursorX = session.cursorX;
    drag.cursorY = session.cursorY;
    if (!viewerState.animation || press.modifiers.any()) {
        drag.pan = true;
        return false;
    }
    drag.scrub = true;
    drag.frame = viewerState.currentFrame;
    drag.playMode = viewerState.playMode;
    viewerState.playMode = PlayMode::stopped;
    return true;
}

bool endDrag(const KeyPress&, int) {
    Dragging& drag = viewerSession().dragging;
    if (drag.scrub) viewerState.playMode = drag.playMode;
    const bool scrubbed = drag.scrub;
    drag = Dragging{};
    playbackClock().reset();
    return scrubbed;
}

bool dragPicture(const KeyPress& press) {
    ViewerSession& session = viewerSession();
    Dragging& drag = session.dragging;
    PictureLayout& layout = session.layout;
    const float scale = press.modifiers.alt() ? 1.0f : float(layout.zoom);
    layout.panX += float(drag.cursorX - session.cursorX) / scale;
    layout.panY += float(drag.cursorY - session.cursorY) / scale;
    drag.cursorX = session.cursorX;
    drag.cursorY = session.cursorY;
    return true;
}

bool scrub() {
    const ViewerSession& session = viewerSession();
    const Dragging& drag = session.dragging;
    const int steps = static_cast<int>(float(session.cursorX - drag.cursorX) / travelPerStep());
    const int64_t wanted = drag.frame + int64_t{steps} * std::max(viewerState.frameStep, 1);
    const auto frame = static_cast<int32_t>(
        std::clamp<int64_t>(wanted, viewerState.playFirst, lastReachableFrame()));
    if (frame == viewerState.currentFrame) return false;
    viewerState.currentFrame = frame;
    viewerState.playMode = PlayMode::stopped;  // a key may have started it meanwhile
    return showCurrentFrame(FrameRead::ifNeeded);
}

}  // namespace vistel
