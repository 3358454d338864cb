// Bringing the current frame to the screen: from its slot, or from its file.
#pragma once

#include "sequence/frame_reader.h"
#include "viewer/playback/player.h"

namespace vistel {

enum class FrameSource {
    kept,         // from memory; from the file when it is not there
    file,         // from the file, with a message band while it is read
    fileQuietly,  // the same without the band
};

enum class FrameShown {
    yes,
    unreadable,  // the picture before it stays; the status line tells
    givenUp,     // the same: an event did not want to wait for it
    unchanged,   // it was not read from its file again; the picture stays as it was
};

// Shows the frame player.currentFrame.
FrameShown showCurrentFrame(Player& player, FrameSource source);

// Empties the slots of frames that their reader would shrink otherwise now than it did: full screen
// and full resolution have other limits than a window. They are read again when they are shown. The
// frame on screen stays; false when it should be read again, too.
bool keepFittingFrames(Player& player);

// Puts a frame that was read into its slot, or into the one loose store when frames are not kept or
// memory is used up.
FrameStore& keepFrame(Player& player, int number, FrameStore&& frame);

// How the frames of the source on screen are read.
ReadTerms readTerms(const Player& player);

}  // namespace vistel
