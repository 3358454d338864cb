// The remaining keys: how the window draws, the console's switches, the outlines of the tiles, and
// the tools that other parts of the program bring.
#pragma once

#include "viewer/key_table.h"

namespace vistel {

// Tools that are built on the viewer. A null one has not been installed: its key does nothing. Each
// returns whether the picture must be drawn again.
struct ViewerTools {
    bool (*writeFrame)() = nullptr;      // saves the frame on screen
    bool (*writeAnimation)() = nullptr;  // plays the range once, saving each frame
    bool (*pickPoint)() = nullptr;       // a point of the picture, for tracking
    bool (*toggleTracking)() = nullptr;
    bool (*writeTracking)() = nullptr;
    bool (*reportControls)() = nullptr;  // the display's controls, or its range of values
};
inline ViewerTools viewerTools;

bool writePicture(const KeyPress& press, int);
bool pickPoint(const KeyPress& press, int);
bool toggleTracking(const KeyPress& press, int);
bool writeTracking(const KeyPress& press, int);
bool reportControls(const KeyPress& press, int);

bool setDithering(const KeyPress& press, int on);
bool toggleDoubleBuffer(const KeyPress& press, int);
bool toggleLuminanceCurve(const KeyPress& press, int);
bool toggleOverwrite(const KeyPress& press, int);

// F12 pressed: white outlines of the frame's tiles, until it is released.
bool outlineTiles(const KeyPress& press, int);
bool removeOverlay(const KeyPress& press, int);

bool leaveFullScreen(const KeyPress& press, int);

}  // namespace vistel
