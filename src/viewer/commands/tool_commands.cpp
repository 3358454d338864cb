#include "viewer/commands/tool_commands.h"

#include <utility>

#include "host/messages.h"
#include "platform/surface.h"
#include "viewer/commands/show_frame.h"
#include "viewer/picture/display_setup.h"
#include "viewer/playback/present_frame.h"
#include "viewer/playback/save_frames.h"
#include "viewer/window/drawing.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"

namespace vistel {

namespace {

// The outline of a tile in the window, corners inclusive.
void outline(const TileRect& tile, const PictureLayout& layout, int shrink) {
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
void restoreWindowView(ShownPicture& picture) {
    PictureLayout& layout = picture.layout;
    const WindowView& before = picture.beforeFullScreen;
    if (before.width != layout.width || before.height != layout.height) return;
    if (before.zoom != layout.zoom) return;
    layout.panX = before.panX;
    layout.panY = before.panY;
}

}  // namespace

// With the write-all request of a dialog as with Shift each frame of an animation is written.
bool writePicture(Viewer& viewer, const Press& press, int) {
    if (std::exchange(viewer.frameSkip, 0)) presentFrame(viewer);  // the status line tells
    const bool all = std::exchange(viewer.saveAll, 0) || press.modifiers.shift();
    if (viewer.animation && all)
        saveRange(viewer);
    else
        saveShownFrame(viewer);
    return false;  // the band stays
}

bool setDithering(Viewer&, const Press&, int on) {
    platform::setDithering(windowContext().window, on != 0);
    return true;
}

bool toggleDoubleBuffer(Viewer& viewer, const Press&, int) {
    setDoubleBuffer(!windowContext().doubleBuffer);
    viewer.layout.clearWanted = true;
    return createDrawing();
}

bool toggleOverwrite(Viewer& viewer, const Press&, int) {
    viewer.overwriteMode = !viewer.overwriteMode;
    printError(formatMessage(Message::rVTOverwriteMode, {onOrOff(viewer.overwriteMode)}));
    return false;
}

bool outlineTiles(Viewer& viewer, const Press&, int) {
    const FrameStore* frame = viewer.shown;
    if (!frame || frame->tiles.empty()) return false;
    const PictureLayout& layout = viewer.layout;
    showOverlay([&] {
        platform::setScissorTest(windowContext().window, true);
        platform::setScissor(windowContext().window, layout.marginX, layout.marginY,
                             layout.visibleWidth, layout.visibleHeight);
        setColourIndex(3);
        for (const TileRect& tile : frame->tiles) outline(tile, layout, frame->shrink);
    });
    return false;
}

bool removeOverlay(Viewer&, const Press&, int) {
    restoreFrontImage();
    return false;
}

bool leaveFullScreen(Viewer& viewer, const Press& press, int) {
    if (std::exchange(viewer.escapeTaken, false)) return false;
    if (!viewer.fullScreen) return removeOverlay(viewer, press, 0);
    viewer.fullScreen = 0;
    if (keepFittingFrames(viewer) || !showFrame(viewer, FrameSource::file))
        setUpDisplay(viewer, *viewer.shown, Refit::fitWindow);
    restoreWindowView(viewer);
    return true;
}

}  // namespace vistel
