#include "platform/linux/desktop/keyboard.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <array>
#include <cctype>
#include <iterator>
#include <string_view>

#include "platform/input_event.h"
#include "platform/linux/desktop/application.h"

namespace vistel::platform {

namespace {

struct NamedKey {
    KeySym symbol;
    int code;
};

constexpr NamedKey namedKeys[] = {
    {XK_BackSpace, 8},
    {XK_Tab, keyTab},
    {XK_Return, keyReturn},
    {XK_KP_Enter, keyReturn},
    {XK_Pause, 19},
    {XK_Caps_Lock, 20},
    {XK_Escape, keyEscape},
    {XK_space, keySpace},
    {XK_Prior, keyPageUp},
    {XK_Next, keyPageDown},
    {XK_End, keyEnd},
    {XK_Home, keyHome},
    {XK_Left, keyLeftArrow},
    {XK_Up, keyUpArrow},
    {XK_Right, keyRightArrow},
    {XK_Down, keyDownArrow},
    {XK_Print, 44},
    {XK_Insert, keyInsert},
    {XK_Delete, keyDelete},
    {XK_Super_L, 91},
    {XK_Super_R, 92},
    {XK_Menu, 93},
    {XK_KP_Insert, keyPad0},
    {XK_KP_End, keyPad0 + 1},
    {XK_KP_Down, keyPad0 + 2},
    {XK_KP_Next, keyPad0 + 3},
    {XK_KP_Left, keyPad0 + 4},
    {XK_KP_Begin, keyPad0 + 5},
    {XK_KP_Right, keyPad0 + 6},
    {XK_KP_Home, keyPad0 + 7},
    {XK_KP_Up, keyPad0 + 8},
    {XK_KP_Prior, keyPad0 + 9},
    {XK_KP_Multiply, keyPadMultiply},
    {XK_KP_Add, keyPadAdd},
    {XK_KP_Separator, keyPadDecimal},
    {XK_KP_Subtract, keyPadSubtract},
    {XK_KP_Delete, keyPadDecimal},
    {XK_KP_Decimal, keyPadDecimal},
    {XK_KP_Divide, keyPadDivide},
    {XK_Num_Lock, 144},
    {XK_Scroll_Lock, 145},
    {XK_Shift_L, keyLeftShift},
    {XK_Shift_R, keyRightShift},
    {XK_Control_L, keyLeftControl},
    {XK_Control_R, keyRightControl},
    {XK_Alt_L, keyLeftAlt},
    {XK_Meta_L, keyLeftAlt},
    {XK_Alt_R, keyRightAlt},
    {XK_Meta_R, keyRightAlt},
    {XK_ISO_Level3_Shift, keyRightAlt},
};

int codeOfNamedKey(KeySym symbol) {
    for (const NamedKey& key : namedKeys) {
        if (key.symbol == symbol) return key.code;
    }
    if (symbol >= XK_F1 && symbol <= XK_F24) return keyF1 + static_cast<int>(symbol - XK_F1);
    if (symbol >= XK_KP_0 && symbol <= XK_KP_9) {
        return keyPad0 + static_cast<int>(symbol - XK_KP_0);
    }
    return 0;
}

bool isLetter(KeySym symbol) { return symbol < 128 && std::isalpha(static_cast<int>(symbol)); }
bool isDigit(KeySym symbol) { return symbol >= XK_0 && symbol <= XK_9; }
// The characters of Latin 1 have their own numbers as symbols.
bool isCharacter(KeySym symbol) {
    return (symbol > XK_space && symbol < 127) || (symbol > XK_nobreakspace && symbol < 256);
}

int codeOfCharacter(KeySym symbol) {
    if (isLetter(symbol)) return std::toupper(static_cast<int>(symbol));
    if (isDigit(symbol)) return static_cast<int>(symbol);
    return characterKey(static_cast<char>(symbol));
}

// What the keys of a layout without Latin letters are called: by their place on the usual keyboard.
struct KeyRow {
    unsigned first;
    std::string_view characters;
};
constexpr KeyRow usualRows[] = {
    {10, "1234567890-="}, {24, "qwertyuiop[]"}, {38, "asdfghjkl;'`"}, {51, "\\zxcvbnm,./"}};

int codeByPlace(unsigned xKeycode) {
    for (const KeyRow& row : usualRows) {
        const unsigned place = xKeycode - row.first;
        if (xKeycode >= row.first && place < row.characters.size()) {
            return codeOfCharacter(static_cast<unsigned char>(row.characters[place]));
        }
    }
    return 0;
}

// A key's symbols: unshifted and shifted of the first layout, then of the second.
using Symbols = std::array<KeySym, 4>;

// Asked of the server each time: the copy that the library keeps goes stale when the layout is
// changed, because the notices of that go to the toolkit.
Symbols symbolsOf(unsigned xKeycode) {
    Symbols symbols{};
    int count = 0;
    KeySym* mapping = XGetKeyboardMapping(xDisplay(), static_cast<KeyCode>(xKeycode), 1, &count);
    if (!mapping) return symbols;
    for (int i = 0; i < count && i < static_cast<int>(symbols.size()); ++i) symbols[i] = mapping[i];
    XFree(mapping);
    return symbols;
}

}  // namespace

int keyCodeOf(unsigned xKeycode, int layout) {
    if (!xDisplay() || xKeycode < 8 || xKeycode > 255) return 0;
    const Symbols symbols = symbolsOf(xKeycode);
    const int second = layout == 1 && symbols[2] != NoSymbol ? 2 : 0;
    const KeySym plain = symbols[second], shifted = symbols[second + 1];
    if (const int code = codeOfNamedKey(plain)) return code;
    // Layouts whose digits need Shift: the key is still the digit's.
    if (isDigit(shifted) && xKeycode >= 10 && xKeycode <= 19) return codeOfCharacter(shifted);
    if (isCharacter(plain)) return codeOfCharacter(plain);
    const KeySym other = symbols[2 - second];
    if (isLetter(other)) return codeOfCharacter(other);
    return codeByPlace(xKeycode);
}

int typedKeyCode(unsigned long symbol, int layout) {
    if (!xDisplay() || symbol > 126) return 0;
    const auto character = static_cast<char>(symbol);
    if (keyCharacters.find(character) == std::string_view::npos) return 0;
    constexpr int firstKey = 8, keys = 248;
    int columns = 0;
    KeySym* mapping = XGetKeyboardMapping(xDisplay(), firstKey, keys, &columns);
    if (!mapping) return 0;
    const int plain = layout == 1 && columns > 2 ? 2 : 0;
    bool typedPlainly = false;
    for (int key = 0; key < keys && columns > 0; ++key)
        typedPlainly |= mapping[key * columns + plain] == symbol;
    XFree(mapping);
    return typedPlainly ? 0 : characterKey(character);
}

bool keyHeld(int code) {
    Display* display = xDisplay();
    if (!display) return false;
    char held[32] = {};
    XQueryKeymap(display, held);
    XkbStateRec state{};
    XkbGetState(display, XkbUseCoreKbd, &state);
    for (unsigned key = 8; key < 256; ++key) {
        const bool down = (held[key / 8] >> (key % 8)) & 1;
        if (down && keyCodeOf(key, state.group) == code) return true;
    }
    return false;
}

bool mouseButtonHeld(int code) {
    Display* display = xDisplay();
    if (!display) return false;
    Window root, child;
    int x, y;
    unsigned mask = 0;
    XQueryPointer(display, DefaultRootWindow(display), &root, &child, &x, &y, &x, &y, &mask);
    switch (code) {
        case EV_LEFTMOUSE:
            return mask & Button1Mask;
        case EV_RIGHTMOUSE:
            return mask & Button3Mask;
        case EV_MIDDLEMOUSE:
            return mask & Button2Mask;
        default:
            return false;
    }
}

}  // namespace vistel::platform
