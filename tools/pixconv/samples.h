// Samples on their way between a file's rows and a picture's: scales, and the order of channels.
#pragma once

#include <cstdint>

#include "picture.h"

namespace vistel {

// A code value of 9 to 16 bits: its upper bits fill the lower ones.
inline uint16_t widenedCode(uint32_t code, uint32_t bits) {
    return uint16_t(code << (16 - bits) | code >> (2 * bits - 16));
}

// A sample on a scale from 0 to `most` (at most 65535) on the one from 0 to `full`, rounded; what
// is above `most` is taken for it.
inline uint32_t rescaled(uint32_t sample, uint32_t most, uint32_t full) {
    if (sample > most) sample = most;
    return uint32_t((uint64_t{sample} * full + most / 2) / most);
}

// Sample i (pixel * 4 + channel) of row y, whatever the picture's width of samples.
inline uint16_t wordSample(const Picture& picture, uint32_t y, size_t i) {
    return picture.wide ? picture.wideRow(y)[i] : wordFromByte(picture.row(y)[i]);
}

// The same as light, 0 to 1.
float lightOfSample(const Picture& picture, uint32_t y, size_t i);

// How a file's channels lie in a picture's four samples: channel i of the file is sample
// `place[i]`. Grey is stored from red.
struct ChannelOrder {
    uint32_t channels;  // 1 to 4
    uint8_t place[4];
};

// Grey, grey and mask, colour, colour and mask: the order of most files.
inline ChannelOrder usualOrder(bool colour, bool mask) {
    if (colour) return {mask ? 4u : 3u, {0, 1, 2, 3}};
    return {mask ? 2u : 1u, {0, 3, 0, 0}};
}

// What a codec leaves open once it has filled what the file holds: grey goes to green and blue, a
// mask that the file lacks becomes all ones.
inline void completeRow(Picture& picture, uint32_t y) {
    const auto complete = [&](auto* row, auto ones) {
        for (size_t i = 0; i < picture.rowSamples(); i += 4) {
            if (!picture.colour) row[i + 1] = row[i + 2] = row[i];
            if (!picture.mask) row[i + 3] = ones;
        }
    };
    if (picture.wide)
        complete(picture.wideRow(y), uint16_t{65535});
    else
        complete(picture.row(y), uint8_t{255});
}

}  // namespace vistel
