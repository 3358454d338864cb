// The commands that choose what is shown of a frame. Each returns whether the picture must be drawn
// again.
#pragma once

#include "viewer/key_table.h"

namespace vistel {

bool chooseChannel(const KeyPress& press, int mode);  // a ChannelMode, matte to luminance
bool chooseLuminanceOrLines(const KeyPress& press, int);
bool chooseRelief(const KeyPress& press, int inverted);
bool changeReliefDepth(const KeyPress& press, int direction);
bool changeReliefAmount(const KeyPress& press, int direction);
bool chooseControlChannel(const KeyPress& press, int channel);  // 0 none, 1 blue, 2 green, 3 red

}  // namespace vistel
