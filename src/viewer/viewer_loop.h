// The viewer's loop: draws the current frame, presents it, takes one event, acts on it.
#pragma once

#include "viewer/commands/viewer.h"

namespace vistel {

// Runs until the window is closed or another file was chosen (frames are then freed), or the time
// limit is over (nothing is freed). The first frame must be on display.
void runViewerLoop(Viewer& viewer);

}  // namespace vistel
