// The record of the window layer; each thread that opens a window has its own.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/window.h"
#include "viewer/window/event_queue.h"

namespace vistel {

// Where the window is to go, screen pixels; freed once applied.
struct WindowPlacement {
    bool usePreferredPosition = true;              // false: borderless
    bool second = true;                            // always set: nothing clears it or asks for it
    int left = 0, top = 0, right = 0, bottom = 0;  // client area; right and bottom exclusive
};

// What is drawn over the picture: a copy of the pass that is on screen.
struct FrontImage {
    bool valid = false;
    bool overlaid = false;  // something lies over the picture that was presented last
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;  // grows, never shrinks
};

// Where the mouse was seen last, client pixels from the lower left.
struct Cursor {
    int x = 0, y = 0;
    bool known = false;  // a move led there since the window took its place

    // Takes one half of a mouse move. Left of the window or below it, while a button holds the
    // mouse, a place is negative.
    void note(const InputEvent& event) {
        (event.code == EV_MOUSEX ? x : y) = static_cast<int16_t>(event.value);
        known = true;
    }
};

// What the window asks of those above it. Null members are skipped.
struct WindowCalls {
    void (*opened)() = nullptr;     // the window is there, its menu is to be set
    void (*refused)() = nullptr;    // the system refuses a window or its surface: the program ends
    void (*barOpened)() = nullptr;  // the control bar is new, its controls are to be set
    void (*command)(int id) = nullptr;                                 // of menu and control bar
    void (*rateTyped)(const std::string& text) = nullptr;              // in the control bar's field
    void (*dropped)(const std::vector<std::string>& names) = nullptr;  // files and folders
};

struct WindowContext {
    platform::Window* window = nullptr;  // null before the first one is opened
    WindowCalls calls;
    std::unique_ptr<WindowPlacement> pending;
    EventQueue queue;
    Cursor cursor;
    bool border = true;         // of the open window
    bool crossCursor = false;   // of every window that is opened: a cross-hair, not the arrow
    bool coversScreen = false;  // full screen
    std::optional<platform::PixelRect> beforeCovering;  // its client area until then
    bool quit = false;      // the quit message was seen; never cleared while this window lives
    bool creating = false;  // the window is being created or re-created
    bool controlBarWanted = true;  // where there is room for it: not over a full screen
    bool controlBarShown = false;
    bool viewerRunning = false;  // the viewer's loop presents the picture
    int commandDepth = 0;        // menu commands in progress
    int timerRate = 1;           // ticks per second
    int penX = 0, penY = 0;      // end of the last line drawn
    int unpackRowLength = 0;     // pixels; 0: rows are as wide as the rectangle drawn
    bool doubleBuffer = false;   // drawing goes to the back buffer
    FrontImage front;
    std::function<void()> drawPass;  // draws the current picture again, without presenting it
};
WindowContext& windowContext();

}  // namespace vistel
