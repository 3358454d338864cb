#include "iff/tile_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

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

// Copies the values from `at` on to `out`, up to the first place after it, before `end`, at which
// three equal values begin; returns that place, else `end`. Values are there up to `count`; up to
// seven bytes more than those are written.
static size_t copyUpToRun(const uint8_t* values, size_t at, size_t end, size_t count,
                          uint8_t* out) {
    *out++ = values[at++];
    for (; at < end && at + 10 <= count; at += 8, out += 8) {
        const uint64_t first = eightBytes(values + at);
        std::memcpy(out, &first, sizeof first);
        const uint64_t different =
            (first ^ eightBytes(values + at + 1)) | (first ^ eightBytes(values + at + 2));
        if (const uint64_t found = zeroBytes(different))
            return std::min(at + lowestByte(found), end);
    }
    for (; at < end; ++at) {
        if (at + 2 < count && values[at] == values[at + 1] && values[at] == values[at + 2])
            return at;
        *out++ = values[at];
    }
    return end;
}

uint8_t* packRle(const uint8_t* values, size_t count, uint8_t* out) {
    for (size_t at = 0; at < count;) {
        const size_t end = std::min(count, at + longestPacket);
        const size_t run = endOfRun(values, at, end, values[at]) - at;
        if (run >= shortestByteRun) {
            *out++ = static_cast<uint8_t>(127 + run);
            *out++ = values[at];
            at += run;
            continue;
        }
        const size_t length = copyUpToRun(values, at, end, count, out + 1) - at;
        *out = static_cast<uint8_t>(length - 1);
        out += 1 + length;
        at += length;
    }
    return out;
}

// --- whole tiles ---

// Each byte of the pixels as a plane of its own in `room`, which has room for four at least; the
// planes in the file's order.
static std::array<const uint8_t*, 8> separatePlanes(const TileSource& source, size_t bytes,
                                                    const TileRect& rect, uint8_t* room) {
    const size_t width = rect.width(), count = width * rect.height();
    const bool ofFour = source.pixelBytes == 4;
    std::array<const uint8_t*, 8> planes{};
    for (size_t i = 0; i < bytes; ++i) planes[i] = room + (ofFour ? source.order[i] : i) * count;
    for (size_t y = 0; y < rect.height(); ++y, room += width) {
        const uint8_t* row = source.pixels + y * source.rowBytes;
        if (ofFour) {
            uint8_t* const all[4] = {room, room + count, room + 2 * count, room + 3 * count};
            tileKernels().separate(row, width, all);
            continue;
        }
        for (size_t i = 0; i < bytes; ++i)
            for (size_t x = 0; x < width; ++x)
                room[i * count + x] = row[x * source.pixelBytes + source.order[i]];
    }
    return planes;
}

// The pixels one after the other, each in the file's order.
static uint8_t* copyWhole(const TileSource& source, size_t bytes, const TileRect& rect,
                          uint8_t* out) {
    constexpr std::array<uint8_t, 8> asTheyLie = TileSource().order;
    const bool copied = bytes == source.pixelBytes && source.order == asTheyLie;
    for (size_t y = 0; y < rect.height(); ++y) {
        const uint8_t* pixel = source.pixels + y * source.rowBytes;
        if (copied) {
            out = std::copy_n(pixel, bytes * rect.width(), out);
            continue;
        }
        for (size_t x = 0; x < rect.width(); ++x, pixel += source.pixelBytes)
            for (size_t i = 0; i < bytes; ++i) *out++ = pixel[source.order[i]];
    }
    return out;
}

// Packets over the pixels of a row, three bytes each.
static uint8_t* packPixels(const uint8_t* pixels, size_t count, uint8_t* out) {
    const auto runLength = [&](size_t at) {
        size_t length = 1;
        while (length < longestPacket && at + length < count &&
               std::memcmp(pixels + 3 * at, pixels + 3 * (at + length), 3) == 0)
            ++length;
        return length;
    };
    const auto add = [&](size_t head, size_t at, size_t length) {
        *out++ = static_cast<uint8_t>(head);
        out = std::copy_n(pixels + 3 * at, 3 * length, out);
    };
    for (size_t at = 0; at < count;) {
        const size_t run = runLength(at);
        if (run >= shortestPixelRun) {
            add(127 + run, at, 1);
            at += run;
            continue;
        }
        size_t length = 1;
        while (length < longestPacket && at + length < count &&
               runLength(at + length) < shortestPixelRun)
            ++length;
        add(length - 1, at, length);
        at += length;
    }
    return out;
}

// The mask as one run-length coded channel, then the colours row by row, red first. `scratch` has
// room for four bytes of each pixel.
static uint8_t* packQrl(const TileFormat& format, const TileSource& source, const TileRect& rect,
                        uint8_t* scratch, uint8_t* out) {
    const auto placeOf = [&](FileChannel channel) {
        return source.order[static_cast<size_t>(format.indexOf(channel))];
    };
    if (format.indexOf(channelMask) >= 0) {
        TileSource mask = source;
        mask.order[0] = placeOf(channelMask);
        const uint8_t* const plane = separatePlanes(mask, 1, rect, scratch)[0];
        out = packRle(plane, size_t{rect.width()} * rect.height(), out);
    }
    TileSource colours = source;
    colours.order = {placeOf(channelRed), placeOf(channelGreen), placeOf(channelBlue)};
    copyWhole(colours, 3, rect, scratch);
    for (size_t y = 0; y < rect.height(); ++y)
        out = packPixels(scratch + y * 3 * rect.width(), rect.width(), out);
    return out;
}

uint8_t* TileEncoder::room(size_t bytes) {
    if (room_.size() < bytes) room_.resize(bytes);
    return room_.data();
}

std::span<const uint8_t> TileEncoder::encode(const TileFormat& format, const TileRect& rect,
                                             const TileSource& source) {
    const size_t bytes = static_cast<size_t>(format.pixelBytes());
    const size_t width = rect.width(), height = rect.height(), count = width * height;
    const size_t separated = std::max<size_t>(bytes, 4) * count;
    uint8_t* const scratch =
        room(separated + bytes * roomForPackets(count) + height * mostPackedBytes(width));
    uint8_t* const packed = scratch + separated;
    uint8_t* end = packed;
    if (format.packsWholePixels()) {
        end = packQrl(format, source, rect, scratch, packed);
    } else if (format.compression != compressNone) {
        const auto planes = separatePlanes(source, bytes, rect, scratch);
        for (size_t i = 0; i < bytes; ++i) end = packRle(planes[i], count, end);
    }
    const bool smaller =
        format.compression != compressNone && end - packed < ptrdiff_t(bytes * count);
    if (!smaller) end = copyWhole(source, bytes, rect, packed);
    return {packed, end};
}

}  // namespace vistel
