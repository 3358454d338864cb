// The commands that choose what is shown of a frame. Each returns whether the picture must be drawn
// again.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

bool chooseChannel(Viewer& viewer, const Press& press,
                   int mode);  // a ChannelMode, matte to luminance
bool chooseLuminanceOrLines(Viewer& viewer, const Press& press, int);
bool chooseRelief(Viewer& viewer, const Press& press, int inverted);
bool changeReliefDepth(Viewer& viewer, const Press& press, int direction);
bool changeReliefAmount(Viewer& viewer, const Press& press, int direction);
bool chooseControlChannel(Viewer& viewer, const Press& press,
                          int channel);  // 0 none, 1 blue, 2 green, 3 red

}  // namespace vistel
