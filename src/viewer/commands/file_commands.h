// The commands that ask for a file: opening, saving, the sound; and what the program tells of
// itself. A file that is opened is tried first: when there is no picture in it, a box says why, and
// what was on screen stays.
#pragma once

#include <string>
#include <vector>

#include "viewer/commands/command.h"

namespace vistel {

// Asks for an image, or for the first frame of an animation, which then is opened in place of what
// is shown.
bool openFile(Viewer& viewer, const Press& press, int animation);

// Opens what was dropped on the window: a file as an image; of several files, and of a folder, the
// animation that begins with the lowest number, or the first image where there is none.
void openDropped(Viewer& viewer, const std::vector<std::string>& names);

// Asks where to save the image, or each frame of the animation, and lets the key W do it.
bool saveFile(Viewer& viewer, const Press& press, int animation);

// Asks for a sound and the frame at which it starts.
bool importSound(Viewer& viewer, const Press& press, int);

bool showAbout(Viewer& viewer, const Press& press, int);

}  // namespace vistel
