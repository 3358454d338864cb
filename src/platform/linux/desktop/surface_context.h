// The rendering context as the window's code sees it.
#pragma once

namespace vistel::platform {

// Makes the context current on the window; nothing when there is none.
void makeSurfaceCurrent();

}  // namespace vistel::platform
