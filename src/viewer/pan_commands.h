// Moving and zooming the picture, by keypad and mouse, and scrubbing through the animation. Each
// command returns whether the picture must be drawn again.
#pragma once

#include "viewer/key_table.h"

namespace vistel {

// Keypad 1 to 4, 6 to 9: the picture moves in the key's direction. Keypad 5 with Ctrl: the view as
// at the start.
bool movePicture(const KeyPress& press, int);
bool zoomPicture(const KeyPress& press, int direction);  // one step in (1) or out (-1)

// The left button: an animation is scrubbed, a single image (or with a modifier) dragged.
bool beginDrag(const KeyPress& press, int);
bool endDrag(const KeyPress& press, int);

// The cursor is at session.cursorX, cursorY now.
bool dragPicture(const KeyPress& press);
bool scrub();

// The start-up zoom and no pan.
void resetView();

}  // namespace vistel
