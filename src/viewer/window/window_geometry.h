// Sizes and places of the window and the screen, in pixels.
#pragma once

#include "platform/control_bar.h"
#include "platform/window.h"

namespace vistel {

// Rows of the client area that the control bar takes when it is shown.
constexpr int CONTROL_BAR_HEIGHT = platform::controlBarHeight;
int controlBarRows();

// Client area less the control bar.
void clientSize(int& width, int& height);
// The whole client area, in screen pixels from the upper left.
platform::PixelRect clientOnScreen();
// Left edge on the screen, and distance of the client's bottom edge from the foot of the screen.
// The interface is whole: this has no caller in the viewer.
void clientOrigin(int& x, int& y);
// 1 screen width, 2 screen height, 3 and 4: 24 (colour bits), else 0.
int screenMetric(int which);

}  // namespace vistel
