// What to tell the user who asks for a plane that the frame has not got.
#pragma once

#include <cstdint>

#include "analysis/view_mode.h"
#include "host/messages.h"

namespace vistel {

// What a frame has loaded, and the flags of its header.
struct LoadedPlanes {
    bool colour = false;
    bool depth = false;
    uint32_t headerFlags = 0;
};

// None when the view's planes are there, else the message to show instead.
Message missingPlaneMessage(ChannelMode view, const LoadedPlanes& loaded);

}  // namespace vistel
