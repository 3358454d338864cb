// The keys of the viewer: one row per key, in the order in which the manual lists them.
#pragma once

#include <cstdint>
#include <span>

#include "platform/input_event.h"
#include "viewer/viewer_session.h"

namespace vistel {

// A key or button event on its way to its command.
struct KeyPress {
    int32_t code = 0;
    uint16_t value = 1;      // 1 down, 0 up; of a mouse move the coordinate
    bool synthetic = false;  // made by playback
    Modifiers modifiers;
};

enum class Edge { press, release };
enum class When { always, animation };

// Does the key's action. True when the picture must be drawn again.
using KeyCommand = bool (*)(const KeyPress& press, int argument);

struct KeyBinding {
    int32_t code;  // first code of a run of `count` codes that share the row
    int count;
    const char* keys;  // as the manual names them
    Edge edge;
    When when;
    KeyCommand command;
    int argument;
    const char* help;
};

std::span<const KeyBinding> keyBindings();

// The row of a pressed or released key; null when nothing is bound.
const KeyBinding* findBinding(const KeyPress& press);

// Runs the command bound to a pressed or released key. Whether the picture must be drawn again:
// false when nothing is bound, nothing changed, or the key is one for animations and there is none.
bool runKey(const KeyPress& press);

}  // namespace vistel
