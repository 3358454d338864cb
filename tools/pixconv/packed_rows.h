// Rows as most files store them: without the channels that a picture does not have.
#pragma once

#include <cstdint>
#include <cstring>

#include "picture.h"

namespace vistel {

// 1 grey, 2 grey and mask, 3 colour, 4 colour and mask.
inline int channelsOf(const Picture& picture) {
    return (picture.colour ? 3 : 1) + (picture.mask ? 1 : 0);
}

// The channels of a row of four-sample pixels, one pixel after the other.
template <class Sample>
void packRow(const Sample* pixels, uint32_t width, int channels, Sample* out) {
    if (channels == 4) std::memcpy(out, pixels, size_t{width} * 4 * sizeof(Sample));
    for (uint32_t x = 0; channels < 4 && x < width; ++x, pixels += 4) {
        *out++ = pixels[0];
        if (channels == 3) *out++ = pixels[1];
        if (channels == 3) *out++ = pixels[2];
        if (channels == 2) *out++ = pixels[3];
    }
}

// The other way, from a file's row of `stride` samples a pixel, of which the first `channels`
// count.
template <class Sample>
void unpackRow(const Sample* in, uint32_t width, int stride, int channels, Sample* pixels) {
    constexpr Sample ones = static_cast<Sample>(-1);
    for (uint32_t x = 0; x < width; ++x, in += stride, pixels += 4) {
        const bool colour = channels >= 3;
        pixels[0] = in[0];
        pixels[1] = colour ? in[1] : in[0];
        pixels[2] = colour ? in[2] : in[0];
        pixels[3] = channels == 4 ? in[3] : channels == 2 ? in[1] : ones;
    }
}

}  // namespace vistel
