// The commands of the display look-up table. Each returns whether the picture must be drawn again.
#pragma once

#include "analysis/lut_controls.h"
#include "viewer/commands/command.h"

namespace vistel {

// The argument of adjustLut: a control, up or down.
constexpr int lutUp(LutControl control) { return static_cast<int>(control) + 1; }
constexpr int lutDown(LutControl control) { return -lutUp(control); }

bool adjustLut(Viewer& viewer, const Press& press, int controlAndDirection);
bool resetLut(Viewer& viewer, const Press& press, int);
bool convertFilm(Viewer& viewer, const Press& press, int);
bool negate(Viewer& viewer, const Press& press, int);

}  // namespace vistel
