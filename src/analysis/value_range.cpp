#include "analysis/value_range.h"

#include <algorithm>

namespace vistel {

ValueRange valueRange(const uint32_t* pixels, size_t count) {
    ValueRange range;
    for (size_t i = 0; i < count; ++i) {
        for (int channel = 0; channel < 3; ++channel) {
            const int value = pixels[i] >> (24 - 8 * channel) & 255;
            range.smallest[channel] = std::min(range.smallest[channel], value);
            const int tested = channel > 0     ? value
                               : i + 1 < count ? static_cast<int>(pixels[i + 1] & 255)
                                               : 0;
            if (tested > range.largest[channel]) range.largest[channel] = value;
        }
    }
    return range;
}

}  // namespace vistel
