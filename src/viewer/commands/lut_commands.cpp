#include "viewer/commands/lut_commands.h"

#include <cstdlib>

#include "viewer/commands/queued_input.h"
#include "viewer/picture/display_lut.h"

namespace vistel {

static ControlChannel controlChannel(const ShownPicture& picture) {
    return {picture.controlChannel, picture.controlComplement};
}

bool adjustLut(Viewer& viewer, const Press& press, int controlAndDirection) {
    adjust(viewer.lut.controls, static_cast<LutControl>(std::abs(controlAndDirection) - 1),
           controlAndDirection < 0 ? -1 : 1, press.modifiers, controlChannel(viewer));
    displayLutChanged(viewer);
    dropRepeats(press);
    return true;
}

bool resetLut(Viewer& viewer, const Press& press, int) {
    resetAdjustments(viewer.lut.controls);
    displayLutChanged(viewer);
    dropRepeats(press);
    return true;
}

bool convertFilm(Viewer& viewer, const Press& press, int) {
    LutControls& controls = viewer.lut.controls;
    press.modifiers.shift() ? toggleExposureCurve(controls) : toggleFilmConversion(controls);
    displayLutChanged(viewer);
    return true;
}

bool negate(Viewer& viewer, const Press& press, int) {
    LutControls& controls = viewer.lut.controls;
    if (press.modifiers.control())
        clearNegation(controls);
    else if (press.modifiers.shift())
        controls.maskInverted = !controls.maskInverted;
    else
        toggleNegation(controls, controlChannel(viewer));
    displayLutChanged(viewer);
    return true;
}

}  // namespace vistel
