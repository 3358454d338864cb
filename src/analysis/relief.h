// Relief ("bump") shading: a plane of a frame seen as a height field lit from one side, alone or
// multiplied into the colours. Heights are byte 2 of 4-byte pixels: grey views have their value
// there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "analysis/relief_table.h"
#include "analysis/view_mode.h"

namespace vistel {

constexpr int strongestRelief = 256;

// The view that a relief of this slope is: inverted when the slope is above 0.
constexpr ChannelMode reliefViewOf(float slope) {
    return slope > 0 ? ChannelMode::invertedBump : ChannelMode::bump;
}

class ReliefShader {
 public:
    // Shades width x height pixels of `heights` into as many bytes of `shade`. Differences are
    // taken to the pixel on the left (none in the first column) and the pixel of the row before
    // (none in the first row), times slope x -1/4. A flat plane becomes 99 everywhere. Large frames
    // go through a table of all differences, built when the slope changes; `tableWanted` asks for
    // it whatever the size. The shades are the same with and without.
    void shade(const uint32_t* heights, size_t width, size_t height, float slope, bool tableWanted,
               uint8_t* shade);

    // How often the table was built, for tests. It never is where the processor shades faster
    // without.
    unsigned tableBuilds() const { return tableBuilds_; }

    // From how many pixels on the table is used.
    static constexpr size_t largeFrame = 0x20000;

 private:
    const ReliefTable* tableFor(float k);

    std::unique_ptr<ReliefTable> table_;
    unsigned tableBuilds_ = 0;
};

// The picture of a relief: grey, or, with `colour` (stored pixels, null without a colour plane) and
// a strength of 1 to 256, the colours under the relief's light. At full strength the flat parts
// keep nearly their colours; less strength lightens the picture.
void buildReliefView(const uint8_t* shade, const uint32_t* colour, int strength, size_t pixels,
                     uint32_t* view);

// A profile of the heights is drawn over a relief as a line strip on each of these rows.
constexpr size_t profileRowStep = 8;

// Packed colour (red lowest) of the profile of a view; none for the views that have no profile.
std::optional<uint32_t> profileColour(ChannelMode view);

struct ProfilePoint {
    float x, y;  // image pixels
};

// Rows that the largest height rises above its own.
constexpr int profileHeight = 32;

// The line over `row` (of `width` pixels, whose first is at `heights`): `width` points, one above
// each pixel.
void profileOfRow(const uint32_t* heights, size_t width, size_t row, ProfilePoint* points);

}  // namespace vistel
