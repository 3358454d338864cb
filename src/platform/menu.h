// Menu state. The menu itself is described once, in resources/menu_table.inc, from which each system
// builds its own.
#pragma once

namespace vistel::platform {

void checkMenuItem(int command, bool checked);
void enableMenuItem(int command, bool enabled);

}  // namespace vistel::platform
