#include "viewer/key_table.h"

#include "app/viewer_state.h"
#include "viewer/play_commands.h"

namespace vistel {

namespace {

constexpr KeyBinding bindings[] = {
    // clang-format off
    // code                count keys            when             command         argument  help
    {keySpace,               1, "Space",        When::animation, togglePause,     0, "Pause and go on."},
    {keyLeftArrow,           1, "Left arrow",   When::animation, stepByKey,      -1, "One step back; with Ctrl to the start of the range."},
    {keyRightArrow,          1, "Right arrow",  When::animation, stepByKey,       1, "One step forward; with Ctrl to the end of the range."},
    {'0',                    1, "0",            When::animation, setStep,        10, "Steps of ten frames."},
    {'1',                    9, "1 to 9",       When::animation, setStep,         0, "Steps of that many frames."},
    {'S',                    1, "S",            When::animation, togglePingPong,  0, "Play back and forth instead of round and round."},
    {'T',                    1, "T",            When::animation, toggleFrameSkip, 0, "Skip frames when playing falls behind the rate."},
    {'U',                    1, "U",            When::always,    reloadFrame,     0, "Read the frame from its file again."},
    {keyPadAdd,              1, "Keypad +",     When::always,    changeRate,      1, "Faster by 1; Shift 2, Alt 5, both 10; Ctrl: the start-up rate."},
    {keyPadSubtract,         1, "Keypad -",     When::always,    changeRate,     -1, "Slower, likewise."},
    {characterKey(','),      1, ",",            When::animation, playOrSetBound, -1, "Play backward; Alt: once, from the end; Shift: set the range's start."},
    {characterKey('.'),      1, ".",            When::animation, playOrSetBound,  1, "Play forward; Alt: once, from the start; Shift: set the range's end."},
    // clang-format on
};

constexpr bool noKeyTwice() {
    for (const KeyBinding& a : bindings) {
        for (const KeyBinding& b : bindings) {
            if (&a != &b && a.code < b.code + b.count && b.code < a.code + a.count) return false;
        }
    }
    return true;
}
static_assert(noKeyTwice());

}  // namespace

std::span<const KeyBinding> keyBindings() { return bindings; }

bool runKey(const KeyPress& press) {
    for (const KeyBinding& binding : bindings) {
        if (press.code < binding.code || press.code >= binding.code + binding.count) continue;
        if (binding.when == When::animation && !viewerState.animation) return false;
        return binding.command(press, binding.argument);
    }
    return false;
}

}  // namespace vistel
