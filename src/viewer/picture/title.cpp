#include "viewer/picture/title.h"

#include <algorithm>

#include "host/messages.h"
#include "sequence/frame_name.h"
#include "viewer/picture/status_line.h"
#include "viewer/window/window_layer.h"

namespace vistel {

std::string shownSourceName(const CurrentSource& source) {
    if (namesCommand(source.fileName)) return messageText(Message::rVTPipedCmd);
    return source.fileName.empty() ? source.sourceName : source.fileName;
}

// How far tracking is: which frame of an animation still has no point.
static Tstring trackingSuffix(const ShownPicture& picture) {
    if (!picture.tracking.on || !picture.animation) return {};
    const TrackedFrames tracked =
        trackedFrames(picture.tracking, picture.firstFrame, picture.lastFrame,
                      std::max(1, picture.frameStep), picture.currentFrame);
    const auto shown = [](int64_t count) {
        return static_cast<int>(std::min<int64_t>(count, INT32_MAX));
    };
    if (!tracked.missing) return formatMessage(Message::rVTTitleTracked, {shown(tracked.frames)});
    return formatMessage(Message::rVTTitleTracking,
                         {shown(tracked.picked), shown(tracked.frames), *tracked.missing});
}

// What neither the name nor the picture alone tells.
static Tstring titleSuffix(const ShownPicture& picture) {
    Tstring suffix;
    if (picture.shown && picture.shown->shrink > 1)
        suffix += formatMessage(Message::rVTTitleShrink, {picture.shown->shrink});
    if (picture.shown && picture.layout.zoom > 1)
        suffix += formatMessage(Message::rVTTitleZoom, {picture.layout.zoom});
    if (!picture.animation) {
        const Tstring view(channelLabel(picture));
        if (!view.empty()) suffix += formatMessage(Message::rVTTitleView, {view});
        if (picture.lut.lutActive) suffix += messageText(Message::rVTTitleCorrected);
    }
    suffix += trackingSuffix(picture);
    if (picture.fileCount > 1)
        suffix += formatMessage(Message::rVTTitleFile, {picture.fileNumber, picture.fileCount});
    return suffix;
}

std::string windowTitle(const ShownPicture& picture) {
    return formatPositional("VisTel: ^1s^2s", {shownSourceName(picture), titleSuffix(picture)});
}

void showTitle(ShownPicture& picture) {
    picture.title = windowTitle(picture);
    setViewerTitle(picture.title);
}

void refreshTitle(ShownPicture& picture) {
    if (windowTitle(picture) != picture.title) showTitle(picture);
}

}  // namespace vistel
