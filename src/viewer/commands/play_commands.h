// The commands of stepping and playing. Each returns whether the picture must be drawn again.
#pragma once

#include "viewer/commands/command.h"

namespace vistel {

bool togglePause(Viewer& viewer, const Press& press, int);
bool stepByKey(Viewer& viewer, const Press& press, int direction);
bool setStep(Viewer& viewer, const Press& press, int frames);  // 0: the digit pressed
bool togglePingPong(Viewer& viewer, const Press& press, int);
bool toggleFrameSkip(Viewer& viewer, const Press& press, int);
bool reloadFrame(Viewer& viewer, const Press& press, int);
bool changeRate(Viewer& viewer, const Press& press, int direction);
bool playOrSetBound(Viewer& viewer, const Press& press, int direction);

}  // namespace vistel
