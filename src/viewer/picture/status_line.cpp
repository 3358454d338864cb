#include "viewer/picture/status_line.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "host/messages.h"

namespace vistel {

namespace {

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

const LabelRow& rowOf(ChannelMode mode) { return labels[static_cast<size_t>(mode)]; }

Tstring viewLabel(const ShownPicture& picture) {
    if (!isRelief(picture.mode)) return messageText(rowOf(picture.mode).view);
    if (!picture.bumpSource) return {};
    Tstring label = messageText(rowOf(*picture.bumpSource).relief);
    if (picture.mode == ChannelMode::bump || label.empty()) return label;
    return formatMessage(Message::rVTInv, {label});
}

// What the label says, and what it is made from.
struct LabelKey {
    ChannelMode mode = ChannelMode::all;
    std::optional<ChannelMode> bumpSource;
    int controlChannel = 0;
    bool controlComplement = false;
    bool operator==(const LabelKey&) const = default;
};

Tstring makeLabel(const ShownPicture& picture) {
    Tstring label = viewLabel(picture);
    if (picture.controlChannel == 0) return label;
    const std::string letter(
        1, (picture.controlComplement ? "YMC" : "BGR")[picture.controlChannel - 1]);
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

std::string_view statusLine(const StatusFields& status) {
    std::array<char, 32> range = {};
    if (status.partly)
        std::snprintf(range.data(), range.size(), " - [%d,%d]", status.playFirst, status.playLast);
    static std::array<char, 192> buffer;
    const TimeFields time = timeFields(status.frame, status.frameRate);
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%02d:%02d:%02d - %d %s%s %s%s %.2fFPS", time.minutes,
        time.seconds, time.frames, status.frame, status.skips ? "T" : "", status.direction,
        status.source, range.data(), double{status.framesPerSecond});
    return {buffer.data(), std::min(static_cast<size_t>(length), buffer.size() - 1)};
}

std::string_view channelLabel(const ShownPicture& picture) {
    static LabelKey key;
    static Tstring label = makeLabel(picture);
    const LabelKey now{picture.mode, picture.bumpSource, picture.controlChannel,
                       picture.controlComplement};
    if (key != now) label = makeLabel(picture);
    key = now;
    return label;
}

}  // namespace vistel
