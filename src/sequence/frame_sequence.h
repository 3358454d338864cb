// Numbered frame files: which exist, how their names are built, where they lie.
#pragma once

#include <cstdio>
#include <vector>

#include "host/tstring.h"
#include "sequence/sequence_state.h"

namespace vistel {

// Finds the numbered files of a stem that ends with a dot. 1 and position.firstFrame, lastFrame,
// frameStep, animation = 1 when at least one exists; else 0 and animation = 0. A base part of dots
// only (".", "..") names a folder and has none.
int discoverNumberedFiles(const FramePlaces& places, const Tstring& stem, FramePosition& position);

// Numbers of the files in searchDirectory whose names begin with the stem's base part, at most
// 4095 (the user is told when there are more); sets padWidth when it is 0 and a number begins with
// 0. Returns the count.
int listNumberedFiles(const Tstring& startDirectory, const Tstring& searchDirectory,
                      const Tstring& stem, std::vector<int>& numbers, int32_t& padWidth);

// For the dialog that opens an animation by one of its frames: turns the frame's name into a "#"
// pattern, in place, and fills the range (its end stays when it is not 0) and the padding.
void patternFromFirstFrame(const Tstring& startDirectory, Tstring& name, FrameRange& range,
                           int32_t& padWidth);

// For the same dialog: name of the k-th frame after the start of the range (k = -1: the last
// frame); empty outside the range or when the pattern has no "#".
Tstring frameName(const Tstring& pattern, const FrameRange& range, int k, int padWidth);

// Sets padWidth from the run of "@" in the base name when it is not known yet. At signs of folders
// say nothing of the number, and a "#" in the base name goes before them.
void takePadWidthFromAtSigns(const Tstring& name, int32_t& padWidth);

// A relative name as one that counts from the folder in which the file argument was given: the
// current folder follows the files that are opened. Absolute names, and all names without such a
// folder, stay as they are.
Tstring fromStartDirectory(const Tstring& startDirectory, const Tstring& name);

// Path of a frame file's name in one search directory.
Tstring frameFilePath(const Tstring& startDirectory, const Tstring& searchDirectory,
                      const Tstring& name);

// Opens the name in the first search directory that has it, and moves that directory to the front.
// `located` receives the path that was opened. Null when no directory has it; errno then tells why.
[[nodiscard]] FILE* locateFrameFile(FramePlaces& places, const Tstring& name, Tstring& located);

}  // namespace vistel
