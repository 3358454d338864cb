// Painting into the frame with the right button. What is painted stays in the frame until it is
// read again.
#pragma once

#include "viewer/key_table.h"

namespace vistel {

bool beginPainting(const KeyPress& press, int);
bool endPainting(const KeyPress& press, int);

// Paints up to the pixel under the cursor (session.cursorX, cursorY). True when pixels changed.
bool paint(const KeyPress& press);

}  // namespace vistel
