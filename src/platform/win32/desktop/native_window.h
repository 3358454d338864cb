// What the files of this folder share about the calling thread's window.
#pragma once

#include <map>

#include "platform/key_translation.h"
#include "platform/win32/windows_api.h"
#include "platform/window.h"

namespace vistel::platform {

struct NativeWindow {
    HWND handle = nullptr;
    HDC device = nullptr;      // the window's own, kept as long as the window
    HGLRC context = nullptr;   // rendering context, see surface.cpp
    HMENU menu = nullptr;      // owned here: a window without border is without it for a while
    HCURSOR cursor = nullptr;  // shown over the client area, null = the class's arrow
    bool creating = false;     // the window is being created or opened again
    WindowSink sink{};
    KeyTranslator keys;
    // Menu states by command, also those set before there is a menu.
    std::map<int, bool> menuChecks, menuStates;
};

// One per thread; its handles are null while the thread has no window.
NativeWindow& nativeWindow();

// Resource numbers, as in resources/vistel.rc.
enum : WORD { iconResource = 1, menuResource = 101, fileHelpDialogResource = 103 };

// The window class of the viewer, registered at the first call; its name, or null when the system
// refuses it. Its menu is resource 101.
const wchar_t* viewerWindowClass();

// The program's own module: the class, the menu and the dialogs come from it.
HMODULE resourceModule();

// Carries the remembered states over to the window's menu.
void applyMenuStates();

// The help on opening and saving, over the file dialog whose help button was pressed.
void showFileDialogHelp();

}  // namespace vistel::platform
