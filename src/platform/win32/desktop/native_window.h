// What the files of this folder share about a window.
#pragma once

#include <bitset>
#include <map>

#include "platform/gl/gl_state.h"
#include "platform/key_translation.h"
#include "platform/win32/desktop/bar_state.h"
#include "platform/win32/windows_api.h"
#include "platform/window.h"

namespace vistel::platform {

struct Window {
    HWND handle = nullptr;     // null when the window was closed
    HDC device = nullptr;      // the window's own, kept as long as the window
    HGLRC context = nullptr;   // rendering context, see surface.cpp
    HMENU menu = nullptr;      // owned here: a window without border is without it for a while
    bool withMenu = true;      // where it has a border
    HCURSOR cursor = nullptr;  // shown over the client area, null = the class's arrow
    bool creating = false;     // the system is creating the window
    WindowSink sink{};
    KeyTranslator keys;
    std::bitset<6> modifiersPosted;  // as held, keyLeftShift and the codes behind it
    std::map<WPARAM, int>
        typed;  // codes of the pressed keys that type a character with Shift or AltGr
    ControlBar bar;
    DrawingState drawing;
};

// The system's handle of a window; null when there is none.
inline HWND handleOf(const Window* window) { return window ? window->handle : nullptr; }

// The windows of this thread have become one more, or one less: the last one to go ends the
// thread's message loops, those of menus and boxes included.
void windowCame();
void windowWent();

// Resource numbers, as in resources/vistel.rc.
enum : WORD {
    iconResource = 1,
    menuResource = 101,
    aboutDialogResource = 102,
    fileHelpDialogResource = 103,
    controlBarDialogResource = 108
};

// The window has a new width.
void fitControlBar(Window& window);

// The window class of the viewer, registered at the first call; its name, or null when the system
// refuses it. Its menu is resource 101; a window of it is created with its Window as parameter.
const wchar_t* viewerWindowClass();

// The program's own module: the class, the menu and the dialogs come from it.
HMODULE resourceModule();

// The help on opening and saving, over the file dialog whose help button was pressed.
void showFileDialogHelp();

}  // namespace vistel::platform
