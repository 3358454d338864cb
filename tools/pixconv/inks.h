// Cyan, magenta, yellow and black turned into light, as screens show it: each ink takes its share
// away.
#pragma once

#include <cstdint>
#include <limits>

namespace vistel {

// Of `count` pixels of four samples each that hold the inks, red, green, blue and an opaque mask.
// `noInk` is what stands for none: 0, or the largest sample.
template <class Sample>
void lightOfInks(Sample* pixels, uint32_t count, Sample noInk) {
    constexpr uint64_t full = std::numeric_limits<Sample>::max();
    const auto turn = Sample(noInk ^ full);
    for (; count > 0; --count, pixels += 4) {
        const uint64_t black = Sample(pixels[3] ^ turn);
        for (int i = 0; i < 3; ++i)
            pixels[i] = Sample((uint64_t{Sample(pixels[i] ^ turn)} * black + full / 2) / full);
        pixels[3] = Sample(full);
    }
}

}  // namespace vistel
