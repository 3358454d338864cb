// One pass of the viewer: margins, picture, label and status line of the current frame.
#pragma once

namespace vistel {

// Draws the pass without presenting it. Repeatable: it depends on the state only.
void drawPass();

}  // namespace vistel
