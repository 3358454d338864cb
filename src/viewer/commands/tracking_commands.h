// Points that are picked in the picture: tracking and luminance curves. What other programs read
// goes to standard output, what the user is told to standard error.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

bool toggleTracking(Viewer& viewer, const Press& press, int);
bool toggleLuminanceCurve(Viewer& viewer, const Press& press, int);

// The point under the cursor: its luminance curve, or else where it is; while tracking it becomes
// the point of the shown frame.
bool pickPoint(Viewer& viewer, const Press& press, int);

bool writeTracking(Viewer& viewer, const Press& press, int);

}  // namespace vistel
