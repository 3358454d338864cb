// What to tell the user who asks for a plane that the frame has not got.
#pragma once

#include <cstdint>

#include "host/messages.h"

namespace vistel {

enum class PlaneRequest { colour, mask, depth };

// What a frame has loaded, and the flags of its header.
struct LoadedPlanes {
    bool colour = false;
    bool depth = false;
    uint32_t headerFlags = 0;
};

// None when the plane can be shown, else the message to show instead.
Message missingPlaneMessage(PlaneRequest request, const LoadedPlanes& loaded);

}  // namespace vistel
