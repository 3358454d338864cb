// What is written into the picture itself.
#pragma once

#include "scene.h"

namespace vistel::demo {

// The number in white digits on a dark plate, lower left.
void burnInNumber(Picture& picture, int number);

// A white square in the upper right corner.
void burnInFlash(Picture& picture);

}  // namespace vistel::demo
