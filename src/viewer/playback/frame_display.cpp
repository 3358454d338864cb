#include "viewer/playback/frame_display.h"

#include <optional>
#include <utility>
#include <vector>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "platform/clock.h"
#include "viewer/picture/display_setup.h"
#include "viewer/picture/title.h"
#include "viewer/playback/stepping.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_layer.h"

namespace vistel {

namespace {

// How far from a frame that is not in memory reading ahead begins; from then on its own room
// counts.
constexpr size_t framesLookedAhead = 4;

// Whether the frames that could be read ahead are all in memory. Allocates nothing: it is asked
// before each frame that is played from there.
bool upcomingInMemory(Player& player) {
    UpcomingFrames upcoming(player);
    const size_t count = player.ahead ? player.ahead->room() : framesLookedAhead;
    for (size_t i = 0; i < count; ++i) {
        const std::optional<int> frame = upcoming.next();
        if (!frame) break;
        if (!player.slots.find(*frame)) return false;
    }
    return true;
}

// Playing reads the frames that follow ahead, where they are not in memory.
void readFollowingAhead(Player& player) {
    if (!playing(player)) return;
    if (!player.ahead)
        player.ahead = std::make_unique<ReadAhead>(decodingThreads(), player.converted);
    std::vector<int> frames = upcomingFrames(player, player.ahead->room());
    frames.insert(frames.begin(), player.currentFrame);
    std::erase_if(frames, [&](int frame) { return player.slots.find(frame) != nullptr; });
    wantFrames(player, frames, currentDisplayFit(player), *player.ahead);
}

// Null, with the code in `result`, when there is nothing of it.
FrameStore* readCurrentFrame(Player& player, Retry retry, int& result) {
    player.readStarted = platform::tickMilliseconds();
    readFollowingAhead(player);
    ReadTerms terms = readTerms(player);
    terms.retry = retry;
    FrameStore frame;
    const FrameRead read = readFrame(player, player.currentFrame, terms, frame);
    result = read.code;
    // The status line tells of a frame that is not there, and nobody asks why one was given up.
    const bool bad = result != iffOk && result != iffNotIff && result != iffAborted;
    if (bad && platform::mayGoOn(player.goOn)) tellBadFrame(player, player.currentFrame, read);
    if (result != iffOk && !frame.hasPicture()) return nullptr;
    return &keepFrame(player, player.currentFrame, std::move(frame));
}

FrameShown show(Player& player, FrameStore& frame, SourceMark mark, Refit refit) {
    player.mark = mark;
    setUpDisplay(player, frame, refit);
    if (!playing(player)) showTitle(player);
    return FrameShown::yes;
}

FrameShown reload(Player& player, bool quietly) {
    if (!quietly) showMessageBand(messageText(Message::rVTReloadingImage));
    int result = iffOk;
    if (FrameStore* frame = readCurrentFrame(player, Retry::asked, result))
        return show(player, *frame, SourceMark::disk, Refit::fitWindow);
    if (result == iffAborted) {  // a key did not want to wait
        restoreFrontImage();
        return FrameShown::unchanged;
    }
    showMessageBand(messageText(Message::rVTFileRemoved));
    player.bandShown = true;
    return FrameShown::unchanged;
}

}  // namespace

FrameShown showCurrentFrame(Player& player, FrameSource source) {
    if (source != FrameSource::kept) return reload(player, source == FrameSource::fileQuietly);
    FrameStore* kept = player.slots.find(player.currentFrame);
    if (kept && !player.incomplete.haveChanged(player.currentFrame)) {
        if (playing(player) && !upcomingInMemory(player)) readFollowingAhead(player);
        return show(player, *kept, SourceMark::memory, Refit::growWindow);
    }
    int result = iffOk;
    if (FrameStore* frame = readCurrentFrame(player, Retry::never, result))
        return show(player, *frame, SourceMark::disk, Refit::growWindow);
    kept = player.slots.find(player.currentFrame);
    if (kept) return show(player, *kept, SourceMark::memory, Refit::growWindow);
    player.mark = SourceMark::unknown;
    return result == iffAborted ? FrameShown::givenUp : FrameShown::unreadable;
}

bool keepFittingFrames(Player& player) {
    const DisplayFit fit = currentDisplayFit(player);
    const auto fits = [&](const FrameStore& frame) {
        const DisplaySize size = displaySize(frame.header.width, frame.header.height, fit);
        return static_cast<int>(size.shrink) == frame.shrink;
    };
    player.slots.dropWhere(
        [&](const FrameStore& frame) { return &frame != player.shown && !fits(frame); });
    return !player.shown || fits(*player.shown);
}

FrameStore& keepFrame(Player& player, int number, FrameStore&& frame) {
    if (player.kmem > 0 && player.slots.hasRoomFor(number, frame))
        return player.slots.keep(number, std::move(frame));
    player.slots.drop(number);  // what it held is out of date
    return player.loose = std::move(frame);
}

ReadTerms readTerms(const Player& player) {
    return {currentDisplayFit(player), player.goOn, player.ahead.get(), Retry::never};
}

}  // namespace vistel
