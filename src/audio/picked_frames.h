// Frames of sound at another speed: output frame i is input frame i x speed, rounded down.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

// Picks `count` output frames out of `available` input ones; beyond the last it is the last that
// counts. Input and output may be the same memory for speeds below 1, where it goes from the last
// frame down; above 1 they must not overlap.
void pickFrames(const uint8_t* input, int64_t available, size_t frameBytes, double speed,
                uint8_t* output, int64_t count);

}  // namespace vistel
