// Strokes that are painted into a frame.
#pragma once

#include "iff/frame_store.h"

namespace vistel {

// Paints a stroke into the frame's planes: the pixels of a line, its ends included. In a frame that
// is `scale` times as large as the one the stroke was made for, each of its pixels is a block of
// scale x scale.
void paintStroke(const Stroke& stroke, FrameStore& frame, int scale);

}  // namespace vistel
