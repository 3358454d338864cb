// ColourLut: the display look-up table. One table of 256 bytes for each byte plane of the stored
// pixel; stored frames are never changed, corrected pixels go to a buffer of their own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/display_buffer.h"
#include "analysis/lut_controls.h"
#include "analysis/view_kernels.h"
#include "analysis/view_mode.h"

namespace vistel {

// The table entry of one input value for one channel (0 blue, 1 green, 2 red). With x = input /
// 255:
//
//   saturation   y = (2x - 1)^s / 2 + 1/2 in the upper half, its mirror image in the lower
//   gamma, gain  y = y^gamma * gain
//   offset       y = y + offset / 255
//   negation     y = 1 - y
//   film         y = min(1, 10^(0.0033333 (1023 y - black - 800)))
//   exposure     y = 1 - e^(-4.4 y^0.78125), also after the film conversion
//
// and 255 y rounded and clamped to 0..255. Where a power has no value (a negative number to a
// fractional exponent) the entry is 0.
uint8_t lutEntry(const LutControls& controls, int channel, int input);

class ColourLut {
 public:
    // The identity, out of use.
    ColourLut();

    LutControls controls;    // call build() after changing them
    bool lutActive = false;  // the tables are in use: the controls are not all neutral

    // Builds the three colour tables and sets lutActive. The mask's table stays the identity.
    void build();

    // 256 entries for plane 0 mask, 1 blue, 2 green, 3 red.
    const uint8_t* table(int plane) const { return tables_.plane[plane]; }

    // Writes the corrected bytes of the given planes (bit k stands for plane k) of `pixels` stored
    // pixels; other bytes of `display` keep what they held. The two may be the same.
    void apply(unsigned planes, const uint32_t* stored, size_t pixels, uint32_t* display) const;

    // The pixels to show: the stored ones while the table is not in use, else the corrected copy in
    // `display`, of which only the planes that the view shows are written. Null when there is no
    // memory for the copy.
    [[nodiscard]] const uint32_t* prepare(ChannelMode view, ChannelMode selected,
                                          const uint32_t* stored, size_t pixels,
                                          DisplayBuffer& display) const;

 private:
    ByteTables tables_;
};

// The planes that a view shows, bit k for plane k: a single plane itself; all channels, depth and
// luminance the colours; a relief the selected plane, or all four when it is made from no single
// plane.
unsigned planesOfView(ChannelMode view, ChannelMode selected);

}  // namespace vistel
