#include "viewer/window/window_layer.h"

#include <algorithm>

#include "platform/surface.h"
#include "platform/window.h"
#include "viewer/window/drawing.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"
#include "viewer/window/window_geometry.h"

namespace vistel {

namespace {

WindowPlacement centredPlacement() {
    constexpr int width = leastWindowWidth, height = 240;
    const platform::PixelRect work = platform::workArea();
    WindowPlacement placement;
    placement.left = work.left + (work.width() - width) / 2;
    placement.top = work.top + (work.height() - height) / 2;
    placement.right = placement.left + width;
    placement.bottom = placement.top + height;
    return placement;
}

WindowPlacement& pendingPlacement() {
    auto& pending = windowContext().pending;
    if (!pending) pending = std::make_unique<WindowPlacement>(centredPlacement());
    return *pending;
}

platform::PixelRect clientRect(const WindowPlacement& placement) {
    platform::PixelRect rect{placement.left, placement.top, placement.right,
                             placement.bottom + controlBarRows()};
    rect.right = std::max(rect.right, rect.left + leastWindowWidth);
    return rect;
}

// --- what the window sends ----------------------------------------------------------------------

void onPaint() {
    WindowContext& context = windowContext();
    if (platform::surfaceExists()) {
        if (!context.viewerRunning && !context.drawPass) {
            platform::setScissorTest(false);
            clearDrawing();
            platform::swapBuffers();
        } else if (context.commandDepth > 0) {
            restoreFrontImage();
        }
    }
    context.queue.post(EV_REDRAW, 1);
}

void onResized() {
    windowContext().front.valid = false;
    if (!platform::surfaceExists()) return;
    int width, height;
    platform::clientArea(width, height);
    platform::setViewport(width, height);
}

const platform::WindowSink windowSink{
    .postEvent = [](int code, unsigned value) { postEvent(code, static_cast<uint16_t>(value)); },
    .command =
        [](int id) {
            if (windowContext().calls.command) windowContext().calls.command(id);
        },
    .commandStarts =
        [] {
            saveFrontImage();
            ++windowContext().commandDepth;
        },
    .commandEnds = [] { --windowContext().commandDepth; },
    .paint = onPaint,
    .resized = onResized,
};

bool createWindow(const std::string& title, const WindowPlacement& placement) {
    WindowContext& context = windowContext();
    context.quit = false;
    context.queue.clear();
    context.border = placement.usePreferredPosition;
    return platform::openWindow({title, clientRect(placement), context.border}, windowSink);
}

}  // namespace

bool openViewerWindow(const std::string& title) {
    WindowContext& context = windowContext();
    const WindowPlacement placement = pendingPlacement();
    context.creating = true;
    if (platform::windowExists()) {
        platform::destroySurface();
        context.queue.clear();
        platform::setWindowTitle(title);
        context.border = placement.usePreferredPosition;
        platform::placeWindow(clientRect(placement), context.border);
    } else if (!createWindow(title, placement)) {
        context.creating = false;
        return false;
    }
    if (context.calls.opened) context.calls.opened();
    context.creating = false;
    platform::startTimer(1000 / context.timerRate);
    context.pending.reset();
    return true;
}

void setPreferredPosition(int x0, int x1, int y0, int y1) {
    WindowPlacement& placement = pendingPlacement();
    placement.left = x0;
    placement.right = x1;
    placement.top = y0;
    placement.bottom = y1;
}

void clearPreferredPosition() { pendingPlacement().usePreferredPosition = false; }

void applyPendingPlacement() {
    WindowContext& context = windowContext();
    if (!context.pending || !platform::windowExists()) return;
    context.border = context.pending->usePreferredPosition;
    platform::placeWindow(clientRect(*context.pending), context.border);
    context.pending.reset();
}

void setViewerTitle(const std::string& title) {
    if (platform::windowExists()) platform::setWindowTitle(title);
}

void setTimerRate(int ticksPerSecond) {
    windowContext().timerRate = ticksPerSecond;
    if (platform::windowExists()) platform::startTimer(1000 / ticksPerSecond);
}

void forgetClosedWindow() {
    if (platform::windowExists()) return;
    windowContext().quit = false;
    clearEvents();
}

}  // namespace vistel
