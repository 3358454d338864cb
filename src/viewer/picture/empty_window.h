// What the window shows while nothing is open.
#pragma once

namespace vistel {

// Draws how a picture gets into the window, without presenting it. Without a window, nothing.
void drawEmptyWindow();

}  // namespace vistel
