// One pass of the viewer: margins, picture, label and status line of the current frame.
#pragma once

#include "viewer/picture/picture.h"

namespace vistel {

// Draws the pass without presenting it. Repeatable: it depends on the state only.
void drawPass(Picture& picture);

}  // namespace vistel
