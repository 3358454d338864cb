// The commands of stepping and playing. Each returns whether the picture must be drawn again.
#pragma once

#include "viewer/key_table.h"

namespace vistel {

bool togglePause(const KeyPress& press, int);
bool stepByKey(const KeyPress& press, int direction);
bool setStep(const KeyPress& press, int frames);  // 0: the digit pressed
bool togglePingPong(const KeyPress& press, int);
bool toggleFrameSkip(const KeyPress& press, int);
bool reloadFrame(const KeyPress& press, int);
bool changeRate(const KeyPress& press, int direction);
bool playOrSetBound(const KeyPress& press, int direction);

}  // namespace vistel
