// The texts over the picture: the status line of an animation and the label of the shown channel.
#pragma once

#include <string_view>

#include "viewer/picture/picture.h"

namespace vistel {

// Position of frame n at r frames per second. `minutes` is deliberately the number of frames in the
// whole minutes, not a count of minutes.
struct TimeFields {
    int minutes = 0, seconds = 0, frames = 0;
};
TimeFields timeFields(int frame, int frameRate);

// "00:00:05 - 6 F Mem 24.00FPS". Made anew for every frame, in a buffer that lasts until the next
// call.
std::string_view statusLine(const StatusFields& status);

// Name of the shown channel; empty for the plain picture. Lasts until the next call.
std::string_view channelLabel(const ShownPicture& picture);

}  // namespace vistel
