#include "platform/window.h"

#include <deque>
#include <memory>
#include <set>

#include "platform/control_bar.h"
#include "platform/dialogs.h"
#include "platform/headless/headless.h"
#include "platform/headless/memory_window.h"
#include "platform/input_event.h"
#include "platform/menu.h"
#include "platform/surface.h"
#include "platform/text.h"
#include "platform/web_browser.h"
#include "resources/command_ids.h"

namespace vistel::platform {

namespace {

struct Desktop {
    bool closedSincePump = false;
    bool refuse = false;
    int opened = 0;
    Window* last = nullptr;  // the window opened last, as long as it is not released
    std::vector<std::string> titles;
    std::vector<std::string> boxes;
    bool answer = false;
    std::function<std::optional<FileChoice>(const FileRequest&)> chooser;
    std::vector<std::string> pages;
    bool noBrowser = false;
    std::deque<std::function<void()>> steps;
    std::function<void()> idle;
    std::set<int> held;
    int mouseX = 0, mouseY = 0;
    PixelRect work{0, 0, 1280, 1024};
    PixelRect frame;  // thickness on each side
    float textScale = 1;
    bool everyThread = false;
};
Desktop desktop;

// Every window that was not released, those of desktops before this one included.
std::vector<std::unique_ptr<Window>>& windows() {
    static std::vector<std::unique_ptr<Window>> all;
    return all;
}

// The window opened last, or one that has nothing to tell when there is none.
const Window& lastWindow() {
    static const Window none = [] {
        Window window;
        window.open = false;
        return window;
    }();
    return desktop.last ? *desktop.last : none;
}

void post(Window* window, int code, unsigned value) {
    if (windowExists(window)) window->sink.postEvent(window->sink.owner, code, value);
}

}  // namespace

bool windowsOnEveryThread() { return desktop.everyThread; }

Window* openWindow(const WindowRequest& request, const WindowSink& sink) {
    if (desktop.refuse) {
        desktop.refuse = false;
        return nullptr;
    }
    Window* const window = windows().emplace_back(std::make_unique<Window>()).get();
    desktop.last = window;
    ++desktop.opened;
    window->sink = sink;
    setWindowTitle(window, request.title);
    placeWindow(window, request.client, request.border);
    return window;
}

bool windowExists(const Window* window) { return window && window->open; }

void closeWindow(Window* window) {
    if (!windowExists(window)) return;
    destroySurface(window);
    window->open = false;
    desktop.closedSincePump = true;
}

void releaseWindow(Window* window) {
    closeWindow(window);
    if (desktop.last == window) desktop.last = nullptr;
    std::erase_if(windows(), [=](const auto& known) { return known.get() == window; });
}

void placeWindow(Window* window, const PixelRect& client, bool border) {
    if (!windowExists(window)) return;
    window->client = client;
    window->border = border;
    window->surface.resize(client.width(), client.height());
    window->sink.resized(window->sink.owner);
}

void setWindowTitle(Window* window, const std::string& title) {
    if (!windowExists(window)) return;
    window->title = title;
    desktop.titles.push_back(title);
}

void clientArea(const Window* window, int& width, int& height) {
    width = windowExists(window) ? window->client.width() : 0;
    height = windowExists(window) ? window->client.height() : 0;
}

void clientScreenPosition(const Window* window, int& x, int& y) {
    x = windowExists(window) ? window->client.left : 0;
    y = windowExists(window) ? window->client.top : 0;
}

float textScale() { return desktop.textScale; }
void onDisplayLost(void (*)()) {}

ScreenSize screenSize() { return {1280, 1024}; }
PixelRect workArea(const Window*) { return desktop.work; }

PixelRect outerRect(const Window*, const PixelRect& client, bool border) {
    if (!border) return client;
    const PixelRect& frame = desktop.frame;
    return {client.left - frame.left, client.top - frame.top, client.right + frame.right,
            client.bottom + frame.bottom};
}
void setCursor(Window* window, bool cross) {
    if (windowExists(window)) window->crossCursor = cross;
}
void startTimer(Window* window, unsigned milliseconds) {
    if (windowExists(window)) window->timerPeriod = milliseconds;
}

void pumpMessages() {
    desktop.closedSincePump = false;
    if (desktop.steps.empty()) return;
    const auto step = std::move(desktop.steps.front());
    desktop.steps.pop_front();
    step();
}

void waitMessage() {
    if (!desktop.steps.empty() || desktop.closedSincePump) return;
    if (desktop.idle) {
        desktop.idle();
    } else {
        for (const auto& window : windows()) closeWindow(window.get());
    }
}

bool keyDown(int code) { return desktop.held.count(code) != 0; }

void cursorPosition(int& x, int& y) {
    x = desktop.mouseX;
    y = desktop.mouseY;
}

std::set<int> greyedAtFirst() {
    return {
#define MENU_BEGIN(caption)
#define MENU_ITEM(caption, command)
#define MENU_GREYED_ITEM(caption, command) command,
#define MENU_SEPARATOR
#define MENU_END
#include "resources/menu_table.inc"
#undef MENU_BEGIN
#undef MENU_ITEM
#undef MENU_GREYED_ITEM
#undef MENU_SEPARATOR
#undef MENU_END
    };
}

void checkMenuItem(Window* window, int command, bool checked) {
    if (!windowExists(window)) return;
    if (checked) {
        window->checked.insert(command);
    } else {
        window->checked.erase(command);
    }
}

void enableMenuItem(Window* window, int command, bool enabled) {
    if (!windowExists(window)) return;
    if (enabled) {
        window->disabled.erase(command);
    } else {
        window->disabled.insert(command);
    }
}

void openControlBar(Window* window) {
    if (windowExists(window) && !window->bar) window->bar.emplace();
}
void closeControlBar(Window* window) {
    if (windowExists(window)) window->bar.reset();
}
void setBarTip(Window* window, int control, const std::string& text) {
    if (windowExists(window) && window->bar) window->bar->tips[control] = text;
}
void showBarButton(Window* window, int button, const BarButtonLook& look) {
    if (windowExists(window) && window->bar) window->bar->looks[button] = look;
}
void showBarRate(Window* window, const std::string& text) {
    if (windowExists(window) && window->bar) window->bar->rate = text;
}

void showMessageBox(Window*, const std::string& caption, const std::string& text) {
    desktop.boxes.push_back(caption + ": " + text);
}
bool confirm(Window*, const std::string& caption, const std::string& text) {
    desktop.boxes.push_back(caption + ": " + text);
    return desktop.answer;
}
void showAbout(Window*, const std::string& text) { desktop.boxes.push_back(text); }
std::optional<FileChoice> askForFile(Window*, const FileRequest& request) {
    return desktop.chooser ? desktop.chooser(request) : std::nullopt;
}
void showSystemErrorBox(Window*, const std::string& caption) { desktop.boxes.push_back(caption); }

bool showInBrowser(const std::string& address) {
    if (!desktop.noBrowser) desktop.pages.push_back(address);
    return !desktop.noBrowser;
}

namespace headless {

void reset() {
    for (const auto& window : windows()) {
        window->open = false;
        window->surface = MemorySurface{};
    }
    desktop = Desktop{};
    setMicroseconds(0);
    resetSurfaces();
}

Window* window() { return desktop.last; }
void use(Window* window) { desktop.last = window; }

void script(std::function<void()> step) { desktop.steps.push_back(std::move(step)); }

void press(int code) {
    desktop.held.insert(code);
    post(desktop.last, code, 1);
}
void release(int code) {
    desktop.held.erase(code);
    post(desktop.last, code, 0);
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
    const PixelRect& client = lastWindow().client;
    post(desktop.last, EV_MOUSEX, static_cast<uint16_t>(x - client.left));
    post(desktop.last, EV_MOUSEY, static_cast<uint16_t>(client.bottom - y));
}
void choose(int command) {
    if (!windowOpen()) return;
    const WindowSink sink = desktop.last->sink;
    sink.commandStarts(sink.owner);
    sink.command(sink.owner, command);
    sink.commandEnds(sink.owner);
}
void click(int button) {
    if (!windowOpen() || !bar() || !bar()->looks.at(button).enabled) return;
    const WindowSink sink = desktop.last->sink;
    sink.command(sink.owner, button);
}
void typeRate(const std::string& text) {
    if (!windowOpen() || !bar()) return;
    desktop.last->bar->rate = text;
    desktop.last->sink.rateTyped(desktop.last->sink.owner, text);
}
void uncover() {
    if (windowOpen()) desktop.last->sink.paint(desktop.last->sink.owner);
}
void close() { closeWindow(desktop.last); }
void whenIdle(std::function<void()> action) { desktop.idle = std::move(action); }

const std::string& title() { return lastWindow().title; }
const std::vector<std::string>& titles() { return desktop.titles; }
PixelRect windowRect() { return lastWindow().client; }
int windowsOpened() { return desktop.opened; }
bool windowHasBorder() { return lastWindow().border; }
bool crossCursor() { return lastWindow().crossCursor; }
unsigned timerPeriod() { return lastWindow().timerPeriod; }
bool windowOpen() { return windowExists(desktop.last); }
const std::vector<std::string>& messageBoxes() { return desktop.boxes; }
void answerQuestions(bool yes) { desktop.answer = yes; }
void chooseFiles(std::function<std::optional<FileChoice>(const FileRequest&)> chooser) {
    desktop.chooser = std::move(chooser);
}
void drop(const std::vector<std::string>& names) {
    if (windowOpen()) desktop.last->sink.dropped(desktop.last->sink.owner, names);
}
const std::vector<std::string>& pagesShown() { return desktop.pages; }
bool menuChecked(int command) { return lastWindow().checked.count(command) != 0; }
const Bar* bar() { return lastWindow().bar ? &*lastWindow().bar : nullptr; }
bool menuEnabled(int command) { return lastWindow().disabled.count(command) == 0; }
void setWorkArea(const PixelRect& work) { desktop.work = work; }
void setTextScale(float scale) { desktop.textScale = scale; }
void setFrame(const PixelRect& thickness) { desktop.frame = thickness; }
void allowEveryThread() { desktop.everyThread = true; }
void refuseWindow() { desktop.refuse = true; }
void removeBrowser() { desktop.noBrowser = true; }

const Image& visibleImage() { return lastWindow().surface.visible; }
const std::vector<DrawnText>& visibleTexts() { return lastWindow().surface.visibleTexts.texts(); }
bool dithering() { return lastWindow().surface.dithering; }
bool doubleBuffered() { return lastWindow().surface.doubleBuffered; }

}  // namespace headless

}  // namespace vistel::platform
