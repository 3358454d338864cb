#include "viewer/commands/view_commands.h"

#include <algorithm>

#include "analysis/relief.h"
#include "viewer/picture/picture_view.h"

namespace vistel {

bool chooseChannel(Viewer& viewer, const Press& press, int mode) {
    const auto wanted = static_cast<ChannelMode>(mode);
    if (wanted == ChannelMode::zBuffer)
        viewer.zScale = press.modifiers.any() ? ZScale::percentiles : ZScale::wholeRange;
    return chooseView(viewer, wanted);
}

bool chooseLuminanceOrLines(Viewer& viewer, const Press& press, int) {
    if (!press.modifiers.shift())
        return chooseChannel(viewer, press, static_cast<int>(ChannelMode::luminance));
    viewer.painting.lines = !viewer.painting.lines;
    return false;
}

bool chooseRelief(Viewer& viewer, const Press& press, int inverted) {
    viewer.profiles = press.modifiers.shift();
    chooseReliefView(viewer, inverted != 0);
    return true;
}

bool changeReliefDepth(Viewer& viewer, const Press& press, int direction) {
    const Modifiers& held = press.modifiers;
    float& depth = viewer.reliefDepth;
    const float step = held.alt() ? 0.1f : held.shift() ? 0.05f : 0.005f;
    depth = held.control() ? startReliefDepth : depth + step * float(direction);
    return reliefChanged(viewer);
}

bool changeReliefAmount(Viewer& viewer, const Press& press, int direction) {
    const Modifiers& held = press.modifiers;
    int& amount = viewer.reliefAmount;
    const int step = held.alt() ? 10 : held.shift() ? 5 : 1;
    amount = std::clamp(amount + step * direction, 0, strongestRelief);
    if (held.control()) amount = direction > 0 ? strongestRelief : 0;
    return reliefChanged(viewer);
}

bool chooseControlChannel(Viewer& viewer, const Press& press, int channel) {
    viewer.controlChannel = channel;
    viewer.controlComplement = press.modifiers.shift();
    viewer.layout.clearWanted = true;  // the label changes
    return true;
}

}  // namespace vistel
