// What a key, a menu item and a button of the bar do.
#pragma once

#include <cstdint>

#include "host/modifiers.h"
#include "platform/input_event.h"
#include "viewer/commands/viewer.h"

namespace vistel {

// A key or button event on its way to its command.
struct Press {
    int32_t code = 0;
    uint16_t value = 1;      // 1 down, 0 up; of a mouse move the coordinate
    bool synthetic = false;  // made by playback
    Modifiers modifiers;
};

// Acts. True when the picture must be drawn again. The argument is the one of the command's row in
// its table.
using Command = bool (*)(Viewer& viewer, const Press& press, int argument);

// Reads the frame from its file again.
constexpr int32_t keyReload = 'U';

}  // namespace vistel
