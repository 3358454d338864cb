// The remaining keys: how the window draws, saving, and the outlines of the tiles.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

bool writePicture(Viewer& viewer, const Press& press, int);

bool setDithering(Viewer& viewer, const Press& press, int on);
bool toggleDoubleBuffer(Viewer& viewer, const Press& press, int);
bool toggleOverwrite(Viewer& viewer, const Press& press, int);

// F12 pressed: white outlines of the frame's tiles, until it is released.
bool outlineTiles(Viewer& viewer, const Press& press, int);
bool removeOverlay(Viewer& viewer, const Press& press, int);

bool leaveFullScreen(Viewer& viewer, const Press& press, int);

}  // namespace vistel
