#include "viewer/commands/report_commands.h"

#include "analysis/value_range.h"
#include "host/messages.h"
#include "viewer/picture/picture_view.h"

namespace vistel {

namespace {

// Channels are counted from blue on, and told from red on.
void tellControls(const Viewer& viewer) {
    const LutControls& controls = viewer.lut.controls;
    const auto &gain = controls.gain, &gamma = controls.gamma, &saturation = controls.saturation;
    const auto offset = [&](int channel) { return static_cast<int>(controls.offset[channel]); };
    const auto negative = [&](int channel) { return onOrOff(controls.negate[channel]); };
    printError("");
    printError(messageText(Message::rVTControlValues));
    printError(formatMessage(Message::rVTLumValues, {gain[2], gain[1], gain[0]}));
    printError(formatMessage(Message::rVTGammaValues, {gamma[2], gamma[1], gamma[0]}));
    printError(formatMessage(Message::rVTSatValues, {saturation[2], saturation[1], saturation[0]}));
    printError(formatMessage(Message::rVTOffsetValues, {offset(2), offset(1), offset(0)}));
    printError(formatMessage(Message::rVTBumpValue, {-viewer.reliefDepth}));
    printError(formatMessage(Message::rVTColorValue, {viewer.reliefAmount / 2.56}));
    printError(formatMessage(Message::rVTNegateValues, {negative(2), negative(1), negative(0)}));
    printError(formatMessage(Message::rVTTocinValue, {onOrOff(controls.exposureCurve)}));
    printError(formatMessage(Message::rVTFromCinValue, {onOrOff(controls.cineonLog)}));
    if (viewer.animation) printError(formatMessage(Message::rVTPlaySpeed, {viewer.frameRate}));
}

void tellValueRange(Viewer& viewer) {
    const uint32_t* pixels = displayedPixels(viewer);
    const size_t count = size_t(viewer.shown->width) * size_t(viewer.shown->height);
    // The look-up table has written the colours only.
    if (DisplayBuffer& corrected = viewer.views.corrected; pixels && pixels == corrected.pixels())
        viewer.lut.apply(1, viewer.shown->colour.data(), count, corrected.pixels());
    const ValueRange range = valueRange(pixels, pixels ? count : 0);
    const auto &small = range.smallest, &large = range.largest;
    printError(formatMessage(Message::rVTMinMax,
                             {small[0], small[1], small[2], large[0], large[1], large[2]}));
}

}  // namespace

bool reportControls(Viewer& viewer, const Press&, int) {
    if (!playing(viewer))
        tellControls(viewer);
    else if (viewer.shown)
        tellValueRange(viewer);
    return false;
}

}  // namespace vistel
