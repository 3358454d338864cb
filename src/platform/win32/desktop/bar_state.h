// The control bar as a dialog of the viewer window.
#pragma once

#include <map>
#include <string>

#include "platform/bar_picture.h"
#include "platform/win32/windows_api.h"

namespace vistel::platform {

struct ControlBar {
    HWND dialog = nullptr;  // null while the bar is closed
    HWND tips = nullptr;
    HWND hovered = nullptr;  // the button under the pointer
    std::map<int, BarButtonLook> looks;
    std::map<int, std::wstring> tipTexts;
    bool rewriting = false;  // the field's text is being set by the program
};

}  // namespace vistel::platform
