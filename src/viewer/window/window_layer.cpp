#include "viewer/window/window_layer.h"

#include <algorithm>
#include <utility>

#include "platform/control_bar.h"
#include "platform/surface.h"
#include "platform/text.h"
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
    const platform::PixelRect work = platform::workArea(nullptr);
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

// Moved, and where it is too large made smaller, until the window round it lies in the work area.
platform::PixelRect limitedToWorkArea(const platform::PixelRect& client, bool border) {
    const platform::Window* window = windowContext().window;
    const platform::PixelRect outer = platform::outerRect(window, client, border);
    const platform::PixelRect work = platform::workArea(window);
    const auto limited = [](int begin, int end, int outerBegin, int outerEnd, int workBegin,
                            int workEnd) {
        const int first = workBegin + begin - outerBegin, last = workEnd + end - outerEnd;
        const int size = std::max(1, std::min(end - begin, last - first));
        const int place = std::max(first, std::min(begin, last - size));
        return std::pair{place, place + size};
    };
    const auto [left, right] =
        limited(client.left, client.right, outer.left, outer.right, work.left, work.right);
    const auto [top, bottom] =
        limited(client.top, client.bottom, outer.top, outer.bottom, work.top, work.bottom);
    return {left, top, right, bottom};
}

// A window that keeps its size stays where the user has put it.
platform::PixelRect clientRect(const WindowPlacement& placement) {
    platform::PixelRect rect{placement.left, placement.top, placement.right,
                             placement.bottom + controlBarRows()};
    rect.right = std::max(rect.right, rect.left + leastWindowWidth);
    if (windowContext().coversScreen || rect == clientOnScreen()) return rect;
    return limitedToWorkArea(rect, placement.usePreferredPosition);
}

// --- what the window sends ----------------------------------------------------------------------

WindowContext& contextOf(void* owner) { return *static_cast<WindowContext*>(owner); }

void onPaint(void* owner) {
    WindowContext& context = contextOf(owner);
    if (platform::surfaceExists(context.window)) {
        if (!context.viewerRunning && !context.drawPass) {
            platform::setScissorTest(context.window, false);
            clearDrawing();
            platform::swapBuffers(context.window);
        } else if (context.commandDepth > 0) {
            restoreFrontImage();
        }
    }
    context.queue.post(EV_REDRAW, 1);
}

void onResized(void* owner) {
    WindowContext& context = contextOf(owner);
    context.front.valid = false;
    if (!platform::surfaceExists(context.window)) return;
    int width, height;
    platform::clientArea(context.window, width, height);
    platform::setViewport(context.window, width, height);
}

platform::WindowSink sinkOf(WindowContext& context) {
    return {
        .owner = &context,
        .postEvent =
            [](void* owner, int code, unsigned value) {
                contextOf(owner).queue.post(code, static_cast<uint16_t>(value));
            },
        .command =
            [](void* owner, int id) {
                if (contextOf(owner).calls.command) contextOf(owner).calls.command(id);
            },
        .commandStarts =
            [](void* owner) {
                saveFrontImage();
                ++contextOf(owner).commandDepth;
            },
        .commandEnds = [](void* owner) { --contextOf(owner).commandDepth; },
        .paint = onPaint,
        .resized = onResized,
        .rateTyped =
            [](void* owner, const std::string& text) {
                if (contextOf(owner).calls.rateTyped) contextOf(owner).calls.rateTyped(text);
            },
        .dropped =
            [](void* owner, const std::vector<std::string>& names) {
                if (contextOf(owner).calls.dropped) contextOf(owner).calls.dropped(names);
            },
    };
}

// The control bar is open or closed as the window is to have it.
void openOrCloseBar() {
    WindowContext& context = windowContext();
    if (!context.controlBarShown) return platform::closeControlBar(context.window);
    platform::openControlBar(context.window);
    if (context.calls.barOpened) context.calls.barOpened();
}

void placeViewerWindow(const platform::PixelRect& client) {
    WindowContext& context = windowContext();
    openOrCloseBar();
    platform::placeWindow(context.window, client, context.border);
}

bool createWindow(const std::string& title, const WindowPlacement& placement) {
    WindowContext& context = windowContext();
    context.quit = false;
    context.queue.clear();
    context.border = placement.usePreferredPosition;
    // While it is being opened there is none: the one before is of no use any more.
    platform::releaseWindow(std::exchange(context.window, nullptr));
    const platform::PixelRect wanted = clientRect(placement);
    context.window = platform::openWindow({title, wanted, context.border}, sinkOf(context));
    if (!context.window) return false;
    if (context.crossCursor) platform::setCursor(context.window, true);
    // The frame is known now.
    const platform::PixelRect limited = clientRect(placement);
    if (limited != wanted) platform::placeWindow(context.window, limited, context.border);
    openOrCloseBar();
    return true;
}

}  // namespace

bool openViewerWindow(const std::string& title) {
    WindowContext& context = windowContext();
    const WindowPlacement placement = pendingPlacement();
    context.creating = true;
    context.controlBarShown = context.controlBarWanted && !context.coversScreen;
    if (platform::windowExists(windowContext().window)) {
        platform::destroySurface(windowContext().window);
        context.queue.clear();
        platform::setWindowTitle(windowContext().window, title);
        context.border = placement.usePreferredPosition;
        placeViewerWindow(clientRect(placement));
    } else if (!createWindow(title, placement)) {
        context.creating = false;
        return false;
    }
    if (context.calls.opened) context.calls.opened();
    context.creating = false;
    platform::startTimer(windowContext().window, 1000 / context.timerRate);
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
    if (!context.pending || !platform::windowExists(windowContext().window)) return;
    context.border = context.pending->usePreferredPosition;
    context.controlBarShown = context.controlBarWanted && !context.coversScreen;
    placeViewerWindow(clientRect(*context.pending));
    context.pending.reset();
}

void showControlBar(bool wanted) {
    WindowContext& context = windowContext();
    if (context.coversScreen || wanted == context.controlBarWanted) return;
    context.controlBarWanted = wanted;
    if (!platform::windowExists(context.window)) return;
    platform::PixelRect client = clientOnScreen();
    const int rows = platform::scaledForText(CONTROL_BAR_HEIGHT);
    client.top += wanted ? -rows : rows;
    context.controlBarShown = wanted;
    placeViewerWindow(limitedToWorkArea(client, context.border));
}

void showCrossCursor(bool cross) {
    windowContext().crossCursor = cross;
    platform::setCursor(windowContext().window, cross);
}

void setViewerTitle(const std::string& title) {
    if (platform::windowExists(windowContext().window))
        platform::setWindowTitle(windowContext().window, title);
}

void setTimerRate(int ticksPerSecond) {
    windowContext().timerRate = ticksPerSecond;
    if (platform::windowExists(windowContext().window))
        platform::startTimer(windowContext().window, 1000 / ticksPerSecond);
}

void forgetClosedWindow() {
    WindowContext& context = windowContext();
    if (platform::windowExists(context.window)) return;
    platform::releaseWindow(std::exchange(context.window, nullptr));
    context.quit = false;
    clearEvents();
}

}  // namespace vistel
