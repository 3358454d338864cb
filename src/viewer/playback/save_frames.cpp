#include "viewer/playback/save_frames.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "analysis/strokes.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "platform/clock.h"
#include "sequence/frame_reader.h"
#include "sequence/frame_writer.h"
#include "viewer/picture/title.h"
#include "viewer/playback/frame_display.h"
#include "viewer/playback/present_frame.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

using std::chrono::milliseconds;

// How long a converter may go on with its file after it was asked to stop.
constexpr uint32_t patience = 2000;  // milliseconds
// Converters that fail one after the other will go on failing.
constexpr int mostFailuresInARow = 3;

void tell(Player& player, const Tstring& text) {
    showMessageBand(text);
    player.bandShown = true;
}

// The frame is written on a thread of its own, so that nothing which is slow holds up the window.
FrameWritten writeServingWindow(Player& player, FrameWriter& writer, const FrameStore& frame) {
    const auto write = [&] { return writer.write(frame, player.lut.controls.maskInverted); };
    std::future<FrameWritten> written;
    try {
        written = std::async(std::launch::async, write);
    } catch (const std::system_error&) {  // no thread was to be had
        return write();
    }
    std::optional<uint32_t> asked;  // tick at which it was asked to stop
    while (written.wait_for(milliseconds(10)) != std::future_status::ready) {
        const uint32_t now = platform::tickMilliseconds();
        if (!platform::mayGoOn(player.goOn) && !asked) asked = now;
        if (asked && now - *asked > patience) writer.stop();
    }
    return written.get();
}

// The frame as large as its file has it, when it was made smaller to fit the screen. What was
// painted is painted on it again. Null with the reason in `read` when it cannot be read.
const FrameStore* wholeFrame(Player& player, FrameStore& room, FrameRead& read) {
    const FrameStore& shown = *player.shown;
    if (shown.shrink <= std::max(1, player.rfact)) return &shown;
    ReadTerms terms = readTerms(player);
    terms.fit = {.shrink = static_cast<uint32_t>(std::max(1, player.rfact))};
    terms.ahead = nullptr;
    read = readFrame(player, player.currentFrame, terms, room);
    if (read.code != iffOk) return nullptr;
    for (const Stroke& stroke : shown.strokes)
        paintStroke(stroke, room, shown.shrink / room.shrink);
    return &room;
}

FrameWritten notWritten(const OutputTarget& target, const Tstring& reason) {
    printError(formatMessage(Message::rVTNotWritten, {target.path, reason}));
    return {iffClientError, reason, false};
}

// Writes the frame that is shown, with the lines that tell of it.
FrameWritten writeShown(Player& player, OutputTarget& target) {
    target = outputTarget(player, player);
    if (!target.refusal.empty()) return notWritten(target, target.refusal);
    FrameStore room;
    FrameRead read;
    const FrameStore* whole = wholeFrame(player, room, read);
    const FrameStore& shown = *player.shown;
    const int fullWidth = static_cast<int>(shown.header.width);
    const int fullHeight = static_cast<int>(shown.header.height);
    if (!whole && target.isSource)
        return notWritten(
            target, formatMessage(Message::rVTSmallerRefused,
                                  {shown.width, shown.height, fullWidth, fullHeight, read.reason}));
    FrameWriter writer;
    if (!writer.open(target)) {
        const Tstring reason = std::strerror(errno);
        printError(target.path + ": " + reason);
        return {iffIoError, reason, true};
    }
    tell(player, messageText(Message::rVTWritingImage));
    printError(formatMessage(Message::rVTWritingFile, {target.path}));
    FrameWritten written = writeServingWindow(player, writer, whole ? *whole : shown);
    if (written.code != iffOk) {
        printError(formatMessage(Message::rVTNotWritten, {target.path, written.reason}));
        return written;
    }
    printError(messageText(Message::rVTDone));
    const bool depthLost = shown.header.has(imageZ) && !shown.colour.empty();
    if (target.isSource && (depthLost || shown.header.wideChannels))
        printError(formatMessage(Message::rVTWrittenLess, {target.path}));
    if (!whole)
        printError(formatMessage(
            Message::rVTWrittenSmaller,
            {target.path, shown.width, shown.height, fullWidth, fullHeight, read.reason}));
    return written;
}

// What becomes of a range that is being saved.
struct RangeSummary {
    int wanted = 0, written = 0;
    int failuresInARow = 0;
    std::vector<int> failed;

    // Whether the following frames should be tried.
    bool add(int frame, const FrameWritten& result) {
        const bool good = result.code == iffOk;
        written += good;
        failuresInARow = good ? 0 : failuresInARow + 1;
        if (!good) failed.push_back(frame);
        return !result.byPlace && failuresInARow < mostFailuresInARow;
    }
    Tstring text() const {
        if (failed.empty()) return formatMessage(Message::rVTFramesWritten, {written, wanted});
        std::string numbers;
        for (const int frame : failed)
            numbers += (numbers.empty() ? "" : ", ") + std::to_string(frame);
        return formatMessage(Message::rVTFramesNotWritten, {written, wanted, numbers});
    }
};

// From now on Escape ends the saving.
void beginProgress(Player& player, int frames) {
    player.loading.progress =
        std::make_unique<Progress>([frames, source = shownSourceName(player)](int frame) {
            return formatMessage(Message::rVTSaving, {source, frame, frames});
        });
}

// Whether the frame is on screen now.
bool bring(Player& player, int frame, RangeSummary& summary) {
    player.currentFrame = frame;
    const bool shown = showCurrentFrame(player, FrameSource::kept) == FrameShown::yes;
    presentFrame(player);
    if (shown) return true;
    printError(
        formatMessage(Message::rVTFrameNotWritten, {frame, messageText(Message::rVTFileRemoved)}));
    summary.failed.push_back(frame);
    return false;
}

}  // namespace

void saveShownFrame(Player& player) {
    if (!player.shown) return;
    beginProgress(player, 1);
    OutputTarget target;
    const FrameWritten written = writeShown(player, target);
    player.loading = {};
    tell(player, written.code == iffOk
                     ? formatMessage(Message::rVTWritten, {target.path})
                     : formatMessage(Message::rVTNotWritten, {target.path, written.reason}));
}

void saveRange(Player& player) {
    if (!player.shown) return;
    const int step = stepSize(player);
    player.paused = 0;
    player.playMode = PlayMode::forward;
    RangeSummary summary;
    const int64_t distance = int64_t{player.playLast} - player.playFirst;
    summary.wanted = static_cast<int>(std::min<int64_t>(distance / step + 1, INT32_MAX));
    beginProgress(player, summary.wanted);
    bool goOn = true;
    for (int count = 0; goOn && count < summary.wanted; ++count) {
        player.loading.progress->show(count + 1);
        if (!bring(player, player.playFirst + count * step, summary)) continue;
        OutputTarget target;
        goOn = summary.add(player.currentFrame, writeShown(player, target)) &&
               platform::mayGoOn(player.goOn);
    }
    player.loading = {};
    player.playMode = PlayMode::stopped;
    presentFrame(player);
    if (!windowContext().quit) showTitle(player);
    printError(summary.text());
    tell(player, summary.text());
}

}  // namespace vistel
