// A reader of frame files of its own, for what the writer wrote: slow, plain, and with every bit:
// both bytes of 16-bit channels and the second colour, which the loader does not keep.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include "host/byte_order.h"
#include "iff/image_bytes.h"

namespace vistel::test {

struct PlainPlane {
    std::vector<uint16_t> values;  // pixel by pixel: the channels in file order
    std::vector<int> covered;      // by how many tiles, for each pixel
    std::vector<TileRect> tiles;   // in file order
};

class PlainReader {
 public:
    // An empty text, or what is wrong with the file.
    std::string read(const Bytes& file) {
        bytes_ = &file.data;
        walk(0, file.size());
        return problem;
    }

    ImageHeader header;
    int channels = 0;              // of a colour pixel
    PlainPlane colour, second, z;  // z: one channel of two values, the high and the low half
    std::string problem;

 private:
    uint32_t number(size_t at, int count) {
        uint32_t value = 0;
        for (int i = 0; i < count; ++i) value = value << 8 | byte(at + static_cast<size_t>(i));
        return value;
    }
    uint8_t byte(size_t at) {
        if (at < bytes_->size()) return (*bytes_)[at];
        problem = "cut";
        return 0;
    }
    std::string id(size_t at) {
        std::string text;
        for (size_t i = 0; i < 4; ++i) text += static_cast<char>(byte(at + i));
        return text;
    }

    // Chunks from `at` to the end of their group. Where the group ends.
    size_t walk(size_t at, size_t end) {
        while (at < end && problem.empty()) {
            const std::string name = id(at);
            const uint32_t size = number(at + 4, 4);
            if (name == "GEND") return at + 8;
            if (name == "FOR4") {
                const bool known = size < 0x80000000;
                const size_t groupEnd = walk(at + 12, known ? at + 8 + size : bytes_->size());
                if (known && groupEnd != at + 8 + size) problem = "a group of a wrong size";
                at = groupEnd;
                continue;
            }
            if (size >= 0x80000000 || at + 8 + size > end) problem = "a chunk of a wrong size";
            if (at % 4 != 0) problem = "a chunk off its boundary";
            chunk(name, at + 8, size);
            at += 8 + (size + 3) / 4 * 4;
        }
        return at;
    }

    void chunk(const std::string& name, size_t at, uint32_t size) {
        if (name == "TBHD") readHeader(at);
        if (name == "RGBA") readTile(colour, at, size, channels, header.wideChannels ? 2 : 1);
        if (name == "RGB2") readTile(second, at, size, channels, header.wideChannels ? 2 : 1);
        if (name == "ZBUF") readTile(z, at, size, 2, 2);
    }

    void readHeader(size_t at) {
        header.width = number(at, 4);
        header.height = number(at + 4, 4);
        header.flags = number(at + 12, 4);
        header.wideChannels = static_cast<uint16_t>(number(at + 16, 2));
        header.tiles = static_cast<uint16_t>(number(at + 18, 2));
        header.compression = number(at + 20, 4);
        channels = header.flags & imageBlack ? 0 : header.flags & imageColour ? 3 : 1;
        if (header.flags & imageMask) ++channels;
        const size_t pixels = size_t{header.width} * header.height;
        for (PlainPlane* plane : {&colour, &second, &z}) plane->covered.assign(pixels, 0);
        colour.values.assign(pixels * size_t(channels), 0);
        second.values = colour.values;
        z.values.assign(pixels * 2, 0);
    }

    void readTile(PlainPlane& plane, size_t at, uint32_t size, int count, int valueBytes) {
        const TileRect rect{
            static_cast<uint16_t>(number(at, 2)), static_cast<uint16_t>(number(at + 2, 2)),
            static_cast<uint16_t>(number(at + 4, 2)), static_cast<uint16_t>(number(at + 6, 2))};
        plane.tiles.push_back(rect);
        const size_t pixelBytes = size_t(count) * size_t(valueBytes);
        const size_t raw = size_t{rect.width()} * rect.height() * pixelBytes;
        const bool packed = size - 8 < raw;
        const bool wholePixels = packed && &plane != &z && header.compression == compressQrl &&
                                 valueBytes == 1 && count >= 3;
        if (size - 8 > raw) problem = "a tile larger than it may be";
        std::vector<uint8_t> data(raw);  // each pixel's bytes
        size_t from = at + 8;
        if (!packed) {
            for (size_t i = 0; i < raw; ++i) data[i] = byte(from++);
        } else if (wholePixels) {
            unpackPixels(rect, from, size_t(count), data);
        } else {
            for (size_t plane1 = 0; plane1 < pixelBytes; ++plane1)
                unpackBytes(rect.width() * size_t{rect.height()}, from, plane1, pixelBytes, data);
        }
        if (from != at + size) problem = "a tile with bytes left over or missing";
        store(plane, rect, count, valueBytes, data);
    }

    // Packets of one byte plane, which may cross rows.
    void unpackBytes(size_t pixels, size_t& from, size_t first, size_t step,
                     std::vector<uint8_t>& data) {
        for (size_t x = 0; x < pixels && problem.empty();) {
            const unsigned control = byte(from++), count = (control & 127) + 1;
            for (unsigned i = 0; i < count && x < pixels; ++i, ++x)
                data[first + x * step] = control < 128 ? byte(from++) : byte(from);
            if (control >= 128) ++from;
        }
    }
    // A mask as one byte plane, then rows of pixels, red first.
    void unpackPixels(const TileRect& rect, size_t& from, size_t count,
                      std::vector<uint8_t>& data) {
        if (count == 4) unpackBytes(size_t{rect.width()} * rect.height(), from, 0, count, data);
        for (size_t y = 0; y < rect.height(); ++y)
            for (size_t x = 0; x < rect.width() && problem.empty();) {
                const unsigned control = byte(from++), run = (control & 127) + 1;
                if (x + run > rect.width()) problem = "a packet that crosses a row";
                for (unsigned i = 0; i < run && problem.empty(); ++i, ++x) {
                    uint8_t* pixel = &data[(y * rect.width() + x) * count];
                    for (size_t c = 0; c < 3; ++c) pixel[count - 1 - c] = byte(from + c);
                    if (control < 128) from += 3;
                }
                if (control >= 128) from += 3;
            }
    }
    void store(PlainPlane& plane, const TileRect& rect, int count, int valueBytes,
               const std::vector<uint8_t>& data) {
        const uint8_t* from = data.data();
        for (uint32_t y = rect.y1; y <= rect.y2; ++y)
            for (uint32_t x = rect.x1; x <= rect.x2; ++x) {
                const size_t pixel = size_t{y} * header.width + x;
                ++plane.covered[pixel];
                for (int c = 0; c < count; ++c, from += valueBytes)
                    plane.values[pixel * size_t(count) + size_t(c)] =
                        static_cast<uint16_t>(valueBytes == 2 ? readBig16(from) : from[0]);
            }
    }

    const std::vector<uint8_t>* bytes_ = nullptr;
};

}  // namespace vistel::test
