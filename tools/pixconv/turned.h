// Pictures that are stored lying or mirrored.
#pragma once

#include "picture.h"

namespace vistel {

// Makes a picture of stored rows and columns upright. The orientation, 1 to 8, tells where the
// first stored row and column belong: 1 top left, 2 top right, 3 bottom right, 4 bottom left, and
// with rows and columns exchanged 5 left top, 6 right top, 7 right bottom, 8 left bottom. Any other
// value is taken as 1. For pictures without depth.
[[nodiscard]] Failure turnUpright(Picture& picture, int orientation);

// The last step of a reading, also of one that failed after a part of the picture had come: the
// rows are completed (samples.h) and turned upright. The reading's own failure is passed on.
[[nodiscard]] Failure completed(Picture& picture, Failure failure, int orientation = 1);

}  // namespace vistel
