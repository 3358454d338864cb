// From the keys of an X keyboard to the codes of input events.
//
// A key's code does not depend on the modifiers held: letters and digits are named by their
// capital, punctuation keys by the character they give unshifted, and the keypad's keys by their
// digits whether or not Num Lock is on.
#pragma once

namespace vistel::platform {

// The event code of a key; 0 for keys that have none. `layout` is the keyboard group in force (0 is
// the first layout).
int keyCodeOf(unsigned xKeycode, int layout);

// The code of a key character that is typed with Shift or AltGr, by its X symbol, where no key of
// the layout types it without; 0 for every other symbol.
int typedKeyCode(unsigned long symbol, int layout);

// Whether a key with this code is held now, whichever window has the keyboard.
bool keyHeld(int code);

// Whether a mouse button (EV_LEFTMOUSE and so on) is held now.
bool mouseButtonHeld(int code);

}  // namespace vistel::platform
