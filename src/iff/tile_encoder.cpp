#include "iff/tile_encoder.h"

#include <algorithm>
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

// Copies the values from `at` on to `out`, up to the first place after it, before `end`, at which three
// equal values begin; returns that place, else `end`. Values are there up to `count`; up to seven
// bytes more than those are written.
static size_t copyUpToRun(const uint8_t* values, size_t at, size_t end, size_t count, uint8_t* out) {
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
        if (at + 2 < count && values[at] == values[at + 1] && values[at] == values[at + 2]) return at;
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

// Rows of pixels in file order, somewhere in memory.
struct PixelRows {
    const uint8_t* first;
    size_t rowBytes, width, height;
};

// Each byte of the pixels as a plane of its own, one after the other. `stride`: bytes of a pixel, when
// the compiler is to know them.
template <size_t known = 0>
static void separate(const PixelRows& pixels, size_t stride, uint8_t* planes) {
    if (known) stride = known;
    const size_t count = pixels.width * pixels.height;
    for (size_t y = 0; y < pixels.height; ++y, planes += pixels.width) {
        const uint8_t* pixel = pixels.first + y * pixels.rowBytes;
        for (size_t x = 0; x < pixels.width; ++x, pixel += stride)
            for (size_t plane = 0; plane < stride; ++plane) planes[plane * count + x] = pixel[plane];
    }
}

static void separatePlanes(const PixelRows& pixels, size_t stride, uint8_t* planes) {
    switch (stride) {
        case 3:
            return separate<3>(pixels, stride, planes);
        case 4:
            return separate<4>(pixels, stride, planes);
        case 6:
            return separate<6>(pixels, stride, planes);
        case 8:
            return separate<8>(pixels, stride, planes);
    }
    separate(pixels, stride, planes);
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

// The mask as one run-length coded channel, then the colours row by row, red first. `scratch` has room
// for four bytes of each pixel.
static uint8_t* packQrl(const TileFormat& format, const PixelRows& pixels, uint8_t* scratch,
                        uint8_t* out) {
    const size_t stride = static_cast<size_t>(format.pixelBytes());
    const int red = format.indexOf(channelRed), green = format.indexOf(channelGreen),
              blue = format.indexOf(channelBlue), mask = format.indexOf(channelMask);
    const auto row = [&](size_t y) { return pixels.first + y * pixels.rowBytes; };
    if (mask >= 0) {
        uint8_t* plane = scratch;
        for (size_t y = 0; y < pixels.height; ++y)
            for (size_t x = 0; x < pixels.width; ++x) *plane++ = row(y)[x * stride + size_t(mask)];
        out = packRle(scratch, pixels.width * pixels.height, out);
    }
    for (size_t y = 0; y < pixels.height; ++y) {
        const uint8_t* pixel = row(y);
        for (size_t x = 0; x < pixels.width; ++x, pixel += stride) {
            scratch[3 * x] = pixel[red];
            scratch[3 * x + 1] = pixel[green];
            scratch[3 * x + 2] = pixel[blue];
        }
        out = packPixels(scratch, pixels.width, out);
    }
    return out;
}

uint8_t* TileEncoder::room(size_t bytes) {
    if (room_.size() < bytes) room_.resize(bytes);
    return room_.data();
}

std::span<const uint8_t> TileEncoder::whole(size_t tileRowBytes, size_t height, const uint8_t* pixels,
                                            size_t rowBytes) {
    if (rowBytes == tileRowBytes) return {pixels, tileRowBytes * height};
    uint8_t* out = room(tileRowBytes * height);
    for (size_t y = 0; y < height; ++y)
        std::memcpy(out + y * tileRowBytes, pixels + y * rowBytes, tileRowBytes);
    return {out, tileRowBytes * height};
}

std::span<const uint8_t> TileEncoder::encode(const TileFormat& format, const TileRect& rect,
                                             const uint8_t* pixels, size_t rowBytes) {
    const size_t stride = static_cast<size_t>(format.pixelBytes());
    const size_t width = rect.width(), height = rect.height(), count = width * height;
    if (format.compression != compressNone) {
        const PixelRows rows{pixels, rowBytes, width, height};
        const size_t separated = std::max<size_t>(stride, 4) * count;
        uint8_t* const scratch = room(separated + stride * roomForPackets(count) +
                                      height * mostPackedBytes(width));
        uint8_t* const packed = scratch + separated;
        uint8_t* end = packed;
        if (format.packsWholePixels()) {
            end = packQrl(format, rows, scratch, packed);
        } else {
            separatePlanes(rows, stride, scratch);
            for (size_t plane = 0; plane < stride; ++plane)
                end = packRle(scratch + plane * count, count, end);
        }
        const size_t size = static_cast<size_t>(end - packed);
        if (size < stride * count) return {packed, size};
    }
    return whole(stride * width, height, pixels, rowBytes);
}

}  // namespace vistel
