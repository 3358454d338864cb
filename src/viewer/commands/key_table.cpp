#include "viewer/commands/key_table.h"

#include "viewer/commands/lut_commands.h"
#include "viewer/commands/paint_commands.h"
#include "viewer/commands/pan_commands.h"
#include "viewer/commands/play_commands.h"
#include "viewer/commands/report_commands.h"
#include "viewer/commands/tool_commands.h"
#include "viewer/commands/tracking_commands.h"
#include "viewer/commands/view_commands.h"

namespace vistel {

namespace {

constexpr int view(ChannelMode mode) { return static_cast<int>(mode); }
constexpr int32_t functionKey(int number) { return keyF1 + number - 1; }

constexpr auto press = Edge::press, release = Edge::release;
constexpr auto always = When::always, animation = When::animation;

constexpr KeyBinding bindings[] = {
    // clang-format off
    // code              count keys              edge     when       command                 argument                       help
    {EV_LEFTMOUSE,           1, "Left button",   press,   always,    beginDrag,              0,                             "Scrub through the animation; an image, or with a modifier: move the picture (Alt: without the zoom)."},
    {EV_LEFTMOUSE,           1, "Left button",   release, always,    endDrag,                0,                             "Go on playing after scrubbing."},
    {EV_RIGHTMOUSE,          1, "Right button",  press,   always,    beginPainting,          0,                             "Paint into the shown channel or the control channel; Ctrl: clear."},
    {EV_RIGHTMOUSE,          1, "Right button",  release, always,    endPainting,            0,                             "End the line."},
    {EV_MIDDLEMOUSE,         1, "Middle button", press,   always,    pickPoint,              0,                             "Pick a point: tell where it is; keep it for tracking (F5), or write the luminance curve of its pixel (F8)."},
    {keySpace,               1, "Space",         press,   animation, togglePause,            0,                             "Pause and go on."},
    {keyLeftArrow,           1, "Left arrow",    press,   animation, stepByKey,              -1,                            "One step back; with Ctrl to the start of the range."},
    {keyRightArrow,          1, "Right arrow",   press,   animation, stepByKey,              1,                             "One step forward; with Ctrl to the end of the range."},
    {keyUpArrow,             1, "Up arrow",      press,   always,    changeReliefDepth,      -1,                            "Relief: slope down by 0.005; Shift 0.05, Alt 0.1; Ctrl: as at the start."},
    {keyDownArrow,           1, "Down arrow",    press,   always,    changeReliefDepth,      1,                             "Relief: slope up, likewise."},
    {'0',                    1, "0",             press,   animation, setStep,                10,                            "Steps of ten frames."},
    {'1',                    9, "1 to 9",        press,   animation, setStep,                0,                             "Steps of that many frames."},
    {'A',                    1, "A",             press,   always,    chooseChannel,          view(ChannelMode::matte),      "Show the mask."},
    {'B',                    1, "B",             press,   always,    chooseChannel,          view(ChannelMode::blue),       "Show blue."},
    {'C',                    1, "C",             press,   always,    chooseChannel,          view(ChannelMode::all),        "Show all channels."},
    {'D',                    1, "D",             press,   always,    resetLut,               0,                             "Colour correction back to neutral."},
    {'E',                    1, "E",             press,   always,    setDithering,           1,                             "Dithering on."},
    {'F',                    1, "F",             press,   always,    toggleDoubleBuffer,     0,                             "Double buffering on and off."},
    {'G',                    1, "G",             press,   always,    chooseChannel,          view(ChannelMode::green),      "Show green."},
    {'I',                    1, "I",             press,   always,    chooseRelief,           1,                             "Show the relief of the view, turned inside out; Shift: with profile lines."},
    {'K',                    1, "K",             press,   always,    convertFilm,            0,                             "Convert logarithmic film data; Shift: the exposure curve alone."},
    {'L',                    1, "L",             press,   always,    chooseLuminanceOrLines, 0,                             "Show the luminance; Shift: paint lines or single points."},
    {'M',                    1, "M",             press,   always,    chooseChannel,          view(ChannelMode::matte),      "Show the mask."},
    {'N',                    1, "N",             press,   always,    chooseRelief,           0,                             "Show the relief of the view; Shift: with profile lines."},
    {'P',                    1, "P",             press,   always,    reportControls,         0,                             "Tell the display's controls; while playing the smallest and largest values on display."},
    {'Q',                    1, "Q",             press,   always,    setDithering,           0,                             "Dithering off."},
    {'R',                    1, "R",             press,   always,    chooseChannel,          view(ChannelMode::red),        "Show red."},
    {'S',                    1, "S",             press,   animation, togglePingPong,         0,                             "Play back and forth instead of round and round."},
    {'T',                    1, "T",             press,   animation, toggleFrameSkip,        0,                             "Skip frames when playing falls behind the rate."},
    {keyReload,              1, "U",             press,   always,    reloadFrame,            0,                             "Read the frame from its file again."},
    {'W',                    1, "W",             press,   always,    writePicture,           0,                             "Save the shown frame; Shift: each frame of the range."},
    {'X',                    1, "X",             press,   always,    negate,                 0,                             "Negative, of the control channel alone if there is one; Shift: of the mask; Ctrl: none."},
    {'Z',                    1, "Z",             press,   always,    chooseChannel,          view(ChannelMode::zBuffer),    "Show the depth; with a modifier without its outliers."},
    {keyPad0,                1, "Keypad 0",      press,   always,    zoomPicture,            -1,                            "Zoom out."},
    {keyPad0 + 1,            9, "Keypad 1 to 9", press,   always,    movePicture,            0,                             "Move the picture by 1; Shift 5, Alt 10, both 20; Ctrl with 5: the view as at the start."},
    {keyPadMultiply,         1, "Keypad *",      press,   always,    changeReliefAmount,     1,                             "Relief: more colour by 1; Shift 5, Alt 10; Ctrl: all."},
    {keyPadAdd,              1, "Keypad +",      press,   always,    changeRate,             1,                             "Faster by 1; Shift 2, Alt 5, both 10; Ctrl: the start-up rate."},
    {keyPadSubtract,         1, "Keypad -",      press,   always,    changeRate,             -1,                            "Slower, likewise."},
    {keyPadDecimal,          1, "Keypad .",      press,   always,    zoomPicture,            1,                             "Zoom in."},
    {keyPadDivide,           1, "Keypad /",      press,   always,    changeReliefAmount,     -1,                            "Relief: less colour, likewise; Ctrl: none."},
    {functionKey(1),         1, "F1",            press,   always,    chooseControlChannel,   3,                             "Control channel red; Shift: cyan."},
    {functionKey(2),         1, "F2",            press,   always,    chooseControlChannel,   2,                             "Control channel green; Shift: magenta."},
    {functionKey(3),         1, "F3",            press,   always,    chooseControlChannel,   1,                             "Control channel blue; Shift: yellow."},
    {functionKey(4),         1, "F4",            press,   always,    chooseControlChannel,   0,                             "No control channel."},
    {functionKey(5),         1, "F5",            press,   always,    toggleTracking,         0,                             "Tracking on and off: points that are picked are kept, one for each frame."},
    {functionKey(6),         1, "F6",            press,   always,    writeTracking,          0,                             "Write the tracked points to standard output; while playing as two curves."},
    {functionKey(8),         1, "F8",            press,   always,    toggleLuminanceCurve,   0,                             "Luminance curves on and off: a point that is picked writes how bright its pixel is in each frame."},
    {functionKey(11),        1, "F11",           press,   always,    toggleOverwrite,        0,                             "Save over the source files, or under names of their own."},
    {functionKey(12),        1, "F12",           press,   always,    outlineTiles,           0,                             "Outline the tiles of the frame."},
    {functionKey(12),        1, "F12",           release, always,    removeOverlay,          0,                             "Remove the outlines."},
    {characterKey(','),      1, ",",             press,   animation, playOrSetBound,         -1,                            "Play backward; Alt: once, from the end; Shift: set the range's start."},
    {characterKey('.'),      1, ".",             press,   animation, playOrSetBound,         1,                             "Play forward; Alt: once, from the start; Shift: set the range's end."},
    {characterKey('['),      1, "[",             press,   always,    adjustLut,              lutDown(LutControl::gamma),      "Gamma down by 0.01; Shift 0.1, Alt 0.5, both 1; Ctrl: neutral."},
    {characterKey(']'),      1, "]",             press,   always,    adjustLut,              lutUp(LutControl::gamma),        "Gamma up, likewise."},
    {characterKey('-'),      1, "-",             press,   always,    adjustLut,              lutDown(LutControl::gain),       "Luminance down by 0.01; Shift 0.1, Alt 0.5, both 1; Ctrl: neutral."},
    {characterKey('='),      1, "=",             press,   always,    adjustLut,              lutUp(LutControl::gain),         "Luminance up, likewise."},
    {characterKey(';'),      1, ";",             press,   always,    adjustLut,              lutDown(LutControl::saturation), "Saturation down by 0.01; Shift 0.1, Alt 0.5, both 1; Ctrl: neutral."},
    {characterKey('\''),     1, "'",             press,   always,    adjustLut,              lutUp(LutControl::saturation),   "Saturation up, likewise."},
    {characterKey('/'),      1, "/",             press,   always,    adjustLut,              lutDown(LutControl::offset),     "Offset down by 1; Shift 5, Alt 10, both 20; Ctrl: none."},
    {characterKey('\\'),     1, "\\",            press,   always,    adjustLut,              lutUp(LutControl::offset),       "Offset up, likewise."},
    {keyEscape,              1, "Escape",        release, always,    leaveFullScreen,        0,                             "Leave full screen."},
    // clang-format on
};

constexpr bool overlap(const KeyBinding& a, const KeyBinding& b) {
    return a.edge == b.edge && a.code < b.code + b.count && b.code < a.code + a.count;
}

constexpr bool noKeyTwice() {
    for (const KeyBinding& a : bindings) {
        for (const KeyBinding& b : bindings) {
            if (&a != &b && overlap(a, b)) return false;
        }
    }
    return true;
}
static_assert(noKeyTwice());

}  // namespace

std::span<const KeyBinding> keyBindings() { return bindings; }

const KeyBinding* findBinding(const Press& press) {
    const Edge edge = press.value ? Edge::press : Edge::release;
    for (const KeyBinding& binding : bindings) {
        const int place = press.code - binding.code;
        if (binding.edge == edge && place >= 0 && place < binding.count) return &binding;
    }
    return nullptr;
}

bool runKey(Viewer& viewer, const Press& press) {
    const KeyBinding* binding = findBinding(press);
    if (!binding || (binding->when == When::animation && !viewer.animation)) return false;
    return binding->command(viewer, press, binding->argument);
}

}  // namespace vistel
