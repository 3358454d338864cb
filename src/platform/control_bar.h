// The control bar of a window: one row of buttons and the field of the frame rate, at the upper
// edge of the client area, over its whole width. What it consists of is described once, in
// resources/control_bar_table.inc.
//
// A button that is clicked sends its id as a command, without the calls round it that a menu's has;
// the field sends its text whenever the user has changed it. The keyboard is the picture's again
// after each click, and after Return, Escape or Tab in the field; in the field, Up and Down and the
// wheel step.
//
// Each system implements all of this (win32, linux, headless). Without a window, or while its bar
// is closed, nothing happens.
#pragma once

#include <string>

#include "platform/bar_picture.h"

namespace vistel::platform {

struct Window;

// Rows of the client area, in pixels at usual density.
constexpr int controlBarHeight = 29;

void openControlBar(Window* window);
void closeControlBar(Window* window);

// What appears while the pointer rests on a control.
void setBarTip(Window* window, int control, const std::string& text);
void showBarButton(Window* window, int button, const BarButtonLook& look);
// The text of the field, also over what is being typed.
void showBarRate(Window* window, const std::string& text);

}  // namespace vistel::platform
