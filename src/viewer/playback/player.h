// Playing, and the frames that it shows: the record that everything in this folder works on, and
// all that it knows of the rest of the program.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>

#include "audio/sound.h"
#include "audio/sound_options.h"
#include "host/tstring.h"
#include "platform/go_on.h"
#include "sequence/output_name.h"
#include "sequence/read_ahead.h"
#include "viewer/picture/picture.h"
#include "viewer/playback/frame_slots.h"
#include "viewer/playback/playback_clock.h"
#include "viewer/playback/progress.h"

namespace vistel {

enum class PlayMode : int32_t { stopped = 0, forward = 1, backward = 2 };

// Where the shown frame came from.
enum class SourceMark { memory, disk, unknown };

// Flags are 0 or 1.
struct Playing {
    PlayMode playMode = PlayMode::stopped;
    int32_t paused = 0;
    int32_t pingPong = 0;         // S: reverse at the range ends instead of wrapping
    int32_t playOnce = 0;         // Alt with the play keys
    int32_t frameSkip = 0;        // T: skip frames when behind the clock
    int32_t frameRate = 24;       // in force, frames per second, 1..300
    int32_t startFrameRate = 24;  // chosen at start
};

// What is known of the frames of one source, forgotten with it.
struct PlayerSession {
    FrameSlots slots;                  // used while kmem > 0
    FrameStore loose;                  // the frame on screen otherwise
    std::unique_ptr<ReadAhead> ahead;  // while frames are played from their files
    FpsMeter fps;
    SourceMark mark = SourceMark::memory;
    bool jumpToEnds = false;    // the next step goes to the range's start or end
    bool wentBackward = false;  // a step back was made since the last pass
    uint32_t readStarted = 0;   // tick at which a frame began to be read again
};

// A range that is being loaded or saved.
struct Loading {
    std::unique_ptr<Progress> progress;  // null: none is
    bool stopped = false;                // the user ended it
};

// The sound that was loaded, which outlives sources.
struct SoundPlaying {
    std::unique_ptr<Sound> sound;
    std::unique_ptr<Sound> nextSound;  // of the next pass, loaded ahead; null: not yet
    std::optional<int> soundFrame;     // whose part was fed last
    std::optional<int> soundStart;     // the frame with which it began, since it was loaded
    bool soundBehind = false;          // the pictures went backward, in silence
    bool soundGoesOn = false;          // with the last picture: others were to follow
    bool silenceTold = false;          // since it was loaded for the first time
};

struct Player : ShownPicture, Playing, Saving, SoundOptions, SoundPlaying, PlayerSession {
    PlaybackClock clock;
    Loading loading;
    platform::GoOn goOn;  // asked while a frame is read: serves the window
};

// An animation that is running, not paused.
inline bool playing(const Playing& state) {
    return state.playMode != PlayMode::stopped && !state.paused;
}

// Frames per second in force, at least 1.
inline int effectiveFrameRate(const Playing& state) { return std::max(1, state.frameRate); }

// Frames of one step, at least 1.
inline int stepSize(const FramePosition& position) { return std::max(1, position.frameStep); }

}  // namespace vistel
