// What is shown of a frame: the picture itself, one of its planes, its depth, luminance or relief,
// through the display look-up table. A view is built when it is drawn, into buffers that are kept
// from frame to frame.
#pragma once

#include <cstdint>

#include "viewer/picture/picture.h"

namespace vistel {

// A new frame is on screen (picture.shown): shows its plain view - all channels; the depth when it
// has no colour plane, the mask when that is all it has - or, where the frame has it, the view that
// was chosen last.
void showNewFrame(ShownPicture& picture);

// Whether the frame on screen has what a channel mode, matte to luminance, shows.
bool hasView(const ShownPicture& picture, ChannelMode mode);

// Chooses a channel mode, matte to luminance, for this frame and those that follow. False, with a
// message band, when this frame has not got it; nothing changes then.
bool chooseView(ShownPicture& picture, ChannelMode mode);

// Chooses the relief of the view on screen (of the view behind it when that is a relief already),
// as deep as its settings say, or turned inside out.
void chooseReliefView(ShownPicture& picture, bool inverted);

// The settings of the relief have changed. False when none is on screen.
bool reliefChanged(ShownPicture& picture);

// The view must be built again: pixels, look-up table or settings have changed.
void viewChanged(ShownPicture& picture);

// The pixels to draw for the frame on screen, layout.width wide. Valid until the next viewChanged.
const uint32_t* displayedPixels(ShownPicture& picture);

// Points of the profile lines over a relief; null when none are to be drawn.
const uint32_t* reliefHeights(const ShownPicture& picture);

}  // namespace vistel
