// Targa: colour, grey or with a colour map, plain or in runs.
//
//     0  length of the comment   1 colour map: 0 or 1
//     2  kind: 1 mapped, 2 colour, 3 grey; 8 more: in runs
//     3  colour map: first index (2), count (2), bits of an entry
//     8  origin (4)   12 width   14 height   16 bits of a pixel
//     17 lowest four bits: bits of the mask in a pixel; 0x10 from the right, 0x20 from the top
//     18 comment, colour map, pixels
//
// Numbers are little-endian. A run starts with a count less one, which with bit 7 set tells how
// often the next pixel stands, else how many follow. Runs may pass from row to row. There is no
// signature; the extension tells or, of a name without one, a header that makes sense.

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "samples.h"

namespace vistel {

namespace {

constexpr size_t headerBytes = 18;
constexpr uint32_t longestRun = 128;
enum Kind { mapped = 1, colour = 2, grey = 3 };

struct Header {
    uint32_t commentBytes, mapFirst, mapCount, mapBits;
    uint32_t kind, width, height, bits;
    bool runs, hasMap, hasMask, fromRight, fromTop;
    uint32_t pixelBytes() const { return (bits + 7) / 8; }
};

using Pixel = std::array<uint8_t, 4>;

bool isDepth(uint32_t kind, uint32_t bits) {
    switch (kind) {
        case mapped:
            return bits == 8 || bits == 16;
        case colour:
            return bits == 15 || bits == 16 || bits == 24 || bits == 32;
        case grey:
            return bits == 8 || bits == 16;
        default:
            return false;
    }
}

Failure readHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, headerBytes> bytes;
    if (!source.read(bytes.data(), bytes.size())) return endsInHeader();
    const auto number = [&](size_t at) { return readLittle16(&bytes[at]); };
    header = {bytes[0],
              number(3),
              number(5),
              bytes[7],
              bytes[2] & ~8u,
              number(12),
              number(14),
              bytes[16],
              (bytes[2] & 8) != 0,
              bytes[1] == 1,
              (bytes[17] & 15) != 0,
              (bytes[17] & 0x10) != 0,
              (bytes[17] & 0x20) != 0};
    if (bytes[1] > 1 || !isDepth(header.kind, header.bits)) return "not a Targa picture";
    if (header.kind == mapped && (!header.hasMap || !isDepth(colour, header.mapBits)))
        return "the file is damaged: no colour map";
    return {};
}

// Nothing marks a file of this type. What tells it are numbers that only make sense together, down
// to bits that are always clear, and pixels that the file is long enough for.
bool isSound(std::span<const uint8_t> start, uint64_t size) {
    if (start.size() < headerBytes) return false;
    const auto number = [&](size_t at) { return readLittle16(&start[at]); };
    const uint32_t kind = start[2] & ~8u, bits = start[16], maskBits = start[17] & 15;
    if (start[1] > 1 || !isDepth(kind, bits) || start[17] & 0xC0) return false;
    if (start[1] == 0 && (kind == mapped || number(5) != 0 || start[7] != 0)) return false;
    if (start[1] == 1 && (!isDepth(colour, start[7]) || number(5) == 0)) return false;
    const bool usualMask = maskBits == 0 || (bits == 32 && maskBits == 8) ||
                           (bits == 16 && (maskBits == 1 || (kind == grey && maskBits == 8)));
    if (!usualMask || number(12) == 0 || number(14) == 0) return false;
    const uint64_t map = start[1] == 1 ? uint64_t{number(5)} * ((start[7] + 7u) / 8) : 0;
    const uint64_t pixels = uint64_t{number(12)} * number(14);
    const uint64_t least =
        start[2] & 8 ? (pixels + longestRun - 1) / longestRun * 2 : pixels * ((bits + 7) / 8);
    return size >= headerBytes + start[0] + map + least;
}

Pixel colourOf(const uint8_t* bytes, uint32_t bits, bool hasMask) {
    if (bits >= 24)
        return {bytes[2], bytes[1], bytes[0], bits == 32 && hasMask ? bytes[3] : uint8_t{255}};
    const uint32_t code = readLittle16(bytes);
    const auto channel = [&](uint32_t shift) {
        const uint32_t five = code >> shift & 31;
        return uint8_t(five << 3 | five >> 2);
    };
    const bool hidden = bits == 16 && hasMask && !(code & 0x8000);
    return {channel(10), channel(5), channel(0), hidden ? uint8_t{0} : uint8_t{255}};
}

// An index that the map does not have: black, and transparent where the map has a mask.
Pixel outsideMap(const Header& header) {
    return {0, 0, 0, header.mapBits == 32 ? uint8_t{0} : uint8_t{255}};
}

// The entries by index.
Failure readMap(ByteSource& source, const Header& header, std::vector<Pixel>& map) {
    const size_t entryBytes = (header.mapBits + 7) / 8;
    if (header.kind != mapped)
        return source.goTo(source.position() + header.mapCount * entryBytes)
                   ? Failure()
                   : "the file ends early: in its colour map";
    std::vector<uint8_t> bytes(header.mapCount * entryBytes);
    if (!source.read(bytes.data(), bytes.size())) return "the file ends early: in its colour map";
    map.assign(header.mapFirst, outsideMap(header));
    for (size_t i = 0; i < header.mapCount; ++i)
        map.push_back(colourOf(&bytes[i * entryBytes], header.mapBits, header.mapBits == 32));
    return {};
}

Pixel pixelOf(const uint8_t* bytes, const Header& header, const std::vector<Pixel>& map) {
    if (header.kind == colour) return colourOf(bytes, header.bits, header.hasMask);
    if (header.kind == grey)
        return {bytes[0], bytes[0], bytes[0],
                header.bits == 16 && header.hasMask ? bytes[1] : uint8_t{255}};
    const size_t index = header.bits == 8 ? bytes[0] : readLittle16(bytes);
    return index < map.size() ? map[index] : outsideMap(header);
}

// The pixels' bytes, row after row, out of runs or plain.
class Rows {
 public:
    Rows(ByteSource& source, const Header& header)
        : source_(source), bytes_(header.pixelBytes()), runs_(header.runs) {}

    bool next(std::span<uint8_t> row) {
        if (!runs_) return source_.read(row.data(), row.size());
        while (!row.empty()) {
            if (left_ == 0 && !nextRun()) return false;
            const size_t count = std::min(left_, row.size() / bytes_);
            if (!repeated_ && !source_.read(row.data(), count * bytes_)) return false;
            for (size_t i = 0; repeated_ && i < count; ++i)
                std::memcpy(&row[i * bytes_], pixel_.data(), bytes_);
            left_ -= count;
            row = row.subspan(count * bytes_);
        }
        return true;
    }

 private:
    bool nextRun() {
        const int control = source_.next();
        if (control < 0) return false;
        left_ = size_t(control & 127) + 1;
        repeated_ = (control & 128) != 0;
        return !repeated_ || source_.read(pixel_.data(), bytes_);
    }

    ByteSource& source_;
    const size_t bytes_;
    const bool runs_;
    bool repeated_ = false;
    size_t left_ = 0;  // pixels of the run
    Pixel pixel_{};
};

Failure readRows(ByteSource& source, const Header& header, const std::vector<Pixel>& map,
                 Picture& picture) {
    Rows rows(source, header);
    const size_t pixelBytes = header.pixelBytes();
    std::vector<uint8_t> row(header.width * pixelBytes);
    for (uint32_t y = 0; y < header.height; ++y) {
        if (!rows.next(row)) return endsInRow(y, header.height);
        picture.rowsRead = y + 1;
        uint8_t* to = picture.row(header.fromTop ? y : header.height - 1 - y);
        for (size_t column = 0; column < header.width; ++column) {
            const size_t x = header.fromRight ? header.width - 1 - column : column;
            const Pixel pixel = pixelOf(&row[column * pixelBytes], header, map);
            std::memcpy(to + x * 4, pixel.data(), 4);
        }
    }
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header{};
    if (auto failure = readHeader(source, header)) return failure;
    if (!source.goTo(headerBytes + header.commentBytes)) return endsInHeader();
    std::vector<Pixel> map;
    if (header.hasMap)
        if (auto failure = readMap(source, header, map)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, false)) return failure;
    picture.colour = header.kind != grey;
    picture.mask =
        header.kind == mapped ? header.mapBits == 32 : header.hasMask && header.bits % 16 == 0;
    return readRows(source, header, map, picture);
}

// One row in runs of at most longestRun pixels.
void packRow(const std::vector<uint8_t>& row, size_t pixelBytes, std::vector<uint8_t>& packed) {
    const size_t pixels = row.size() / pixelBytes;
    const auto same = [&](size_t a, size_t b) {
        return std::memcmp(&row[a * pixelBytes], &row[b * pixelBytes], pixelBytes) == 0;
    };
    packed.clear();
    for (size_t from = 0; from < pixels;) {
        const size_t end = std::min(pixels, from + longestRun);
        size_t to = from + 1;
        while (to < end && same(from, to)) ++to;
        const bool repeated = to - from >= 2;
        if (!repeated)
            while (to < end && (to + 1 == pixels || !same(to, to + 1))) ++to;
        packed.push_back(uint8_t((to - from - 1) | (repeated ? 128 : 0)));
        const auto at = row.begin() + std::ptrdiff_t(from * pixelBytes);
        packed.insert(packed.end(), at,
                      at + std::ptrdiff_t((repeated ? 1 : to - from) * pixelBytes));
        from = to;
    }
}

// Grey with a mask goes as colour: few programs read Targa files of two channels.
Failure write(const Picture& picture, const TargetFile& target) {
    const size_t channels = picture.mask ? 4 : picture.colour ? 3 : 1;
    std::array<uint8_t, headerBytes> header{};
    header[2] = uint8_t(8 | (channels == 1 ? grey : colour));
    writeLittle16(&header[12], uint16_t(picture.width));
    writeLittle16(&header[14], uint16_t(picture.height));
    header[16] = uint8_t(channels * 8);
    header[17] = channels == 4 ? 8 : 0;
    if (!writeAll(target, header)) return cannotWrite();
    std::vector<uint8_t> room, row;
    const auto fill = [&](uint32_t y, std::vector<uint8_t>& packed) {
        const uint8_t* from = picture.byteRow(y, room);
        row.clear();
        for (size_t x = 0; x < picture.width; ++x, from += 4) {
            const uint8_t pixel[] = {channels == 1 ? from[0] : from[2], from[1], from[0], from[3]};
            row.insert(row.end(), pixel, pixel + channels);
        }
        packRow(row, channels, packed);
    };
    return writeRows(target, picture, RowOrder::bottomFirst, 0, fill);
}

}  // namespace

const Codec tgaCodec{"tga", nullptr, read, write, isSound};

}  // namespace vistel
