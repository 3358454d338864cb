// Grey views of single planes and of the luminance: what the viewer shows for one channel, a mask
// or a depth plane. A grey pixel is the same byte in the three colour bytes, opaque. Buffers are
// the caller's.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/view_mode.h"

namespace vistel {

// View of one stored plane. `maskInverted` shows the mask as 255 - byte and leaves the other planes
// alone. `stored` and `view` hold `pixels` pixels; they may be the same.
void buildPlaneView(ChannelMode plane, bool maskInverted, const uint32_t* stored, size_t pixels,
                    uint32_t* view);

// Luminance (red + 2 green + blue) / 4. Works on four pixels at a time; the last pixels % 4 are 0.
// `stored` and `view` may be the same.
void buildLuminanceView(const uint32_t* stored, size_t pixels, uint32_t* view);

// Smallest and largest finite sample; both 0 when there is none.
struct DepthRange {
    float nearest = 0, farthest = 0;
};
DepthRange finiteRange(const float* z, size_t pixels);

// How depth samples become grey.
enum class ZScale {
    wholeRange,  // smallest finite sample white, largest black, linear between
    percentiles  // the same over the 2nd to 98th percentile, so that one outlier does not flatten
                 // it
};

// View of a depth plane. Samples that are not finite are black; when all finite samples are equal
// they are white.
void buildZView(const float* z, size_t pixels, ZScale scale, uint32_t* view);

}  // namespace vistel
