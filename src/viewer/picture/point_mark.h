// The mark at a point that was picked.
#pragma once

#include "viewer/picture/image_point.h"

namespace vistel {

// A cross that leaves the point itself free and reads on any colour.
void drawPointMark(const PictureLayout& layout, const ImagePoint& point);

// While tracking is on: the mark of the current frame, when it has a pick.
void drawTrackingMark(ShownPicture& picture);

}  // namespace vistel
