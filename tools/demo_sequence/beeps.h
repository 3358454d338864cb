// The sound of the demo animation.
#pragma once

#include <string>

namespace vistel::demo {

// Writes a WAVE file as long as so many frames, silent but for a beep with each frame that flashes,
// as long as that frame. False, and errno, when it cannot be written.
bool writeBeeps(const std::string& name, int frames);

}  // namespace vistel::demo
