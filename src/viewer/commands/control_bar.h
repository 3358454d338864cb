// The commands of the control bar, and what its controls show.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "viewer/commands/viewer.h"

namespace vistel {

// Whether the id is one of the bar's; those of the menu are others.
bool isBarCommand(int id);

// Runs the command of a button.
void runBarCommand(Viewer& viewer, int id);

// The user has changed the text of the rate field.
void typeRate(Viewer& viewer, const std::string& text);

// Makes the bar tell the truth: the state of playing, the rate, what can be shown. Cheap when
// nothing has changed, so it is called after each event.
void showBarState(Viewer& viewer);

// The same for a bar that is new, with its tool tips.
void prepareBar(Viewer& viewer);

}  // namespace vistel
