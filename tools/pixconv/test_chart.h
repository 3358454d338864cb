// The picture that the converter writes when it is given nothing to convert.
#pragma once

#include "picture.h"

namespace vistel {

// 640 x 480 with mask, on which the eye sees what a display or a conversion does:
//   colour bars at 75 % and, below, at 100 %
//   a smooth ramp of each primary and of grey, and a grey stair of 16 steps
//   lines 1, 2, 3, 4 pixels wide, upright and level, and a chequer of single pixels
//   a circle over a grid of squares of 40 pixels: shape and placement
//   white corner marks, the top left one red: edges, and which way is up
// The mask is opaque but for a soft disc in the middle of the circle and the frame's border.
[[nodiscard]] Failure makeTestChart(Picture& picture);

}  // namespace vistel
