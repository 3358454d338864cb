// The commands of the display look-up table. Each returns whether the picture must be drawn again.
#pragma once

#include "analysis/lut_controls.h"
#include "viewer/key_table.h"

namespace vistel {

// The argument of adjustLut: a control, up or down.
constexpr int lutUp(LutControl control) { return static_cast<int>(control) + 1; }
constexpr int lutDown(LutControl control) { return -lutUp(control); }

bool adjustLut(const KeyPress& press, int controlAndDirection);
bool resetLut(const KeyPress& press, int);
bool convertFilm(const KeyPress& press, int);
bool negate(const KeyPress& press, int);

}  // namespace vistel
