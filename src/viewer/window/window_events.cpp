#include "viewer/window/window_events.h"

#include "platform/process.h"
#include "platform/window.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"

namespace vistel {

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

void runUntilQuit(const std::function<void()>& redraw) {
    redraw();
    for (int code = 0; code != EV_QUIT; code = waitEvent().code)
        if (code == EV_REDRAW) redraw();
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
