// What is shown of a frame.
#pragma once

#include <cstdint>

namespace vistel {

// The numbers of the first four are those of the stored planes.
enum class ChannelMode : int32_t {
    matte = 0,
    blue = 1,
    green = 2,
    red = 3,
    all = 4,
    zBuffer = 5,
    luminance = 6,
    invertedBump = 7,
    bump = 8,
};

constexpr bool isSinglePlane(ChannelMode mode) { return mode < ChannelMode::all; }
constexpr bool isRelief(ChannelMode mode) { return mode > ChannelMode::luminance; }

// The stored plane that a single-plane view shows: 0 mask, 1 blue, 2 green, 3 red.
constexpr int planeOf(ChannelMode mode) { return static_cast<int>(mode); }

}  // namespace vistel
