// What the command line says beyond the fields of the viewer's state.
#pragma once

#include <cstddef>
#include <vector>

#include "host/tstring.h"
#include "sequence/sequence_state.h"

namespace vistel {

// How start-up goes on after the options.
enum class StartUpOutcome { goOn, helpWanted, versionWanted, usageWanted };

struct CommandLine {
    std::vector<Tstring> words;  // all words, the program's name first
    size_t firstFile = 1;        // index of the first file argument in `words`

    Tstring playFormat;  // -r; empty when absent
    FrameRange range;    // -n
    bool rangeGiven = false;

    StartUpOutcome outcome = StartUpOutcome::goOn;
    Tstring complaint;  // what the usage ends with, one line
};

}  // namespace vistel
