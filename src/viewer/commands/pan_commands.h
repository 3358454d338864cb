// Moving and zooming the picture, by keypad and mouse, and scrubbing through the animation. Each
// command returns whether the picture must be drawn again.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

// Keypad 1 to 4, 6 to 9: the picture moves in the key's direction. Keypad 5 with Ctrl: the view as
// at the start.
bool movePicture(Viewer& viewer, const Press& press, int);
bool zoomPicture(Viewer& viewer, const Press& press, int direction);  // one step in (1) or out (-1)

// The left button: an animation is scrubbed, a single image (or with a modifier) dragged.
bool beginDrag(Viewer& viewer, const Press& press, int);
bool endDrag(Viewer& viewer, const Press& press, int);

// The cursor has moved.
bool dragPicture(Viewer& viewer, const Press& press);
bool scrub(Viewer& viewer);

}  // namespace vistel
