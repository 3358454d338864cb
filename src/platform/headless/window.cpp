#include "platform/window.h"

#include <deque>
#include <set>

#include "platform/dialogs.h"
#include "platform/headless/headless.h"
#include "platform/headless/surface_memory.h"
#include "platform/input_event.h"
#include "platform/menu.h"

namespace vistel::platform {

namespace {

struct Desktop {
    bool open = false;
    bool quitSeen = false;
    bool refuse = false;
    WindowSink sink{};
    PixelRect client;
    bool border = true;
    int opened = 0;
    unsigned timerPeriod = 0;
    std::vector<std::string> titles;
    std::vector<std::string> boxes;
    std::deque<std::function<void()>> steps;
    std::function<void()> idle;
    std::set<int> held;
    std::set<int> checked;
    std::set<int> disabled{40023, 40024};
    int mouseX = 0, mouseY = 0;
};
Desktop desktop;

void sendResize() {
    memorySurfaceResize(desktop.client.width(), desktop.client.height());
    if (desktop.open) desktop.sink.resized();
}

}  // namespace

bool openWindow(const WindowRequest& request, const WindowSink& sink) {
    if (desktop.refuse) {
        desktop.refuse = false;
        return false;
    }
    desktop.open = true;
    ++desktop.opened;
    desktop.quitSeen = false;
    desktop.sink = sink;
    desktop.titles.push_back(request.title);
    placeWindow(request.client, request.border);
    return true;
}

bool windowExists() { return desktop.open; }

void placeWindow(const PixelRect& client, bool border) {
    desktop.client = client;
    desktop.border = border;
    sendResize();
}

void setWindowTitle(const std::string& title) { desktop.titles.push_back(title); }

void closeWindow() {
    desktop.open = false;
    desktop.quitSeen = true;
}

void clientArea(int& width, int& height) {
    width = desktop.open ? desktop.client.width() : 0;
    height = desktop.open ? desktop.client.height() : 0;
}

void clientScreenPosition(int& x, int& y) {
    x = desktop.client.left;
    y = desktop.client.top;
}

ScreenSize screenSize() { return {1280, 1024}; }
PixelRect workArea() { return {0, 0, 1280, 1024}; }
void setCursor(bool) {}
void startTimer(unsigned milliseconds) { desktop.timerPeriod = milliseconds; }

bool pumpMessages() {
    if (!desktop.steps.empty()) {
        const auto step = std::move(desktop.steps.front());
        desktop.steps.pop_front();
        step();
    }
    const bool quit = desktop.quitSeen;
    desktop.quitSeen = false;
    return !quit;
}

void waitMessage() {
    if (!desktop.steps.empty() || desktop.quitSeen) return;
    if (desktop.idle) {
        desktop.idle();
    } else {
        closeWindow();
    }
}

bool keyDown(int code) { return desktop.held.count(code) != 0; }

void cursorPosition(int& x, int& y) {
    x = desktop.mouseX;
    y = desktop.mouseY;
}

void checkMenuItem(int command, bool checked) {
    if (checked) {
        desktop.checked.insert(command);
    } else {
        desktop.checked.erase(command);
    }
}

void enableMenuItem(int command, bool enabled) {
    if (enabled) {
        desktop.disabled.erase(command);
    } else {
        desktop.disabled.insert(command);
    }
}

void showMessageBox(const std::string& caption, const std::string& text) {
    desktop.boxes.push_back(caption + ": " + text);
}
void showSystemErrorBox(const std::string& caption) { desktop.boxes.push_back(caption); }

namespace headless {

void reset() {
    desktop = Desktop{};
    setMicroseconds(0);
    memorySurfaceReset();
}

void script(std::function<void()> step) { desktop.steps.push_back(std::move(step)); }

void press(int code) {
    desktop.held.insert(code);
    if (desktop.open) desktop.sink.postEvent(code, 1);
}
void release(int code) {
    desktop.held.erase(code);
    if (desktop.open) desktop.sink.postEvent(code, 0);
}
void type(int code) {
    press(code);
    release(code);
}
void moveMouseUnseen(int x, int y) {
    desktop.mouseX = x;
    desktop.mouseY = y;
}
void moveMouse(int x, int y) {
    moveMouseUnseen(x, y);
    if (!desktop.open) return;
    desktop.sink.postEvent(EV_MOUSEX, static_cast<uint16_t>(x - desktop.client.left));
    desktop.sink.postEvent(EV_MOUSEY, static_cast<uint16_t>(desktop.client.bottom - y));
}
void choose(int command) {
    if (!desktop.open) return;
    desktop.sink.commandStarts();
    desktop.sink.command(command);
    desktop.sink.commandEnds();
}
void uncover() {
    if (desktop.open) desktop.sink.paint();
}
void close() { closeWindow(); }
void whenIdle(std::function<void()> action) { desktop.idle = std::move(action); }

const std::string& title() {
    static const std::string none;
    return desktop.titles.empty() ? none : desktop.titles.back();
}
const std::vector<std::string>& titles() { return desktop.titles; }
PixelRect windowRect() { return desktop.client; }
int windowsOpened() { return desktop.opened; }
bool windowHasBorder() { return desktop.border; }
unsigned timerPeriod() { return desktop.timerPeriod; }
bool windowOpen() { return desktop.open; }
const std::vector<std::string>& messageBoxes() { return desktop.boxes; }
bool menuChecked(int command) { return desktop.checked.count(command) != 0; }
bool menuEnabled(int command) { return desktop.disabled.count(command) == 0; }
void refuseWindow() { desktop.refuse = true; }

}  // namespace headless

}  // namespace vistel::platform
