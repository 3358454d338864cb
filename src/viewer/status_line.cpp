#include "viewer/status_line.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "viewer/viewer_session.h"

namespace vistel {

namespace {

const char* directionMark() {
    if (viewerState.paused) return "";
    switch (viewerState.playMode) {
        case PlayMode::forward:
            return viewerState.pingPong ? "FS" : "F";
        case PlayMode::backward:
            return viewerState.pingPong ? "BS" : "B";
        default:
            return "";
    }
}

const char* sourceMark() {
    switch (viewerSession().mark) {
        case SourceMark::memory:
            return "Mem";
        case SourceMark::disk:
            return "Dsk";
        default:
            return "???";
    }
}

using RangeText = std::array<char, 32>;

RangeText rangeText() {
    RangeText text = {};
    const bool whole = viewerState.playFirst == viewerState.firstFrame &&
                       viewerState.playLast == viewerState.lastFrame;
    if (!whole)
        std::snprintf(text.data(), text.size(), " - [%d,%d]", viewerState.playFirst,
                      viewerState.playLast);
    return text;
}

// Name of a plain view, and of the relief made from it, by channel mode.
struct LabelRow {
    Message view;
    Message relief;
};
constexpr LabelRow labels[] = {
    {Message::rVTMask, Message::rVTMaskBump},
    {Message::rVTBPlane, Message::rVTBlueBump},
    {Message::rVTGPlane, Message::rVTGreenBump},
    {Message::rVTRPlane, Message::rVTRedBump},
    {Message::none, Message::none},
    {Message::rVTZBuffer, Message::rVTZBump},
    {Message::rVTLuminance, Message::rVTLumBump},
};

Tstring viewLabel() {
    const ViewerSession& session = viewerSession();
    if (session.mode < ChannelMode::invertedBump)
        return messageText(labels[int(session.mode)].view);
    const bool known = session.bumpSource >= 0 && session.bumpSource < int(std::size(labels));
    const Tstring label = known ? messageText(labels[session.bumpSource].relief) : Tstring();
    if (session.mode == ChannelMode::bump) return label;
    return label.empty() ? label : formatMessage(Message::rVTInv, {label});
}

// What the label says, and what it is made from.
struct LabelKey {
    ChannelMode mode = ChannelMode::all;
    int bumpSource = -1, controlChannel = 0;
    bool controlComplement = false;
    bool operator==(const LabelKey&) const = default;
};

Tstring makeLabel() {
    const ViewerSession& session = viewerSession();
    const Tstring label = viewLabel();
    if (session.controlChannel == 0) return label;
    const std::string letter(
        1, (session.controlComplement ? "YMC" : "BGR")[session.controlChannel - 1]);
    if (label.empty()) return formatMessage(Message::rVTControl2, {letter});
    return formatMessage(Message::rVTControl, {label, letter});
}

}  // namespace

TimeFields timeFields(int frame, int frameRate) {
    const int64_t n = int64_t{frame} - 1;
    TimeFields fields;
    fields.frames = static_cast<int>(n % frameRate);
    fields.seconds = static_cast<int>((n - fields.frames) / frameRate % 60);
    fields.minutes = static_cast<int>(n - (int64_t{frameRate} * fields.seconds + fields.frames));
    return fields;
}

std::string_view statusLine(int frame) {
    static std::array<char, 192> buffer;
    const TimeFields time = timeFields(frame, effectiveFrameRate());
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%02d:%02d:%02d - %d %s%s %s%s %.2fFPS", time.minutes,
        time.seconds, time.frames, frame, viewerState.frameSkip ? "T" : "", directionMark(),
        sourceMark(), rangeText().data(), double{viewerSession().fps.shown()});
    return {buffer.data(), std::min(static_cast<size_t>(length), buffer.size() - 1)};
}

std::string_view channelLabel() {
    const ViewerSession& session = viewerSession();
    static LabelKey key;
    static Tstring label = makeLabel();
    const LabelKey now{session.mode, session.bumpSource, session.controlChannel,
                       session.controlComplement};
    if (key != now) label = makeLabel();
    key = now;
    return label;
}

}  // namespace vistel
