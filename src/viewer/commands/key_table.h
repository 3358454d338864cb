// The keys of the viewer: one row per key, in the order in which the manual lists them.
#pragma once

#include <cstdint>
#include <span>

#include "viewer/commands/command.h"

namespace vistel {

enum class Edge { press, release };
enum class When { always, animation };

struct KeyBinding {
    int32_t code;  // first code of a run of `count` codes that share the row
    int count;
    const char* keys;  // as the manual names them
    Edge edge;
    When when;
    Command command;
    int argument;
    const char* help;
};

// All rows: the page of keys is made from them.
std::span<const KeyBinding> keyBindings();

// The row of a pressed or released key; null when nothing is bound.
const KeyBinding* findBinding(const Press& press);

// Runs the command bound to a pressed or released key. Whether the picture must be drawn again:
// false when nothing is bound, nothing changed, or the key is one for animations and there is none.
bool runKey(Viewer& viewer, const Press& press);

}  // namespace vistel
