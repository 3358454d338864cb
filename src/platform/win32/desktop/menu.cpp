#include "platform/menu.h"

#include "platform/win32/desktop/native_window.h"

namespace vistel::platform {

namespace {

HMENU menuOf(Window* window) { return window ? window->menu : nullptr; }

}  // namespace

void checkMenuItem(Window* window, int command, bool checked) {
    CheckMenuItem(menuOf(window), static_cast<UINT>(command),
                  MF_BYCOMMAND | (checked ? MF_CHECKED : MF_UNCHECKED));
}

void enableMenuItem(Window* window, int command, bool enabled) {
    EnableMenuItem(menuOf(window), static_cast<UINT>(command),
                   MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
}

}  // namespace vistel::platform
