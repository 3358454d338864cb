// What the headless window tells the headless surface.
#pragma once

namespace vistel::platform {

void memorySurfaceReset();
void memorySurfaceResize(int width, int height);

}  // namespace vistel::platform
