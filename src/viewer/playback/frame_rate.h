// The frame rate in force.
#pragma once

#include <string>

#include "host/modifiers.h"
#include "viewer/playback/player.h"

namespace vistel {

// Clamps to 1..300, stores player.frameRate and resets the clock.
void setFrameRate(Player& player, int framesPerSecond);

// Rate after a press of a rate key: direction +1 or -1; by 1, Shift 2, Alt 5, both 10; Control
// gives the start-up rate.
int rateAfterKey(const Playing& state, int direction, const Modifiers& held);

// For the rate field of the control bar: a rate typed by the user. Blanks, tabs and line ends are
// dropped, the rest is read as a number and clamped. The rate is set only when it differs.
void setTypedFrameRate(Player& player, const std::string& text);

}  // namespace vistel
