// Codes of the input events that a window posts. Codes below 256 that are not listed here are
// virtual-key codes (the letters and digits are their ASCII capitals); 256 + character stands for a
// key whose meaning depends on the keyboard's layout, such as ';'. Shared by all systems.
#pragma once

#include <cstdint>
#include <string_view>

namespace vistel {

struct InputEvent {
    int32_t code = 0;
    uint16_t value = 0;  // keys and buttons: 1 down, 0 up; mouse: the coordinate
};

enum EventCode : int32_t {
    EV_LEFTMOUSE = 1,
    EV_RIGHTMOUSE = 2,
    EV_MIDDLEMOUSE = 4,
    EV_REDRAW = 256,  // after every paint message
    EV_MOUSEX = 257,  // x in client pixels
    EV_MOUSEY = 258,  // client height minus y
    EV_TIMER = 259,
    EV_QUIT = 260,
};

enum KeyCode : int32_t {
    keyTab = 9,
    keyReturn = 13,
    keyEscape = 27,
    keySpace = 32,
    keyPageUp = 33,
    keyPageDown = 34,
    keyEnd = 35,
    keyHome = 36,
    keyLeftArrow = 37,
    keyUpArrow = 38,
    keyRightArrow = 39,
    keyDownArrow = 40,
    keyInsert = 45,
    keyDelete = 46,
    keyPad0 = 96,  // to keyPad0 + 9
    keyPadMultiply = 106,
    keyPadAdd = 107,
    keyPadSubtract = 109,
    keyPadDecimal = 110,
    keyPadDivide = 111,
    keyF1 = 112,  // to keyF1 + 11
    keyLeftShift = 160,
    keyRightShift = 161,
    keyLeftControl = 162,
    keyRightControl = 163,
    keyLeftAlt = 164,
    keyRightAlt = 165,
};

// The characters that are keys of their own, wherever a keyboard's layout has them: where one needs
// Shift or AltGr, the key that types it with them is that key.
constexpr std::string_view keyCharacters = ",.[]-=;'/\\";

// The code of a layout-dependent character key.
constexpr int32_t characterKey(char character) {
    return 256 + static_cast<unsigned char>(character);
}

}  // namespace vistel
