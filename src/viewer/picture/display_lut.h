// The display look-up table of the viewer: its start values, and what follows from a change.
#pragma once

#include "viewer/picture/picture.h"

namespace vistel {

// The controls as the options chose them: gamma (-g) and film conversion (-K), all else neutral.
// Once, when the options are known.
void startDisplayLut(ShownPicture& picture);
// The same again, whatever the keys have changed since.
void resetDisplayLut(ShownPicture& picture);

// After picture.lut.controls were changed: builds the tables, sets lutActive and cineonLog, and has
// the view built again.
void displayLutChanged(ShownPicture& picture);

}  // namespace vistel
