// The one top-level window of a thread: opening, placing, title, cursor, and the messages that come
// from it. The window only posts (code, value) events and command ids to the sink it was opened
// with; it never calls the viewer's logic in any other way.
//
// Everything here acts on the calling thread's window.
#pragma once

#include <cstdint>
#include <string>

namespace vistel::platform {

// Pixel rectangle, right and bottom exclusive.
struct PixelRect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool operator==(const PixelRect&) const = default;
};

// Where the window's messages go. All members must be set; called on the window's own thread, from
// inside pumpMessages, waitMessage and the system's own modal loops (menus, dialogs).
struct WindowSink {
    // An input event, codes as in platform/input_event.h.
    void (*postEvent)(int code, unsigned value);
    // A menu or control-bar command, after `commandStarts` and before `commandEnds`.
    void (*command)(int id);
    void (*commandStarts)();
    void (*commandEnds)();
    // The window needs painting (the handler may draw on the surface). The redraw event is posted
    // by the handler's owner.
    void (*paint)();
    // The client area has a new size and the surface, when there is one, is current.
    void (*resized)();
};

struct WindowRequest {
    std::string title;
    PixelRect client;    // wanted client rectangle on the screen, menu and border outside it
    bool border = true;  // false: no caption, no menu
};

// Creates and shows the window. False when the system refuses it or there is no display.
[[nodiscard]] bool openWindow(const WindowRequest& request, const WindowSink& sink);

bool windowExists();

// Moves and resizes so that the client area is at this rectangle; also switches border and menu.
void placeWindow(const PixelRect& client, bool border);

void setWindowTitle(const std::string& title);

// Destroys the window; the quit message follows.
void closeWindow();

// Whole client area, the control bar included. 0 x 0 without a window.
void clientArea(int& width, int& height);

// Screen position of the client area's upper-left pixel.
void clientScreenPosition(int& x, int& y);

struct ScreenSize {
    int width = 0, height = 0;
};
ScreenSize screenSize();
// The part of the screen that no task bar covers.
PixelRect workArea();

// Cross-hair over the client area, or the arrow.
void setCursor(bool cross);

// Posts EV_TIMER every `milliseconds` until the window is destroyed.
void startTimer(unsigned milliseconds);

// Handles all waiting messages without blocking. False when the quit message was seen (the window
// was closed).
[[nodiscard]] bool pumpMessages();

// Blocks until a message is there (it is not handled yet).
void waitMessage();

// Whether a key, by its virtual-key code, or a mouse button (1 left, 2 right, 4 middle) is held now.
bool keyDown(int code);

// Cursor position on the screen, from the upper-left corner.
void cursorPosition(int& x, int& y);

}  // namespace vistel::platform
