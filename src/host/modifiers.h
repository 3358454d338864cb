// The modifier keys that are held.
#pragma once

#include "platform/input_event.h"

namespace vistel {

struct Modifiers {
    bool leftShift = false, rightShift = false;
    bool leftControl = false, rightControl = false;
    bool leftAlt = false, rightAlt = false;

    bool shift() const { return leftShift || rightShift; }
    bool control() const { return leftControl || rightControl; }
    bool alt() const { return leftAlt || rightAlt; }
    bool any() const { return shift() || control() || alt(); }
    // Takes a key event; other keys change nothing.
    void update(const InputEvent& event);
};

}  // namespace vistel
