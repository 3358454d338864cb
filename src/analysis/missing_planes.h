// What to tell the user who asks for a plane that the frame has not got.
#pragma once

#include <cstdint>

#include "analysis/view_mode.h"

namespace vistel {

// What a frame has loaded, and the flags of its header.
struct LoadedPlanes {
    bool colour = false;
    bool depth = false;
    uint32_t headerFlags = 0;
};

// Null when the view's planes are there, else the id of the message to show instead.
const char* missingPlaneMessage(ChannelMode view, const LoadedPlanes& loaded);

}  // namespace vistel
