#include "iff/tile_encoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "iff/tile_kernels.h"

namespace vistel {

// A run is worth a packet of its own from this length on: shorter ones would cost more than they
// save inside a literal packet.
static constexpr size_t shortestByteRun = 3, shortestPixelRun = 2;

// --- bytes, eight at a time ---

static uint64_t eightBytes(const uint8_t* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

static constexpr uint64_t inEveryByte(uint8_t value) { return 0x0101010101010101u * value; }

// A set bit in each byte that is zero; above the lowest such byte there may be others.
static uint64_t zeroBytes(uint64_t word) {
    return (word - inEveryByte(0x01)) & ~word & inEveryByte(0x80);
}

// Number of the lowest byte in which a bit is set.
static size_t lowestByte(uint64_t word) {
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    return static_cast<size_t>(std::countr_zero(word)) / 8;
}

// The first place from `at` on, before `end`, whose value differs from `value`; else `end`.
static size_t endOfRun(const uint8_t* values, size_t at, size_t end, uint8_t value) {
    for (; at + 8 <= end; at += 8)
        if (const uint64_t different = eightBytes(values + at) ^ inEveryByte(value))
            return at + lowestByte(different);
    while (at < end && values[at] == value) ++at;
    return at;
}

// The first place from `at` on, before `end`, at which three equal values begin; else `end`. Values
// are there up to `count`.
static size_t startOfRun(const uint8_t* values, size_t at, size_t end, size_t count) {
    for (; at < end && at + 10 <= count; at += 8) {
        const uint64_t first = eightBytes(values + at);
        const uint64_t different =
            (first ^ eightBytes(values + at + 1)) | (first ^ eightBytes(values + at + 2));
        if (const uint64_t found = zeroBytes(different))
            return std::min(at + lowestByte(found), end);
    }
    for (; at < end && at + 2 < count; ++at)
        if (values[at] == values[at + 1] && values[at] == values[at + 2]) return at;
    return end;
}

// What packets of `count` bytes take at most.
static size_t mostPackedBytes(size_t count) { return count + count / longestPacket + 1; }

// Writes run-length packets; returns the place behind them. `out` has room for mostPackedBytes.
static uint8_t* packBytes(const uint8_t* values, size_t count, uint8_t* out) {
    for (size_t at = 0; at < count;) {
        const size_t end = std::min(count, at + longestPacket);
        const size_t run = endOfRun(values, at, end, values[at]) - at;
        if (run >= shortestByteRun) {
            *out++ = static_cast<uint8_t>(127 + run);
            *out++ = values[at];
            at += run;
            continue;
        }
        const size_t length = startOfRun(values, at + 1, end, count) - at;
        *out++ = static_cast<uint8_t>(length - 1);
        std::memcpy(out, values + at, length);
        out += length;
        at += length;
    }
    return out;
}

static void appendBytes(const uint8_t* values, size_t count, std::vector<uint8_t>& packed) {
    const size_t before = packed.size();
    packed.resize(before + mostPackedBytes(count));
    const uint8_t* end = packBytes(values, count, packed.data() + before);
    packed.resize(static_cast<size_t>(end - packed.data()));
}

void appendRle(const uint8_t* values, size_t count, size_t stride, std::vector<uint8_t>& packed) {
    std::vector<uint8_t> plane(count);
    for (size_t i = 0; i < count; ++i) plane[i] = values[i * stride];
    appendBytes(plane.data(), count, packed);
}

// --- whole tiles ---

// Each byte of the pixels as a plane of its own, one after the other.
template <size_t stride>
static void separate(const uint8_t* raw, size_t pixels, uint8_t* planes) {
    for (size_t i = 0; i < pixels; ++i, raw += stride)
        for (size_t plane = 0; plane < stride; ++plane) planes[plane * pixels + i] = raw[plane];
}

static void separatePlanes(const uint8_t* raw, size_t pixels, size_t stride, uint8_t* planes) {
    switch (stride) {
        case 3:
            return separate<3>(raw, pixels, planes);
        case 4:
            return separate<4>(raw, pixels, planes);
        case 6:
            return separate<6>(raw, pixels, planes);
        case 8:
            return separate<8>(raw, pixels, planes);
    }
    for (size_t plane = 0; plane < stride; ++plane)
        for (size_t i = 0; i < pixels; ++i) planes[plane * pixels + i] = raw[i * stride + plane];
}

static void appendPlanes(const TileFormat& format, size_t pixels, const uint8_t* raw,
                         std::vector<uint8_t>& packed) {
    const size_t stride = static_cast<size_t>(format.pixelBytes());
    std::vector<uint8_t> planes(stride * pixels);
    separatePlanes(raw, pixels, stride, planes.data());
    packed.reserve(stride * mostPackedBytes(pixels));
    for (size_t plane = 0; plane < stride; ++plane)
        appendBytes(planes.data() + plane * pixels, pixels, packed);
}

// Packets over the pixels of a row, three bytes each.
static void appendPixels(const uint8_t* pixels, size_t count, std::vector<uint8_t>& packed) {
    const auto runLength = [&](size_t at) {
        size_t length = 1;
        while (length < longestPacket && at + length < count &&
               std::memcmp(pixels + 3 * at, pixels + 3 * (at + length), 3) == 0)
            ++length;
        return length;
    };
    for (size_t at = 0; at < count;) {
        const size_t run = runLength(at);
        if (run >= shortestPixelRun) {
            packed.push_back(static_cast<uint8_t>(127 + run));
            packed.insert(packed.end(), pixels + 3 * at, pixels + 3 * at + 3);
            at += run;
            continue;
        }
        size_t length = 1;
        while (length < longestPacket && at + length < count &&
               runLength(at + length) < shortestPixelRun)
            ++length;
        packed.push_back(static_cast<uint8_t>(length - 1));
        packed.insert(packed.end(), pixels + 3 * at, pixels + 3 * (at + length));
        at += length;
    }
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
        appendPixels(row.data(), width, packed);
    }
}

size_t encodeTile(const TileFormat& format, const TileRect& rect, const uint8_t* raw,
                  std::vector<uint8_t>& packed) {
    packed.clear();
    const size_t pixels = size_t{rect.width()} * rect.height();
    if (format.packsWholePixels())
        appendQrl(format, rect, raw, packed);
    else if (format.compression == compressRle || format.compression == compressQrl)
        appendPlanes(format, pixels, raw, packed);
    return packed.size() < rawTileSize(format, rect) ? packed.size() : 0;
}

}  // namespace vistel
