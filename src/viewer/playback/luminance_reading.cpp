#include "viewer/playback/luminance_reading.h"

#include <algorithm>
#include <memory>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "viewer/picture/title.h"
#include "viewer/playback/frame_display.h"

namespace vistel {

namespace {

// Null when it must be read.
const FrameStore* inMemory(Player& player, int frame) {
    if (const FrameStore* kept = player.slots.find(frame)) return kept;
    const bool onScreen = frame == player.currentFrame && player.mark != SourceMark::unknown;
    return onScreen ? player.shown : nullptr;
}

// Reads frames that are not in memory, some ahead. While it lives Escape ends the reading.
class FrameReading {
 public:
    explicit FrameReading(Player& player)
        : player_(player), ahead_(decodingThreads(), player.converted) {
        const int count = placeOf(player.lastFrame);
        player.loading.progress =
            std::make_unique<Progress>([count, source = shownSourceName(player)](int frame) {
                return formatMessage(Message::rVTReadingCurve, {source, frame, count});
            });
    }
    ~FrameReading() {
        player_.loading = {};
        player_.clock.reset();
        showTitle(player_);
    }
    FrameReading(const FrameReading&) = delete;
    FrameReading& operator=(const FrameReading&) = delete;

    // The frame is empty when it cannot be read.
    FrameStore read(int number) {
        player_.loading.progress->show(placeOf(number));
        ReadTerms terms = readTerms(player_);
        terms.ahead = &ahead_;
        wantFrames(player_, following(number), terms.fit, ahead_);
        FrameStore frame;
        const FrameRead result = readFrame(player_, number, terms, frame);
        const bool bad = result.code != iffOk && result.code != iffNotIff;
        if (bad && platform::mayGoOn(player_.goOn)) tellBadFrame(player_, number, result);
        return frame;
    }

 private:
    // Counted from 1.
    int placeOf(int64_t frame) const {
        return static_cast<int>(std::min<int64_t>(frame - player_.firstFrame + 1, INT32_MAX));
    }
    std::vector<int> following(int64_t frame) {
        std::vector<int> frames;
        for (; frames.size() < ahead_.room() && frame <= player_.lastFrame;
             frame += stepSize(player_)) {
            const int number = static_cast<int>(frame);
            if (!inMemory(player_, number)) frames.push_back(number);
        }
        return frames;
    }

    Player& player_;
    ReadAhead ahead_;
};

}  // namespace

std::optional<std::vector<float>> readLuminance(Player& player, const Pick& pick) {
    std::optional<FrameReading> reading;
    std::vector<float> values;
    for (int64_t frame = player.firstFrame; frame <= player.lastFrame; ++frame) {
        const int number = static_cast<int>(frame);
        const FrameStore* store = inMemory(player, number);
        FrameStore fromFile;
        if (!store && (frame - player.firstFrame) % stepSize(player) == 0) {
            if (!reading) reading.emplace(player);
            fromFile = reading->read(number);
            if (!platform::mayGoOn(player.goOn)) return std::nullopt;
            store = &fromFile;
        }
        values.push_back(store ? pixelLuminance(*store, pick.x, pick.y) : 0);
    }
    return values;
}

}  // namespace vistel
