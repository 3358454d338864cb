// Names in which a user writes where the frame number stands. Pure functions: no state, no files.
//
//   shot.#.png              any number; padded to four digits or as the files are
//   shot.@@@.png            as many digits as there are at signs
//   shot.%04d.png           padded to four digits; %d: unpadded
//   shot.0001-0100.png      the numbers from 1 to 100, padded as the first of them or as the files
//   are
//
// Only the base name is looked at, and the first of these that it holds.
#pragma once

#include <limits>
#include <optional>

#include "host/tstring.h"
#include "sequence/frame_name.h"
#include "sequence/sequence_state.h"

namespace vistel {

struct FramePattern {
    NameParts parts;
    int width = 0;             // digits; 0 and 1: unpadded
    bool anyWidth = false;     // files that are padded otherwise fit as well
    bool printfStyle = false;  // "%04d": nothing else reads it as a mark
    bool rangeWritten = false;
    int first = std::numeric_limits<int>::min(), last = std::numeric_limits<int>::max();
};

// None for a name that holds none of them.
std::optional<FramePattern> readFramePattern(const Tstring& name);

// The name that stands for the numbers of this width between the parts, with a range and without.
// Empty when there is none, because the parts hold marks themselves.
Tstring writtenPattern(const NameParts& parts, int width);

}  // namespace vistel
