#include "platform/menu.h"

#include "platform/win32/desktop/native_window.h"

namespace vistel::platform {

namespace {

constexpr int importSound = 40023, toggleSound = 40024;

void applyCheck(HMENU menu, int command, bool checked) {
    CheckMenuItem(menu, static_cast<UINT>(command),
                  MF_BYCOMMAND | (checked ? MF_CHECKED : MF_UNCHECKED));
}

void applyEnabled(HMENU menu, int command, bool enabled) {
    EnableMenuItem(menu, static_cast<UINT>(command),
                   MF_BYCOMMAND | (enabled ? MF_ENABLED : MF_GRAYED));
}

}  // namespace

// The sound items are grey until somebody enables them.
void applyMenuStates() {
    const NativeWindow& native = nativeWindow();
    if (!native.menu) return;
    for (const int command : {importSound, toggleSound}) applyEnabled(native.menu, command, false);
    for (const auto& [command, checked] : native.menuChecks) {
        applyCheck(native.menu, command, checked);
    }
    for (const auto& [command, enabled] : native.menuStates) {
        applyEnabled(native.menu, command, enabled);
    }
}

void checkMenuItem(int command, bool checked) {
    NativeWindow& native = nativeWindow();
    native.menuChecks[command] = checked;
    if (native.menu) applyCheck(native.menu, command, checked);
}

void enableMenuItem(int command, bool enabled) {
    NativeWindow& native = nativeWindow();
    native.menuStates[command] = enabled;
    if (native.menu) applyEnabled(native.menu, command, enabled);
}

}  // namespace vistel::platform
