// The window's events: posting, pumping, waiting, and the state of keys and cursor.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/input_event.h"

namespace vistel {

int postEvent(int32_t code, uint16_t value);
void clearEvents();
// Handles all waiting window messages without blocking.
void pumpEvents();
// Pumps, then the code at the head of the queue, 0 when it is empty.
int peekEvent();
// Waits for an event and removes it. After a quit message it never blocks: it returns EV_QUIT.
InputEvent waitEvent();
// Handles messages until the window is closed; `redraw` presents what it shows.
void runUntilQuit(const std::function<void()>& redraw);

// Cursor on the screen (EV_MOUSEX from the left, EV_MOUSEY from the foot), or whether a key is
// down.
int deviceValue(int code);
// Where the cursor is now, as EV_MOUSEX and EV_MOUSEY would say it.
void cursorPlace(int& x, int& y);
// deviceValue for several codes: EV_REDRAW and EV_TIMER give 0, the cursor codes give raw screen
// coordinates from the upper left. The interface is whole: this has no caller in the viewer.
void deviceValues(int count, const int* codes, int* values);

}  // namespace vistel
