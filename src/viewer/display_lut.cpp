#include "viewer/display_lut.h"

#include "app/viewer_state.h"
#include "viewer/picture_view.h"

namespace vistel {

static bool convertFilmAtStart = false;  // the K key changes viewerState.cineonLog

ColourLut& displayLut() {
    static ColourLut lut;
    return lut;
}

void startDisplayLut() {
    convertFilmAtStart = viewerState.cineonLog != 0;
    resetDisplayLut();
}

void resetDisplayLut() {
    LutControls controls;
    controls.gamma.fill(viewerState.defGamma);
    controls.cineonLog = convertFilmAtStart;
    displayLut().controls = controls;
    displayLutChanged();
}

void displayLutChanged() {
    ColourLut& lut = displayLut();
    lut.build();
    viewerState.lutActive = lut.lutActive;
    viewerState.cineonLog = lut.controls.cineonLog;
    viewChanged();
}

}  // namespace vistel
