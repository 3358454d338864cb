// Builds frame files in memory, and says what their pixels must look like.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "iff/frame_store.h"
#include "iff/iff_bytes.h"
#include "iff/image_header.h"
#include "iff/image_loader.h"
#include "iff/result_codes.h"

namespace vistel::test {

constexpr uint32_t colourFlags = imageColour, maskFlags = imageColour | imageMask;

inline ImageHeader header(uint32_t width, uint32_t height, uint32_t flags,
                          uint32_t compression = compressRle, uint16_t wide = 0) {
    ImageHeader made;
    made.width = width;
    made.height = height;
    made.flags = flags;
    made.compression = compression;
    made.wideChannels = wide;
    made.tiles = 1;
    return made;
}

inline Bytes headerBody(const ImageHeader& header) {
    return Bytes()
        .u32(header.width)
        .u32(header.height)
        .u16(header.pairFirst)
        .u16(header.pairSecond)
        .u32(header.flags)
        .u16(header.wideChannels)
        .u16(header.tiles)
        .u32(header.compression);
}

inline Bytes tileBody(const TileRect& rect, const Bytes& data) {
    return Bytes().u16(rect.x1).u16(rect.y1).u16(rect.x2).u16(rect.y2).add(data);
}

inline Bytes tile(std::string_view id, const TileRect& rect, const Bytes& data) {
    return Bytes().chunk(id, tileBody(rect, data));
}

inline Bytes tileGroup(const Bytes& tiles) { return Bytes().group("FOR4", "TBMP", tiles); }

// One image form: header, further chunks, tile group.
inline Bytes imageForm(const ImageHeader& head, const Bytes& tiles, const Bytes& further = {}) {
    Bytes body;
    body.chunk("TBHD", headerBody(head)).add(further).add(tileGroup(tiles));
    return Bytes().group("FOR4", "CIMG", body);
}

// The four channels of a pixel by name; what a plane pixel and a file pixel are made of.
struct Pixel {
    unsigned red = 0, green = 0, blue = 0, mask = 0;
};

inline uint32_t planePixel(const Pixel& p) {
    return p.red | p.green << 8 | p.blue << 16 | p.mask << 24;
}

// What the frame store must hold for a pixel of an image with these flags. Channels are bytes.
inline uint32_t storedPixel(const Pixel& p, uint32_t flags) {
    Pixel seen;
    if (!(flags & imageBlack)) {
        const bool colour = (flags & imageColour) != 0;
        seen = {colour ? p.red : p.green, p.green, colour ? p.blue : p.green, 255};
    }
    if (flags & imageMask) seen.mask = p.mask;
    return planePixel(seen);
}

// The values of a pixel as a tile stores them: mask, blue, green, red, those the image has.
class FileValues {
 public:
    FileValues(const Pixel& p, uint32_t flags) {
        if (flags & imageMask) values_[count_++] = p.mask;
        if (flags & imageBlack) return;
        if (flags & imageColour) values_[count_++] = p.blue;
        values_[count_++] = p.green;
        if (flags & imageColour) values_[count_++] = p.red;
    }
    size_t size() const { return count_; }
    const unsigned* begin() const { return values_; }
    const unsigned* end() const { return values_ + count_; }

 private:
    unsigned values_[4] = {};
    size_t count_ = 0;
};

// A whole picture with different channels everywhere, and runs in it.
inline Pixel samplePixel(uint32_t x, uint32_t y) {
    return {(x * 7 + y * 13) & 255, (x / 5 * 31 + y) & 255, (x + y * 3) & 255, (x / 6 * 17) & 255};
}
inline float sampleDepth(uint32_t x, uint32_t y) {
    return static_cast<float>(x / 4) * 0.5f - static_cast<float>(y);
}

// A tile of the sample picture stored whole. 16-bit values get the byte 0x5A below.
inline Bytes wholeTileData(const ImageHeader& head, const TileRect& rect) {
    Bytes data;
    for (uint32_t y = rect.y1; y <= rect.y2; ++y)
        for (uint32_t x = rect.x1; x <= rect.x2; ++x)
            for (unsigned value : FileValues(samplePixel(x, y), head.flags)) {
                data.u8(value);
                if (head.wideChannels) data.u8(0x5A);
            }
    return data;
}
inline Bytes wholeDepthData(const TileRect& rect) {
    Bytes data;
    for (uint32_t y = rect.y1; y <= rect.y2; ++y)
        for (uint32_t x = rect.x1; x <= rect.x2; ++x)
            data.u32(std::bit_cast<uint32_t>(sampleDepth(x, y)));
    return data;
}

// Run-length packets as a simple-minded writer makes them: literals of 100, runs of 4 or more.
inline Bytes packets(const std::vector<uint8_t>& values) {
    Bytes packed;
    for (size_t at = 0; at < values.size();) {
        size_t run = 1;
        while (run < 128 && at + run < values.size() && values[at + run] == values[at]) ++run;
        if (run >= 4) {
            packed.u8(static_cast<unsigned>(127 + run)).u8(values[at]);
            at += run;
            continue;
        }
        size_t length = 1;
        while (length < 100 && at + length < values.size() &&
               !(at + length + 3 < values.size() &&
                 values[at + length] == values[at + length + 1] &&
                 values[at + length] == values[at + length + 2] &&
                 values[at + length] == values[at + length + 3]))
            ++length;
        packed.u8(static_cast<unsigned>(length - 1));
        for (size_t i = 0; i < length; ++i) packed.u8(values[at + i]);
        at += length;
    }
    return packed;
}

// Whole-pixel bytes to one packed plane for each byte of a pixel.
inline Bytes packedPlanes(const Bytes& whole, size_t pixelBytes) {
    Bytes packed;
    for (size_t plane = 0; plane < pixelBytes; ++plane) {
        std::vector<uint8_t> values;
        for (size_t at = plane; at < whole.size(); at += pixelBytes)
            values.push_back(whole.data[at]);
        packed.add(packets(values));
    }
    return packed;
}

inline std::vector<uint32_t> pixelsOf(const FrameStore& frame) {
    if (frame.colour.empty()) return {};
    const size_t count = size_t(frame.width) * static_cast<size_t>(frame.height);
    return {frame.colour.data(), frame.colour.data() + count};
}
inline std::vector<float> depthsOf(const FrameStore& frame) {
    if (frame.z.empty()) return {};
    const size_t count = size_t(frame.width) * static_cast<size_t>(frame.height);
    return {frame.z.data(), frame.z.data() + count};
}

// What the sample picture looks like at a shrink factor.
inline std::vector<uint32_t> samplePicture(const ImageHeader& head) {
    std::vector<uint32_t> picture;
    for (uint32_t y = 0; y < head.height; ++y)
        for (uint32_t x = 0; x < head.width; ++x)
            picture.push_back(storedPixel(samplePixel(x, y), head.flags));
    return picture;
}

// Loads a file and keeps every frame that is handed over.
struct Loading {
    explicit Loading(const Bytes& bytes) : file(bytes) {}

    int run() {
        request.stream = file.open();
        request.owner = this;
        request.formRead = [](void* owner, FrameStore& frame, int error) {
            auto& self = *static_cast<Loading*>(owner);
            self.errors.push_back(error);
            self.frames.push_back(std::move(frame));
            return self.answer;
        };
        return loadImages(request, working);
    }

    TemporaryFile file;
    ImageLoadRequest request;
    FrameStore working;
    std::vector<FrameStore> frames;
    std::vector<int> errors;
    int answer = iffOk;
};

}  // namespace vistel::test
