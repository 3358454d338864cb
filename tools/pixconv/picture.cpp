#include "picture.h"

#include <array>
#include <bit>
#include <cmath>

#include "iff/tile_format.h"
#include "memory_rule.h"

namespace vistel {

namespace {

Failure take(uint64_t bytes, uint64_t most, auto&& allocation) {
    if (bytes > mostPictureBytes) return "the picture is too large: it would take over 1 GB";
    if (bytes > most) return notJustified(bytes);
    try {
        allocation();
    } catch (const std::bad_alloc&) {
        return "there is not enough memory for the picture";
    }
    return {};
}

// The smallest light that becomes each byte, and for each upper half of a float's bits the byte
// that the smallest float with it becomes.
struct ByteTable {
    static constexpr uint32_t one = std::bit_cast<uint32_t>(1.0f);

    static int rounded(float linear) {
        return static_cast<int>(std::lround(encodedFromLinear(linear) * 255));
    }
    // Floats from 0 up are in the order of their bits.
    static uint32_t smallestThatBecomes(int byte) {
        uint32_t low = 0, high = one;
        while (low < high) {
            const uint32_t middle = low + (high - low) / 2;
            if (rounded(std::bit_cast<float>(middle)) >= byte)
                high = middle;
            else
                low = middle + 1;
        }
        return low;
    }
    ByteTable() {
        for (int byte = 0; byte < 256; ++byte) threshold[byte] = smallestThatBecomes(byte);
        threshold[256] = UINT32_MAX;
        for (uint32_t half = 0, byte = 0; half < start.size(); ++half) {
            while (threshold[byte + 1] <= half << 16) ++byte;
            start[half] = static_cast<uint8_t>(byte);
        }
    }
    std::array<uint32_t, 257> threshold;
    std::array<uint8_t, (one >> 16) + 1> start;
};

}  // namespace

float encodedFromLinear(float linear) {
    if (!(linear > 0)) return 0;
    if (linear >= 1) return 1;
    if (linear <= 0.0031308f) return linear * 12.92f;
    return 1.055f * std::pow(linear, 1 / 2.4f) - 0.055f;
}

float linearFromEncoded(float encoded) {
    if (!(encoded > 0)) return 0;
    if (encoded >= 1) return 1;
    if (encoded <= 0.04045f) return encoded / 12.92f;
    return std::pow((encoded + 0.055f) / 1.055f, 2.4f);
}

uint8_t byteFromLinear(float linear) {
    static const ByteTable table;
    if (!(linear > 0)) return 0;
    if (linear >= 1) return 255;
    const uint32_t bits = std::bit_cast<uint32_t>(linear);
    int byte = table.start[bits >> 16];
    while (table.threshold[byte + 1] <= bits) ++byte;
    return static_cast<uint8_t>(byte);
}

uint8_t byteFromMask(float value) {
    if (!(value > 0)) return 0;
    return value >= 1 ? 255 : static_cast<uint8_t>(value * 255 + 0.5f);
}

Failure Picture::allocate(uint32_t newWidth, uint32_t newHeight, bool isWide) {
    if (newWidth == 0 || newHeight == 0) return "the picture has no pixels";
    if (newWidth > longestTiledSide || newHeight > longestTiledSide)
        return "the picture is too large: " + std::to_string(newWidth) + " x " +
               std::to_string(newHeight) + " pixels, a frame has at most 65535 each way";
    const uint64_t count = uint64_t{newWidth} * newHeight * 4;
    const uint64_t most = mostBytes;
    *this = Picture();
    mostBytes = most;
    width = newWidth;
    height = newHeight;
    wide = isWide;
    return take(isWide ? 2 * count : count, most, [&] {
        if (isWide)
            wideSamples.resize(count);
        else
            samples.resize(count);
    });
}

Failure Picture::allocateZ() {
    const uint64_t pixels = uint64_t{width} * height;
    return take(pixels * (wide ? 12 : 8), mostBytes, [&] { z.resize(pixels); });
}

const uint8_t* Picture::byteRow(uint32_t y, std::vector<uint8_t>& room) const {
    if (!wide) return row(y);
    room.resize(rowSamples());
    const uint16_t* words = wideRow(y);
    for (size_t i = 0; i < room.size(); ++i) room[i] = byteFromWord(words[i]);
    return room.data();
}

}  // namespace vistel
