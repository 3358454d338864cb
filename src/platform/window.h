// Top-level windows: opening, placing, title, cursor, and the messages that come from them. A
// window only posts (code, value) events and command ids to the sink it was opened with; it never
// calls the viewer's logic in any other way.
//
// Any number of windows may be open at a time. A window belongs to the thread that opened it: every
// call on it is made there. A null window is one that is not there: calls on it do nothing, and
// answer false or 0. The same holds for a window that was closed.
//
// Each system implements all of this itself (win32, linux, headless). win32 opens windows on any
// thread, each thread with a pump of its own; linux on the first thread only, because the toolkit
// binds windows to it: one pump there serves them all. headless opens them anywhere, and all belong
// to one script.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vistel::platform {

struct Window;

// Pixel rectangle, right and bottom exclusive.
struct PixelRect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool operator==(const PixelRect&) const = default;
};

// Where a window's messages go. All functions must be set; they are called on the window's own
// thread, from inside pumpMessages, waitMessage and the system's own modal loops (menus, dialogs),
// and from inside openWindow, before it has returned the window.
struct WindowSink {
    // Whose window it is: handed to every function as its first argument.
    void* owner;
    // An input event, codes as in platform/input_event.h.
    void (*postEvent)(void* owner, int code, unsigned value);
    // A command of the menu, after `commandStarts` and before `commandEnds`; or of the control bar,
    // without them.
    void (*command)(void* owner, int id);
    void (*commandStarts)(void* owner);
    void (*commandEnds)(void* owner);
    // The window needs painting (the handler may draw on the surface). The redraw event is posted
    // by the handler's owner.
    void (*paint)(void* owner);
    // The client area has a new size and the surface, when there is one, is current.
    void (*resized)(void* owner);
    // The user has changed the text of the control bar's field; null: nobody listens.
    void (*rateTyped)(void* owner, const std::string& text) = nullptr;
    // Files or folders were dropped on the window; null: it takes none.
    void (*dropped)(void* owner, const std::vector<std::string>& names) = nullptr;
};

struct WindowRequest {
    std::string title;
    PixelRect client;    // wanted client rectangle on the screen, menu and border outside it
    bool border = true;  // false: no caption, no menu
    bool menu = true;    // false: no menu, whatever the border
};

// Whether every thread can have windows, not only the first one.
bool windowsOnEveryThread();

// Creates and shows a window, to be released by the caller. Null when the system refuses it, when
// there is no display, or when this thread can have no window.
[[nodiscard]] Window* openWindow(const WindowRequest& request, const WindowSink& sink);

// False from the moment on when the window was closed, by the user or by closeWindow.
bool windowExists(const Window* window);

// Destroys the window with its surface. Its sink hears nothing more; the handle stays good until it
// is released.
void closeWindow(Window* window);

// Closes the window when it is open and gives the handle back. Not from inside its sink.
void releaseWindow(Window* window);

// Moves and resizes so that the client area is at this rectangle; also switches border and menu.
void placeWindow(Window* window, const PixelRect& client, bool border);

// What the whole window takes of the screen, the system's frame and the menu included, when its
// client area is at this rectangle. Also of a window that is yet to be opened (null); what only the
// open window knows is missing then.
PixelRect outerRect(const Window* window, const PixelRect& client, bool border);

void setWindowTitle(Window* window, const std::string& title);

// Whole client area, the control bar included. 0 x 0 without a window.
void clientArea(const Window* window, int& width, int& height);

// Screen position of the client area's upper-left pixel.
void clientScreenPosition(const Window* window, int& x, int& y);

// Cross-hair over the client area, or the arrow.
void setCursor(Window* window, bool cross);

// Posts EV_TIMER every `milliseconds` until the window is destroyed, and whenever the window gets
// the keyboard: what keys did while another one had it was not seen.
void startTimer(Window* window, unsigned milliseconds);

// --- of the calling thread: all its windows at once ---------------------------------------------

// Handles all waiting messages without blocking, each for the window that it is for. What has
// become of a window is then asked of it (windowExists).
void pumpMessages();

// Blocks until a message is there; it is handled here or by the next pump. Does not block when a
// window was closed since the last pump.
void waitMessage();

// What is done when the display is lost (its server has ended): the process ends with status 1
// after it, wherever it was, and its commands with it. Only linux can lose its display alone.
void onDisplayLost(void (*action)());

// --- of the screen, the keyboard and the mouse --------------------------------------------------

struct ScreenSize {
    int width = 0, height = 0;
};
ScreenSize screenSize();
// The part that no task bar covers of the screen that the window is on, of the main one without a
// window.
PixelRect workArea(const Window* window);

// Whether a key, by its virtual-key code, or a mouse button (1 left, 2 right, 4 middle) is held
// now, whichever window has the keyboard.
bool keyDown(int code);

// Cursor position on the screen, from the upper-left corner.
void cursorPosition(int& x, int& y);

}  // namespace vistel::platform
