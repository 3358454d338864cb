// The one display look-up table of the viewer: its start values, and what follows from a change.
#pragma once

#include "analysis/colour_lut.h"

namespace vistel {

// Change its controls, then call displayLutChanged.
ColourLut& displayLut();

// The controls as the options chose them: gamma (-g) and film conversion (-K), all else neutral.
// Once, when the options are known.
void startDisplayLut();
// The same again, whatever the keys have changed since.
void resetDisplayLut();

// Builds the tables, tells the viewer's state (lutActive, cineonLog) and has the view built again.
void displayLutChanged();

}  // namespace vistel
