// The commands of the menu: what each does, which of them wait for a subsystem.
#pragma once

namespace vistel {

// Runs the command with this id; ids outside 40001..40028 are ignored.
void runMenuCommand(int id);

// Greys the items that no command serves and checks those whose option is on. After the window was
// opened.
void prepareMenu();

}  // namespace vistel
