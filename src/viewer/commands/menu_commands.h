// The commands of the menu.
#pragma once

#include "viewer/commands/viewer.h"

namespace vistel {

// Runs the command with this id; ids without a command are ignored.
void runMenuCommand(Viewer& viewer, int id);

// Greys the items that no command serves or that need a sound, and checks those whose option is on.
// After the window was opened.
void prepareMenu(const Viewer& viewer);

}  // namespace vistel
