#include "host/modifiers.h"

namespace vistel {

void Modifiers::update(const InputEvent& event) {
    const bool down = event.value != 0;
    switch (event.code) {
        case keyLeftShift:
            leftShift = down;
            break;
        case keyRightShift:
            rightShift = down;
            break;
        case keyLeftControl:
            leftControl = down;
            break;
        case keyRightControl:
            rightControl = down;
            break;
        case keyLeftAlt:
            leftAlt = down;
            break;
        case keyRightAlt:
            rightAlt = down;
            break;
    }
}

}  // namespace vistel
