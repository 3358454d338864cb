// The demo animation: three shaded balls that roll over a chequered floor at dusk, with a frame
// counter burnt in and a flash on the first frame of each second.
#pragma once

#include <cstdint>
#include <vector>

namespace vistel::demo {

constexpr int framesPerSecond = 24;

// One rendered frame, rows from bottom to top.
struct Picture {
    int width = 0, height = 0;
    std::vector<uint32_t>
        colour;                // red in the lowest byte, then green, blue; mask: 255 on the balls
    std::vector<float> depth;  // distance from the camera, metres; 1000 where nothing is hit
};

// Renders frame `number` (from 1) of a loop of `frames` frames.
Picture renderFrame(int number, int frames, int width, int height);

}  // namespace vistel::demo
