// The window's title.
#pragma once

#include <string>

#include "viewer/picture/picture.h"

namespace vistel {

// "VisTel: NAME", for the source that is open, and what there is to tell of it: how much it is
// shrunk and zoomed, the view and the correction of a single image, which frames of an animation
// tracking still lacks, its place among the files.
std::string windowTitle(const ShownPicture& picture);
// Gives the window its title; the second does so only when there is something else to tell since.
void showTitle(ShownPicture& picture);
void refreshTitle(ShownPicture& picture);
// The source's name as the user knows it.
std::string shownSourceName(const CurrentSource& source);

}  // namespace vistel
