// Painting into the frame with the right button. What is painted stays in the frame until it is
// read again.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

bool beginPainting(Viewer& viewer, const Press& press, int);
bool endPainting(Viewer& viewer, const Press& press, int);

// Paints up to the pixel under the cursor. True when pixels changed.
bool paint(Viewer& viewer, const Press& press);

}  // namespace vistel
