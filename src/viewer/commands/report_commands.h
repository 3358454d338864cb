// What is told of the display on standard error.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

// The display's controls; while playing the smallest and largest values on display.
bool reportControls(Viewer& viewer, const Press& press, int);

}  // namespace vistel
