#include "viewer/view_commands.h"

#include <algorithm>

#include "analysis/relief.h"
#include "viewer/picture_view.h"

namespace vistel {

bool chooseChannel(const KeyPress& press, int mode) {
    const auto wanted = static_cast<ChannelMode>(mode);
    if (wanted == ChannelMode::zBuffer)
        viewerSession().zScale = press.modifiers.any() ? ZScale::percentiles : ZScale::wholeRange;
    return chooseView(wanted);
}

bool chooseLuminanceOrLines(const KeyPress& press, int) {
    if (!press.modifiers.shift())
        return chooseChannel(press, static_cast<int>(ChannelMode::luminance));
    viewerSession().painting.lines = !viewerSession().painting.lines;
    return false;
}

bool chooseRelief(const KeyPress& press, int inverted) {
    viewerSession().profiles = press.modifiers.shift();
    chooseReliefView(inverted != 0);
    return true;
}

bool changeReliefDepth(const KeyPress& press, int direction) {
    const Modifiers& held = press.modifiers;
    float& depth = viewerSession().reliefDepth;
    const float step = held.alt() ? 0.1f : held.shift() ? 0.05f : 0.005f;
    depth = held.control() ? startReliefDepth : depth + step * float(direction);
    return reliefChanged();
}

bool changeReliefAmount(const KeyPress& press, int direction) {
    const Modifiers& held = press.modifiers;
    int& amount = viewerSession().reliefAmount;
    const int step = held.alt() ? 10 : held.shift() ? 5 : 1;
    amount = std::clamp(amount + step * direction, 0, strongestRelief);
    if (held.control()) amount = direction > 0 ? strongestRelief : 0;
    return reliefChanged();
}

bool chooseControlChannel(const KeyPress& press, int channel) {
    viewerSession().controlChannel = channel;
    viewerSession().controlComplement = press.modifiers.shift();
    viewerSession().layout.clearWanted = true;  // the label changes
    return true;
}

}  // namespace vistel
