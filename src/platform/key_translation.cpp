#include "platform/key_translation.h"

#include <cstddef>

#include "platform/input_event.h"

namespace vistel::platform {

namespace {

// Keyboard codes that are not event codes themselves.
enum : int { vkShift = 16, vkControl = 17, vkAlt = 18, vkClear = 12 };
constexpr int firstLayoutKey = 146, lastLayoutKey = 245;

struct Modifier {
    int virtualKey, left, right;
};
constexpr Modifier modifiers[] = {
    {vkShift, keyLeftShift, keyRightShift},
    {vkControl, keyLeftControl, keyRightControl},
    {vkAlt, keyLeftAlt, keyRightAlt},
};

struct KeypadKey {
    int virtualKey, code;
};
// What the keypad's keys send while they do not type digits.
constexpr KeypadKey keypad[] = {
    {keyInsert, keyPad0},         {keyEnd, keyPad0 + 1},       {keyDownArrow, keyPad0 + 2},
    {keyPageDown, keyPad0 + 3},   {keyLeftArrow, keyPad0 + 4}, {vkClear, keyPad0 + 5},
    {keyRightArrow, keyPad0 + 6}, {keyHome, keyPad0 + 7},      {keyUpArrow, keyPad0 + 8},
    {keyPageUp, keyPad0 + 9},     {keyDelete, keyPadDecimal},
};

}  // namespace

int KeyTranslator::translate(int virtualKey, bool extended, bool down) {
    for (const Modifier& modifier : modifiers) {
        if (modifier.virtualKey == virtualKey) return extended ? modifier.right : modifier.left;
    }
    if (!extended) {
        for (const KeypadKey& key : keypad) {
            if (key.virtualKey == virtualKey) return key.code;
        }
    }
    if (virtualKey >= firstLayoutKey && virtualKey <= lastLayoutKey) {
        return translateLayoutKey(virtualKey, down);
    }
    return virtualKey;
}

int KeyTranslator::translateLayoutKey(int virtualKey, bool down) {
    const int known = learned_[static_cast<size_t>(virtualKey)];
    if (known != 0) return known;
    if (down) {
        waiting_ = virtualKey;
        releasedFirst_ = false;
    } else if (waiting_ != 0) {
        releasedFirst_ = true;
    }
    return 0;
}

KeyTranslator::Learned KeyTranslator::learn(unsigned character) {
    if (waiting_ == 0) return {};
    const Learned learned{256 + static_cast<int>(character), releasedFirst_};
    learned_[static_cast<size_t>(waiting_)] = learned.code;
    waiting_ = 0;
    releasedFirst_ = false;
    return learned;
}

}  // namespace vistel::platform
