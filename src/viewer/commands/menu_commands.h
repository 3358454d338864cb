// The commands of the menu.
#pragma once

#include "viewer/commands/viewer.h"

namespace vistel {

// Runs the command with this id; ids without a command, and those whose item is grey, are ignored.
void runMenuCommand(Viewer& viewer, int id);

// Makes the window's menu tell the truth: an item is grey when its command has nothing to act on,
// and checked when its option is on. Cheap when nothing has changed, so it is called after each
// event.
void showMenuState(Viewer& viewer);

// The same for a window whose menu is new.
void prepareMenu(Viewer& viewer);

}  // namespace vistel
