#include "viewer/lut_commands.h"

#include <cstdlib>

#include "viewer/display_lut.h"
#include "viewer/window_layer.h"

namespace vistel {

namespace {

ControlChannel controlChannel() {
    return {viewerSession().controlChannel, viewerSession().controlComplement};
}

// Repeats of a held key that are queued already would run on after its release.
bool changed(const KeyPress& press) {
    displayLutChanged();
    windowContext().queue.drop(
        [&](const InputEvent& event) { return event.code == press.code && event.value; });
    return true;
}

}  // namespace

bool adjustLut(const KeyPress& press, int controlAndDirection) {
    const Modifiers& held = press.modifiers;
    adjust(displayLut().controls, static_cast<LutControl>(std::abs(controlAndDirection) - 1),
           controlAndDirection < 0 ? -1 : 1, {held.shift(), held.alt(), held.control()},
           controlChannel());
    return changed(press);
}

bool resetLut(const KeyPress& press, int) {
    resetAdjustments(displayLut().controls);
    return changed(press);
}

bool convertFilm(const KeyPress& press, int) {
    LutControls& controls = displayLut().controls;
    press.modifiers.shift() ? toggleExposureCurve(controls) : toggleFilmConversion(controls);
    displayLutChanged();
    return true;
}

bool negate(const KeyPress& press, int) {
    LutControls& controls = displayLut().controls;
    if (press.modifiers.control())
        clearNegation(controls);
    else if (press.modifiers.shift())
        controls.maskInverted = !controls.maskInverted;
    else
        toggleNegation(controls, controlChannel());
    displayLutChanged();
    return true;
}

}  // namespace vistel
