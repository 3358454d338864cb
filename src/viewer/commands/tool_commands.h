// The remaining keys: how the window draws, the console's switches, the outlines of the tiles, and
// the tools that other parts of the program bring.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

// Tools that are built on the viewer. A null one has not been installed: its key does nothing. Each
// returns whether the picture must be drawn again.
struct ViewerTools {
    bool (*startSound)(Viewer&) = nullptr;      // loads viewer.audioFile and plays it
    bool (*toggleSound)(Viewer&) = nullptr;     // off and on again, from the range's start
    bool (*pickPoint)(Viewer&) = nullptr;       // a point of the picture, for tracking
    bool (*toggleTracking)(Viewer&) = nullptr;
    bool (*writeTracking)(Viewer&) = nullptr;
    bool (*reportControls)(Viewer&) = nullptr;  // the display's controls, or its range of values
};
inline ViewerTools viewerTools;

bool writePicture(Viewer& viewer, const Press& press, int);
bool pickPoint(Viewer& viewer, const Press& press, int);
bool toggleTracking(Viewer& viewer, const Press& press, int);
bool writeTracking(Viewer& viewer, const Press& press, int);
bool reportControls(Viewer& viewer, const Press& press, int);

bool setDithering(Viewer& viewer, const Press& press, int on);
bool toggleDoubleBuffer(Viewer& viewer, const Press& press, int);
bool toggleLuminanceCurve(Viewer& viewer, const Press& press, int);
bool toggleOverwrite(Viewer& viewer, const Press& press, int);

// F12 pressed: white outlines of the frame's tiles, until it is released.
bool outlineTiles(Viewer& viewer, const Press& press, int);
bool removeOverlay(Viewer& viewer, const Press& press, int);

bool leaveFullScreen(Viewer& viewer, const Press& press, int);

}  // namespace vistel
