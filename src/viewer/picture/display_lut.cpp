#include "viewer/picture/display_lut.h"

#include "viewer/picture/picture_view.h"

namespace vistel {

void startDisplayLut(ShownPicture& picture) {
    picture.filmAtStart = picture.cineonLog != 0;  // the K key changes cineonLog
    resetDisplayLut(picture);
}

void resetDisplayLut(ShownPicture& picture) {
    LutControls controls;
    controls.gamma.fill(picture.defGamma);
    controls.cineonLog = picture.filmAtStart;
    picture.lut.controls = controls;
    displayLutChanged(picture);
}

void displayLutChanged(ShownPicture& picture) {
    picture.lut.build();
    picture.lutActive = picture.lut.lutActive;
    picture.cineonLog = picture.lut.controls.cineonLog;
    viewChanged(picture);
}

}  // namespace vistel
