// One pass of the viewer: margins, picture, label and status line of the current frame.
#pragma once

#include <cstdint>

#include "viewer/picture/picture.h"

namespace vistel {

constexpr uint32_t bandColour =
    0xFF202020;  // packed; dark grey, round the picture and behind texts

// Draws the pass without presenting it. Repeatable: it depends on the state only.
void drawPass(ShownPicture& picture);

}  // namespace vistel
