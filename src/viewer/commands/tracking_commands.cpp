#include "viewer/commands/tracking_commands.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/messages.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "viewer/picture/point_mark.h"
#include "viewer/picture/title.h"
#include "viewer/playback/luminance_reading.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

constexpr uint32_t patience = 300;  // milliseconds until a reader that does not read is told of

// Writes text for other programs at once. Escape gives up one that does not read.
void writeOutput(Viewer& viewer, const std::string& text) {
    const uint32_t start = platform::tickMilliseconds();
    const auto goOn = [&] {
        auto& progress = viewer.loading.progress;
        if (!progress && platform::tickMilliseconds() - start > patience) {
            progress = std::make_unique<Progress>(
                [](int) { return messageText(Message::rVTAwaitingReader); });
            progress->show(1);
        }
        return platform::mayGoOn(viewer.goOn);
    };
    platform::writeReport(text, goOn);
    viewer.outputGivenUp |= viewer.loading.stopped;
    if (viewer.outputGivenUp || std::ferror(stdout))
        printError(messageText(Message::rVTOutputLost));
    if (!viewer.loading.progress) return;
    viewer.loading = {};
    showTitle(viewer);
}

void writeLuminanceCurve(Viewer& viewer, const Pick& pick) {
    const std::optional<std::vector<float>> values = readLuminance(viewer, pick);
    if (!values) return printError(messageText(Message::rVTCurveStopped));
    writeOutput(viewer, luminanceCurve(pick, viewer.tracking.origin, viewer.firstFrame, *values));
}

void tellPlace(const Viewer& viewer, const ImagePoint& point) {
    const ImageOrigin& origin = viewer.tracking.origin;
    const WindowPoint window = cursorInWindow();
    printError(formatMessage(Message::rVTPrintData, {viewer.currentFrame, point.x + origin.x,
                                                     point.y + origin.y, window.x, window.y}));
}

// Until the picture is drawn again.
void showPoint(Viewer& viewer, const ImagePoint& point) {
    showOverlay([&] { drawPointMark(viewer.layout, point); });
    viewer.bandShown = true;
}

}  // namespace

bool toggleTracking(Viewer& viewer, const Press&, int) {
    if (viewer.firstFrame == viewer.lastFrame) return false;
    Tracking& tracking = viewer.tracking;
    tracking.on = !tracking.on;
    const Tstring state = onOrOff(tracking.on);
    printError(playing(viewer) ? formatMessage(Message::rVTAutoTrackingMode, {state})
                               : formatMessage(Message::rVTTrackingMode, {state}));
    if (!tracking.room) tracking.room = int64_t{viewer.lastFrame} - viewer.firstFrame + 1;
    showCrossCursor(tracking.on);
    return true;  // marks come or go
}

bool toggleLuminanceCurve(Viewer& viewer, const Press&, int) {
    bool& on = viewer.tracking.luminanceCurve;
    on = !on;
    printError(formatMessage(Message::rVTLumCurve, {onOrOff(on)}));
    return false;
}

bool pickPoint(Viewer& viewer, const Press&, int) {
    if (!viewer.shown) return false;
    const ImagePoint point = pointUnderCursor(viewer.layout);
    const Pick pick{float(point.x), float(point.y), viewer.shown->shrink};
    Tracking& tracking = viewer.tracking;
    if (tracking.luminanceCurve)
        writeLuminanceCurve(viewer, pick);
    else
        tellPlace(viewer, point);
    if (tracking.luminanceCurve || !tracking.on) {
        showPoint(viewer, point);
        return false;
    }
    if (tracking.keep(int64_t{viewer.currentFrame} - viewer.firstFrame, pick)) return true;
    const int room = static_cast<int>(std::min<int64_t>(*tracking.room, INT32_MAX));
    printError(formatMessage(Message::rVTPickNotKept, {viewer.currentFrame, room}));
    return false;
}

bool writeTracking(Viewer& viewer, const Press&, int) {
    const Tracking& tracking = viewer.tracking;
    if (viewer.firstFrame == viewer.lastFrame || !tracking.room || !viewer.shown) return false;
    printError(messageText(Message::rVTWriteTrackData));
    const std::vector<TrackedPoint> points =
        trackedPoints(tracking, viewer.firstFrame, viewer.lastFrame, viewer.shown->shrink);
    writeOutput(viewer, playing(viewer) ? panCurves(messageText(Message::rVTPanXLinear), points)
                                        : trackingLines(points));
    return false;
}

}  // namespace vistel
