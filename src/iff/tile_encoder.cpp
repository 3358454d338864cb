#include "iff/tile_encoder.h"

#include <cstring>

namespace vistel {

static constexpr size_t longestPacket = 128;

// How many values from `at` on are equal, up to a packet's length.
template <size_t bytes>
static size_t runLength(const uint8_t* values, size_t at, size_t count, size_t stride) {
    size_t length = 1;
    while (length < longestPacket && at + length < count &&
           std::memcmp(values + at * stride, values + (at + length) * stride, bytes) == 0)
        ++length;
    return length;
}

// Packets over values of 1 or 3 bytes. A run is worth a packet of its own from `worthwhile` values
// on: shorter ones would cost more than they save inside a literal packet.
template <size_t bytes, size_t worthwhile>
static void appendPackets(const uint8_t* values, size_t count, size_t stride,
                          std::vector<uint8_t>& packed) {
    for (size_t at = 0; at < count;) {
        size_t length = runLength<bytes>(values, at, count, stride);
        if (length >= worthwhile) {
            packed.push_back(static_cast<uint8_t>(127 + length));
            packed.insert(packed.end(), values + at * stride, values + at * stride + bytes);
            at += length;
            continue;
        }
        for (length = 1; length < longestPacket && at + length < count; ++length)
            if (runLength<bytes>(values, at + length, count, stride) >= worthwhile) break;
        packed.push_back(static_cast<uint8_t>(length - 1));
        for (; length > 0; --length, ++at)
            packed.insert(packed.end(), values + at * stride, values + at * stride + bytes);
    }
}

void appendRle(const uint8_t* values, size_t count, size_t stride, std::vector<uint8_t>& packed) {
    appendPackets<1, 3>(values, count, stride, packed);
}

// The mask as one run-length coded channel, then the colours row by row, red first.
static void appendQrl(const TileFormat& format, const TileRect& rect, const uint8_t* raw,
                      std::vector<uint8_t>& packed) {
    const size_t width = rect.width(), height = rect.height(), stride = format.pixelBytes();
    const int mask = format.indexOf(channelMask);
    if (mask >= 0) appendRle(raw + mask, width * height, stride, packed);
    std::vector<uint8_t> row(3 * width);
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x, raw += stride) {
            row[3 * x] = raw[format.indexOf(channelRed)];
            row[3 * x + 1] = raw[format.indexOf(channelGreen)];
            row[3 * x + 2] = raw[format.indexOf(channelBlue)];
        }
        appendPackets<3, 2>(row.data(), width, 3, packed);
    }
}

size_t encodeTile(const TileFormat& format, const TileRect& rect, const uint8_t* raw,
                  std::vector<uint8_t>& packed) {
    packed.clear();
    const size_t pixels = size_t{rect.width()} * rect.height();
    if (format.packsWholePixels())
        appendQrl(format, rect, raw, packed);
    else if (format.compression == compressRle || format.compression == compressQrl)
        for (int plane = 0; plane < format.pixelBytes(); ++plane)
            appendRle(raw + plane, pixels, format.pixelBytes(), packed);
    return packed.size() < rawTileSize(format, rect) ? packed.size() : 0;
}

}  // namespace vistel
