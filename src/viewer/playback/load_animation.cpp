#include "viewer/playback/load_animation.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "sequence/frame_reader.h"
#include "sequence/source_choice.h"
#include "viewer/picture/title.h"
#include "viewer/playback/frame_display.h"

namespace vistel {

namespace {

// Frames in a row that cannot be opened for the same reason are one message.
class MissingFrames {
 public:
    ~MissingFrames() { report(); }

    void add(int frame, const FrameRead& read) {
        if (count_ && read.reason != last_.reason) report();
        if (!count_) first_ = frame;
        lastFrame_ = frame;
        last_ = read;
        ++count_;
    }
    void report() {
        if (count_ == 1)
            printError(formatMessage(Message::rVTFrameMissing, {first_, last_.name, last_.reason}));
        if (count_ > 1)
            printError(formatMessage(Message::rVTFramesMissing,
                                     {first_, lastFrame_, last_.name, last_.reason}));
        count_ = 0;
    }
    // So many frames in a row that looking at the folder is worth its while.
    bool longGap() const { return count_ > 0 && count_ % 1000 == 0; }

 private:
    int first_ = 0, lastFrame_ = 0, count_ = 0;
    FrameRead last_;
};

// The frame that is tried after this one. In a long gap those that the folders do not list are
// passed over.
int64_t frameAfter(const Player& player, int frame, MissingFrames& missing) {
    const int64_t step = stepSize(player), next = frame + step;
    if (!missing.longGap() || likelyFrameName(player, frame).empty()) return next;
    const int64_t listed = nextListedFrame(player, frame).value_or(player.lastFrame + step);
    const int64_t last = std::min<int64_t>(listed - 1, player.lastFrame);
    if (last < next) return next;
    for (const int64_t number : {next, frame + (last - frame) / step * step}) {
        const int skipped = static_cast<int>(number);
        missing.add(skipped, {iffNotIff, likelyFrameName(player, skipped), std::strerror(ENOENT)});
    }
    return listed;
}

// False when memory has no room for the frame.
bool loadFrame(Player& player, int number, const ReadTerms& terms, MissingFrames& missing) {
    FrameStore frame;
    const FrameRead read = readFrame(player, number, terms, frame);
    // Nobody wants it any more, and it may be for that only that it failed.
    if (read.code != iffOk && !platform::mayGoOn(player.goOn)) return true;
    if (read.code == iffNotIff) {
        missing.add(number, read);
        return true;
    }
    missing.report();
    if (read.code != iffOk) tellBadFrame(player, number, read);
    if (!frame.hasPicture()) return true;
    if (!player.slots.hasRoomFor(number, frame)) return false;
    player.slots.keep(number, std::move(frame));
    return true;
}

// The frame and those that will be read after it.
std::vector<int> followingFrames(const Player& player, int64_t frame, size_t count) {
    std::vector<int> frames;
    for (; frames.size() < count && frame <= player.lastFrame; frame += stepSize(player))
        frames.push_back(static_cast<int>(frame));
    return frames;
}

}  // namespace

void loadRemainingFrames(Player& player) {
    if (player.kmem <= 0) return;
    const size_t megabytes = player.slots.limit() >> 20;
    const int limit = static_cast<int>(std::min<size_t>(megabytes, INT32_MAX));
    if (player.verbose)
        platform::writeReport(formatMessage(Message::rVTMemoryLimit, {limit}) + "\n", player.goOn);
    const int64_t first = player.currentFrame, step = stepSize(player);
    const auto count = [&](int64_t last) { return static_cast<int>((last - first) / step + 1); };
    player.loading.progress = std::make_unique<Progress>(
        [frames = count(player.lastFrame), source = shownSourceName(player)](int frame) {
            return formatMessage(Message::rVTLoading, {source, frame, frames});
        });
    ReadAhead ahead(decodingThreads(), player.converted);
    ReadTerms terms = readTerms(player);
    terms.ahead = &ahead;
    MissingFrames missing;
    int64_t frame = first + step;
    bool room = true;
    while (frame <= player.lastFrame && platform::mayGoOn(player.goOn)) {
        player.loading.progress->show(count(frame));
        wantFrames(player, followingFrames(player, frame, ahead.room()), terms.fit, ahead);
        room = loadFrame(player, static_cast<int>(frame), terms, missing);
        if (!room) break;
        frame = frameAfter(player, static_cast<int>(frame), missing);
    }
    missing.report();
    if (!room)
        printError(formatMessage(Message::rVTMemoryUsedUp, {static_cast<int>(frame), limit}));
    player.loading = {};
}

}  // namespace vistel
