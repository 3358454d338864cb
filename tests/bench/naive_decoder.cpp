#include "naive_decoder.h"

#include <cstring>

namespace vistel::bench {

// Channel 0, the mask, is the last byte of a pixel, the colours are the first three.
static size_t byteOfChannel(int channel) { return static_cast<size_t>(channel + 3) & 3; }

void NaiveDecoder::unpack(size_t width, size_t height, const std::vector<uint8_t>& data) {
    const uint8_t* in = data.data();
    const uint8_t* const end = in + data.size();
    for (int channel = 0; channel < 4; ++channel) {
        uint8_t* out = tile_.data() + byteOfChannel(channel);
        size_t left = width * height;
        while (left > 0 && in < end) {
            const uint8_t control = *in++;
            const size_t count = (control & 127u) + 1;
            if (count > left) return;
            left -= count;
            if (control < 128) {
                for (size_t i = 0; i < count && in < end; ++i, out += 4) *out = *in++;
            } else if (in < end) {
                const uint8_t value = *in++;
                for (size_t i = 0; i < count; ++i, out += 4) *out = value;
            }
        }
    }
}

void NaiveDecoder::placeTile(const TileRect& rect, const std::vector<uint8_t>& data,
                             uint32_t* plane, size_t rowPixels) {
    const size_t width = rect.width(), height = rect.height();
    tile_.resize(width * height * 4);
    if (data.size() == tile_.size()) {
        for (size_t i = 0; i < data.size(); i += 4)
            for (int channel = 0; channel < 4; ++channel)
                tile_[i + byteOfChannel(channel)] = data[i + static_cast<size_t>(channel)];
    } else {
        unpack(width, height, data);
    }
    for (size_t y = 0; y < height; ++y)
        std::memcpy(plane + (rect.y1 + y) * rowPixels + rect.x1, tile_.data() + y * width * 4,
                    width * 4);
}

void NaiveDecoder::exchange(uint32_t* plane, size_t pixels) {
    auto* bytes = reinterpret_cast<uint8_t*>(plane);
    for (size_t i = 0; i < pixels; ++i, bytes += 4) {
        const uint8_t first = bytes[0];
        bytes[0] = bytes[2];
        bytes[2] = first;
    }
}

}  // namespace vistel::bench
