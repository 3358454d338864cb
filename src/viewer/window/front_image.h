// The kept picture: a copy of what is on screen, so that bands and menus can cover it and be taken
// away again.
#pragma once

#include <functional>
#include <string>

namespace vistel {

// Keeps the picture that is on screen (the pass is drawn once more into it). Only when none is kept
// already.
void saveFrontImage();
// Shows the kept picture again.
void restoreFrontImage();
// Shows what `draw` draws over the kept picture, until it is restored.
void showOverlay(const std::function<void()>& draw);
// Shows a black band of 20 rows with white text at the foot of the kept picture: as wide as the
// window, or so many columns from `left` on; more on both sides where the text needs more and the
// window has them.
void showMessageBand(const std::string& text);
void showMessageBand(const std::string& text, int left, int columns);

// Presents what was drawn; the kept picture is then out of date.
void swapDrawing();

}  // namespace vistel
