// The viewer's window: opening and placing it, its events, its geometry. A thin layer over the
// platform's window that adds what is the same on every system: the pending placement, the event
// queue, the control bar's share of the client area, the saved front image.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/window.h"
#include "viewer/event_queue.h"

namespace vistel {

// Rows of the client area that the control bar takes when it is shown.
constexpr int CONTROL_BAR_HEIGHT = 29;

// No window is narrower, pixels: its menu needs the room.
constexpr int leastWindowWidth = 320;

// Where the window is to go, screen pixels; freed once applied.
struct WindowPlacement {
    bool usePreferredPosition = true;              // false: borderless
    bool second = true;                            // always set: nothing clears it or asks for it
    int left = 0, top = 0, right = 0, bottom = 0;  // client area; right and bottom exclusive
};

// The record of the window layer; each thread that opens a window has its own.
struct WindowContext {
    platform::Window* window = nullptr;  // null before the first one is opened
    std::unique_ptr<WindowPlacement> pending;
    EventQueue queue;
    bool border = true;         // of the open window
    bool coversScreen = false;  // full screen
    bool quit = false;          // the quit message was seen; never cleared while this window lives
    bool creating = false;      // the window is being created or re-created
    int commandDepth = 0;       // menu commands in progress
    int timerRate = 1;          // ticks per second
    int penX = 0, penY = 0;     // end of the last line drawn
    int unpackRowLength = 0;    // pixels; 0: rows are as wide as the rectangle drawn
    bool doubleBuffer = false;  // drawing goes to the back buffer
    bool savedImageValid = false;
    bool overlaid = false;  // something lies over the picture that was presented last
    int savedWidth = 0, savedHeight = 0;
    std::vector<uint32_t> savedImage;   // grows, never shrinks
    void (*drawPass)() = nullptr;       // draws the current picture again, without presenting it
    void (*command)(int id) = nullptr;  // menu and control-bar commands
};
WindowContext& windowContext();

// --- window --------------------------------------------------------------------------------------

// Creates the window at the pending placement (320 x 240 in the middle of the work area when none
// is pending), or re-titles and re-places the existing one, whose event queue is emptied. False
// when the system refuses.
[[nodiscard]] bool openViewerWindow(const std::string& title);

// Edits of the pending placement; the default one is made first when none is pending.
void setPreferredPosition(int x0, int x1, int y0, int y1);
void clearPreferredPosition();

// Moves the existing window to the pending placement and frees it.
void applyPendingPlacement();

void setViewerTitle(const std::string& title);
void setTimerRate(int ticksPerSecond);

// --- geometry, pixels ----------------------------------------------------------------------------

// Client area less the control bar.
void clientSize(int& width, int& height);
// The whole client area, in screen pixels from the upper left.
platform::PixelRect clientOnScreen();
// Left edge on the screen, and distance of the client's bottom edge from the foot of the screen.
void clientOrigin(int& x, int& y);
// 1 screen width, 2 screen height, 3 and 4: 24 (colour bits), else 0.
int screenMetric(int which);

// --- events --------------------------------------------------------------------------------------

int postEvent(int32_t code, uint16_t value);
void clearEvents();
// Handles all waiting window messages without blocking.
void pumpEvents();
// Pumps, then the code at the head of the queue, 0 when it is empty.
int peekEvent();
// Waits for an event and removes it. After a quit message it never blocks: it returns EV_QUIT.
InputEvent waitEvent();
// Handles messages until the window is closed.
void runUntilQuit();

// Cursor on the screen (EV_MOUSEX from the left, EV_MOUSEY from the foot), or whether a key is
// down.
int deviceValue(int code);
// Where the cursor is now, as EV_MOUSEX and EV_MOUSEY would say it.
void cursorPlace(int& x, int& y);
// The same for several codes: EV_REDRAW and EV_TIMER give 0, the cursor codes give raw screen
// coordinates from the upper left.
void deviceValues(int count, const int* codes, int* values);

}  // namespace vistel
