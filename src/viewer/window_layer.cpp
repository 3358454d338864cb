#include "viewer/window_layer.h"

#include <algorithm>
#include <utility>

#include "app/viewer_state.h"
#include "platform/menu.h"
#include "platform/process.h"
#include "platform/surface.h"
#include "viewer/drawing.h"

namespace vistel {

namespace {

constexpr int commandImportSound = 40023;
constexpr int commandToggleSound = 40024;

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

int controlBarRows() { return viewerState.controlBarShown ? CONTROL_BAR_HEIGHT : 0; }

platform::PixelRect clientRect(const WindowPlacement& placement) {
    platform::PixelRect rect{placement.left, placement.top, placement.right,
                             placement.bottom + controlBarRows()};
    rect.right = std::max(rect.right, rect.left + leastWindowWidth);
    return rect;
}

// --- what the window sends ----------------------------------------------------------------------

WindowContext& contextOf(void* owner) { return *static_cast<WindowContext*>(owner); }

void onPaint(void* owner) {
    WindowContext& context = contextOf(owner);
    if (platform::surfaceExists(windowContext().window)) {
        if (!viewerState.viewerLoopRunning && !context.drawPass) {
            platform::setScissorTest(windowContext().window, false);
            clearDrawing();
            platform::swapBuffers(windowContext().window);
        } else if (context.commandDepth > 0) {
            restoreFrontImage();
        }
    }
    context.queue.post(EV_REDRAW, 1);
}

void onResized(void*) {
    windowContext().savedImageValid = false;
    if (!platform::surfaceExists(windowContext().window)) return;
    int width, height;
    platform::clientArea(windowContext().window, width, height);
    platform::setViewport(windowContext().window, width, height);
}

void onCommand(void* owner, int id) {
    if (contextOf(owner).command) contextOf(owner).command(id);
}

constexpr platform::WindowSink windowSink{
    .owner = nullptr,  // the window's context
    .postEvent =
        [](void* owner, int code, unsigned value) {
            contextOf(owner).queue.post(code, static_cast<uint16_t>(value));
        },
    .command = onCommand,
    .commandStarts =
        [](void* owner) {
            saveFrontImage();
            ++contextOf(owner).commandDepth;
        },
    .commandEnds = [](void* owner) { --contextOf(owner).commandDepth; },
    .paint = onPaint,
    .resized = onResized,
};

bool createWindow(const std::string& title, const WindowPlacement& placement) {
    WindowContext& context = windowContext();
    context.quit = false;
    context.queue.clear();
    context.border = placement.usePreferredPosition;
    // While it is being opened there is none: the one before is of no use any more.
    platform::releaseWindow(std::exchange(context.window, nullptr));
    platform::WindowSink sink = windowSink;
    sink.owner = &context;
    context.window = platform::openWindow({title, clientRect(placement), context.border}, sink);
    return context.window != nullptr;
}

}  // namespace

WindowContext& windowContext() {
    static thread_local WindowContext context;
    return context;
}

bool openViewerWindow(const std::string& title) {
    WindowContext& context = windowContext();
    const WindowPlacement placement = pendingPlacement();
    context.creating = true;
    if (platform::windowExists(windowContext().window)) {
        platform::destroySurface(windowContext().window);
        context.queue.clear();
        platform::setWindowTitle(windowContext().window, title);
        context.border = placement.usePreferredPosition;
        platform::placeWindow(windowContext().window, clientRect(placement), context.border);
    } else if (!createWindow(title, placement)) {
        context.creating = false;
        return false;
    }
    platform::enableMenuItem(windowContext().window, commandImportSound, viewerState.soundLoaded);
    platform::enableMenuItem(windowContext().window, commandToggleSound, viewerState.soundLoaded);
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
    platform::placeWindow(windowContext().window, clientRect(*context.pending), context.border);
    context.pending.reset();
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

void clientSize(int& width, int& height) {
    platform::clientArea(windowContext().window, width, height);
    height -= controlBarRows();
}

platform::PixelRect clientOnScreen() {
    int left, top, width, height;
    platform::clientScreenPosition(windowContext().window, left, top);
    platform::clientArea(windowContext().window, width, height);
    return {left, top, left + width, top + height};
}

void clientOrigin(int& x, int& y) {
    const platform::PixelRect client = clientOnScreen();
    x = client.left;
    y = platform::screenSize().height - client.bottom + controlBarRows();
}

int screenMetric(int which) {
    switch (which) {
        case 1:
            return platform::screenSize().width;
        case 2:
            return platform::screenSize().height;
        case 3:
        case 4:
            return 24;
        default:
            return 0;
    }
}

int postEvent(int32_t code, uint16_t value) { return windowContext().queue.post(code, value); }
void clearEvents() { windowContext().queue.clear(); }

void pumpEvents() {
    WindowContext& context = windowContext();
    platform::pumpMessages();
    const bool closed = context.window && !platform::windowExists(context.window);
    if ((closed && !context.quit) || platform::interruptRequested()) {
        context.quit = true;
        context.queue.post(EV_QUIT, 1);
    }
    if (context.quit && context.queue.empty()) context.queue.post(EV_QUIT, 1);
}

int peekEvent() {
    pumpEvents();
    const EventQueue& queue = windowContext().queue;
    return queue.empty() ? 0 : queue.front().code;
}

InputEvent waitEvent() {
    pumpEvents();
    EventQueue& queue = windowContext().queue;
    while (queue.empty()) {
        platform::waitMessage();
        pumpEvents();
    }
    return queue.take();
}

void runUntilQuit() {
    while (waitEvent().code != EV_QUIT) {
    }
}

int deviceValue(int code) {
    if (code != EV_MOUSEX && code != EV_MOUSEY) return platform::keyDown(code);
    int x, y;
    platform::cursorPosition(x, y);
    return code == EV_MOUSEX ? x : platform::screenSize().height - y + controlBarRows();
}

void cursorPlace(int& x, int& y) {
    const platform::PixelRect client = clientOnScreen();
    platform::cursorPosition(x, y);
    x -= client.left;
    y = client.bottom - y;
}

void deviceValues(int count, const int* codes, int* values) {
    int x, y;
    platform::cursorPosition(x, y);
    for (int i = 0; i < count; ++i) {
        switch (codes[i]) {
            case EV_MOUSEX:
                values[i] = x;
                break;
            case EV_MOUSEY:
                values[i] = y;
                break;
            default:
                values[i] = codes[i] < 256 ? platform::keyDown(codes[i]) : 0;
        }
    }
}

}  // namespace vistel
