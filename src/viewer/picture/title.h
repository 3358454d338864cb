// The window's title.
#pragma once

#include <string>

#include "viewer/picture/picture.h"

namespace vistel {

// "VisTel: NAME", for the source that is open.
std::string windowTitle(const Picture& picture);
// The source's name as the user knows it.
std::string shownSourceName(const CurrentSource& source);

}  // namespace vistel
