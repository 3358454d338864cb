// Where a saved frame goes: its path, and the type of file that is made of it.
#pragma once

#include <optional>

#include "host/tstring.h"
#include "platform/go_on.h"
#include "sequence/sequence_state.h"

namespace vistel {

// What is to be written, under which name and in which type. Flags are 0 or 1.
struct Saving {
    Tstring saveName;           // chosen in the save dialog
    int32_t saveNameSet = 0;    // it was: every write uses it from then on
    int32_t saveAnimation = 0;  // the dialog was that of an animation: each frame gets its number
    Tstring saveFormatKey;      // file type chosen there; empty: frames of our own
    int32_t saveAll = 0;        // the next write takes every frame: Save Animation was chosen
    int32_t overwriteMode = 0;  // F11: writes go over the source files
};

// Path for the frame state.currentFrame: the chosen name with the frame's number, else "vistel.out"
// with it, or, in overwrite mode, the name that the source's frames have.
Tstring outputName(const Saving& saving, const SequenceState& state);

// Where a frame is written, or why it is not.
struct OutputTarget {
    Tstring path;
    std::optional<Tstring> formatKey;  // what the converter makes of it; none: a frame of our own
    bool isSource = false;             // the file that the frame is read from
    Tstring refusal;                   // not empty: the frame is not to be written
};

// The target of the frame state.currentFrame. In overwrite mode that is the file which the frame is
// read from, whatever its name, and keeps its type; one that the converter cannot write is refused,
// and so is a source that is no file or holds all frames in one.
OutputTarget outputTarget(const Saving& saving, SequenceState& state, const platform::GoOn& goOn);

}  // namespace vistel
