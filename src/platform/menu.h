// The state of a window's menu: what is set lasts as long as the window, also while it has no
// border and shows no menu. A new window's items are unmarked and, but for those of the sound,
// enabled.
//
// The menu itself is described once, in resources/menu_table.inc, from which each system builds its
// own. Each system implements both functions (win32, linux, headless). A window that is not there
// has no menu: nothing happens.
#pragma once

namespace vistel::platform {

struct Window;

void checkMenuItem(Window* window, int command, bool checked);
void enableMenuItem(Window* window, int command, bool enabled);

}  // namespace vistel::platform
