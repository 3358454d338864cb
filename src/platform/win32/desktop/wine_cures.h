// What Wine's OpenGL windows need and Windows does not: a window with a child over its OpenGL
// picture (the control bar) shows the child only when it is drawn off the screen, and that goes
// wrong in three places. On Windows none of these routines does anything.
#pragma once

#include "platform/win32/windows_api.h"

namespace vistel::platform::wine {

// Before the pixel format is set: a hidden child makes the window one with children from the start.
void windowCreated(HWND window);

// After every change of size: the drawing area keeps its old size until a child comes and goes.
void windowSized(HWND window);

// After every swap: with a visible child the screen shows the picture one swap late.
void buffersSwapped(HWND window, HDC device);

}  // namespace vistel::platform::wine
