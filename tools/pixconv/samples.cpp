#include "samples.h"

#include <array>

namespace vistel {

float lightOfSample(const Picture& picture, uint32_t y, size_t i) {
    static const auto lightOfByte = [] {
        std::array<float, 256> light;
        for (int byte = 0; byte < 256; ++byte) light[byte] = linearFromEncoded(byte / 255.0f);
        return light;
    }();
    return picture.wide ? linearFromEncoded(picture.wideRow(y)[i] / 65535.0f)
                        : lightOfByte[picture.row(y)[i]];
}

}  // namespace vistel
