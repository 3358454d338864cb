// From the keyboard's own codes to the codes of input events. Most keys have a virtual-key code
// that says what they are; the keypad and the left and right modifiers are told apart here; and a
// key whose meaning depends on the keyboard's layout (';', '[' ...) is known by the character it
// types, which is learned when it is pressed for the first time.
//
// Shared code, for the systems that number keys so (win32); linux has keyboard.h of its own.
#pragma once

#include <array>

namespace vistel::platform {

class KeyTranslator {
 public:
    // The event code of a key that went down or up; 0 when nothing is to be posted yet, because the
    // key's character is still to come. `extended` is the keyboard's mark for the second key of the
    // same code (right modifiers, the navigation keys beside the keypad).
    int translate(int virtualKey, bool extended, bool down);

    struct Learned {
        int code = 0;           // 0: no key was waiting
        bool released = false;  // the key went up before its character came
    };
    // To be called with the character that the last key typed. Its press, and its release when that
    // came first, are then to be posted.
    Learned learn(unsigned character);

    // Virtual key whose character is to come, 0 = none.
    int waiting() const { return waiting_; }

 private:
    int translateLayoutKey(int virtualKey, bool down);

    std::array<int, 256> learned_{};  // event code by virtual key, 0 = not known yet
    int waiting_ = 0;                 // virtual key whose character is to come, 0 = none
    bool releasedFirst_ = false;
};

}  // namespace vistel::platform
