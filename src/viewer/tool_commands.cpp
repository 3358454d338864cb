#include "viewer/tool_commands.h"

#include <cstdio>
#include <utility>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "platform/surface.h"
#include "viewer/display_setup.h"
#include "viewer/drawing.h"
#include "viewer/frame_display.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

bool run(bool (*tool)()) { return tool && tool(); }

Tstring onOrOff(bool on) {
    return messageText(on ? "s_VistelStrings.rVTOn" : "s_VistelStrings.rVTOff");
}

// The outline of a tile in the window, corners inclusive.
void outline(const TileRect& tile) {
    const ViewerSession& session = viewerSession();
    const PictureLayout& layout = session.layout;
    const int shrink = session.shown->shrink;
    const auto window = [&](int pixel, int margin, float pan) {
        return margin + (pixel / shrink - static_cast<int>(pan)) * layout.zoom;
    };
    const int left = window(tile.x1, layout.marginX, layout.panX);
    const int bottom = window(tile.y1, layout.marginY, layout.panY);
    const int right = window(tile.x2 + 1, layout.marginX, layout.panX) - 1;
    const int top = window(tile.y2 + 1, layout.marginY, layout.panY) - 1;
    penMove(left, bottom);
    penDraw(right, bottom);
    penDraw(right, top);
    penDraw(left, top);
    penDraw(left, bottom);
}

// The part of the picture that showed before full screen, unless another size of it is shown now.
void restoreWindowView() {
    PictureLayout& layout = viewerSession().layout;
    const WindowView& before = viewerSession().beforeFullScreen;
    if (before.width != layout.width || before.height != layout.height) return;
    if (before.zoom != layout.zoom) return;
    layout.panX = before.panX;
    layout.panY = before.panY;
}

}  // namespace

bool writePicture(const KeyPress& press, int) {
    const bool skipped = std::exchange(viewerState.frameSkip, 0) != 0;
    const bool all = viewerState.animation && press.modifiers.shift();
    const bool redraw = run(all ? viewerTools.writeAnimation : viewerTools.writeFrame);
    return redraw || skipped;  // the status line tells of the skipping
}

bool pickPoint(const KeyPress&, int) { return run(viewerTools.pickPoint); }
bool toggleTracking(const KeyPress&, int) { return run(viewerTools.toggleTracking); }
bool writeTracking(const KeyPress&, int) { return run(viewerTools.writeTracking); }
bool reportControls(const KeyPress&, int) { return run(viewerTools.reportControls); }

bool setDithering(const KeyPress&, int on) {
    platform::setDithering(windowContext().window, on != 0);
    return true;
}

bool toggleDoubleBuffer(const KeyPress&, int) {
    setDoubleBuffer(!windowContext().doubleBuffer);
    viewerSession().layout.clearWanted = true;
    return createDrawing();
}

bool toggleLuminanceCurve(const KeyPress&, int) {
    viewerState.luminanceCurve = !viewerState.luminanceCurve;
    printError(formatMessage("s_VistelStrings.rVTLumCurve", {onOrOff(viewerState.luminanceCurve)}));
    return false;
}

bool toggleOverwrite(const KeyPress&, int) {
    viewerState.overwriteMode = !viewerState.overwriteMode;
    printError(
        formatMessage("s_VistelStrings.rVTOverwriteMode", {onOrOff(viewerState.overwriteMode)}));
    return false;
}

bool outlineTiles(const KeyPress&, int) {
    const ViewerSession& session = viewerSession();
    if (!session.shown || session.shown->tiles.empty()) return false;
    const PictureLayout& layout = session.layout;
    showOverlay([&] {
        platform::setScissorTest(windowContext().window, true);
        platform::setScissor(windowContext().window, layout.marginX, layout.marginY,
                             layout.visibleWidth, layout.visibleHeight);
        setColourIndex(3);
        for (const TileRect& tile : session.shown->tiles) outline(tile);
    });
    return false;
}

bool removeOverlay(const KeyPress&, int) {
    restoreFrontImage();
    return false;
}

bool leaveFullScreen(const KeyPress& press, int) {
    ViewerSession& session = viewerSession();
    if (std::exchange(session.escapeTaken, false)) return false;
    if (!viewerState.fullScreen) return removeOverlay(press, 0);
    viewerState.fullScreen = 0;
    if (keepFittingFrames() || !showCurrentFrame(FrameRead::always))
        setUpDisplay(*session.shown, Refit::fitWindow);
    restoreWindowView();
    return true;
}

}  // namespace vistel
