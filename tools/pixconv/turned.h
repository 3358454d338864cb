// Pictures that are stored lying or mirrored.
#pragma once

#include "picture.h"

namespace vistel {

// Makes a picture of stored rows and columns upright. The orientation, 1 to 8, tells where the
// first stored row and column belong: 1 top left, 2 top right, 3 bottom right, 4 bottom left, and
// with rows and columns exchanged 5 left top, 6 right top, 7 right bottom, 8 left bottom. Any other
// value is taken as 1. For pictures without depth.
[[nodiscard]] Failure turnUpright(Picture& picture, int orientation);

}  // namespace vistel
