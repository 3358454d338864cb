// Numbered frame files: which exist, how their names are built, where they lie.
#pragma once

#include <cstdio>
#include <vector>

#include "host/tstring.h"
#include "sequence/sequence_state.h"

namespace vistel {

// Finds the numbered files of a stem that ends with a dot. 1 and position.firstFrame, lastFrame,
// frameStep, animation = 1 when at least one exists; else 0 and animation = 0. When all of them
// have the same suffix behind the number, so have the names of the frames (position.nameParts). A
// base part of dots only (".", "..") names a folder and has none.
int discoverNumberedFiles(const FramePlaces& places, const Tstring& stem, FramePosition& position);

// What a name stands for. A stem that ends with a dot: its numbered files, as above. Without a
// range (position.animation is 0) a pattern (see frame_pattern.h) that is no file's own name: the
// files that fit it become the range. With a range "%04d" is a pattern when only that finds a
// frame. 1 when the name stands for frames in one of these ways; what else it could have meant is
// told on standard error.
int discoverFrames(const FramePlaces& places, const Tstring& name, FramePosition& position);

// For the dialog that opens an animation by one of its frames: turns the frame's name into a "#"
// pattern, in place, and fills the range (its end stays when it is not 0) and the padding.
void patternFromFirstFrame(const Tstring& startDirectory, Tstring& name, FrameRange& range,
                           int32_t& padWidth);

// For the same dialog: name of the k-th frame after the start of the range (k = -1: the last
// frame); empty outside the range or when the pattern has no "#". The interface is whole: the
// dialog asks for the range alone.
Tstring frameName(const Tstring& pattern, const FrameRange& range, int k, int padWidth);

// Sets padWidth from the run of "@" in the base name when it is not known yet. At signs of folders
// say nothing of the number, and a "#" in the base name goes before them.
void takePadWidthFromAtSigns(const Tstring& name, int32_t& padWidth);

// Opens the name in the first search directory that has it, and moves that directory to the front.
// `located` receives the path that was opened. Null when no directory has it; errno then tells why.
[[nodiscard]] FILE* locateFrameFile(FramePlaces& places, const Tstring& name, Tstring& located);

}  // namespace vistel
