// Photoshop documents: the flattened picture that stands behind the layers. Black and white, grey
// (duotone too), indexed, RGB, CMYK or Lab of 8 or 16 bits, grey and RGB also of floating point
// light; with or without a mask, plain or packed; also large documents.
//
//     0   magic "8BPS"   4  version: 1, or 2 for large ones    12 channels
//     14  height   18 width   22 bits   24 mode
//     26  palette, resources, layers: each a length and so many bytes
//     ... compression: 0 plain, 1 packed with a length for each row; the rows, plane after plane
//
// All numbers are big-endian. Where the picture is partly transparent, Photoshop stores it over
// white; it is kept as stored. In CMYK the largest sample is no ink. In Lab the middle is no
// colour.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "byte_source.h"
#include "codecs.h"
#include "inks.h"
#include "lab.h"
#include "samples.h"
#include "turned.h"

namespace vistel {

namespace {

constexpr size_t headerBytes = 26;
enum Mode : uint32_t { bitmap = 0, grey = 1, indexed = 2, rgb = 3, cmyk = 4, duotone = 8, lab = 9 };
constexpr uint32_t paletteEntries = 256;

struct Header {
    bool large = false;
    uint32_t width = 0, height = 0;
    uint32_t channels = 0;  // in the file
    uint32_t bits = 0, mode = 0;
    std::vector<uint8_t> palette;  // 256 reds, 256 greens, 256 blues
    bool inGrey() const { return mode == bitmap || mode == grey || mode == duotone; }
    bool wide() const { return bits == 16; }
    size_t rowBytes() const { return (size_t{width} * bits + 7) / 8; }
    uint32_t colours() const { return mode == cmyk ? 4 : mode == rgb || mode == lab ? 3 : 1; }
    bool mask() const { return mode != bitmap && mode != indexed && channels > colours(); }
    uint32_t planes() const { return colours() + (mask() ? 1 : 0); }
    // Of a pixel's samples the one that a plane goes to. The fourth ink stands in the mask's place
    // until it is worked in.
    uint8_t sampleOf(uint32_t plane) const { return uint8_t(plane < colours() ? plane : 3); }
    bool knownDepth() const {
        switch (mode) {
            case bitmap:
                return bits == 1;
            case indexed:
                return bits == 8;
            case grey:
            case rgb:
                return bits == 8 || bits == 16 || bits == 32;
            default:
                return bits == 8 || bits == 16;
        }
    }
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 6 && std::memcmp(start.data(), "8BPS", 4) == 0 && start[4] == 0 &&
           (start[5] == 1 || start[5] == 2);
}

Failure checkMode(uint32_t mode) {
    switch (mode) {
        case bitmap:
        case grey:
        case indexed:
        case rgb:
        case cmyk:
        case duotone:
        case lab:
            return {};
        case 7:
            return "Photoshop documents in multichannel are not supported";
        default:
            return "the file is damaged: colour mode " + std::to_string(mode);
    }
}

Failure readFixedHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, headerBytes> bytes;
    if (!source.read(bytes.data(), bytes.size())) return endsInHeader();
    if (!recognises(bytes)) return "not a Photoshop document";
    header.large = bytes[5] == 2;
    header.channels = readBig16(&bytes[12]);
    header.height = readBig32(&bytes[14]);
    header.width = readBig32(&bytes[18]);
    header.bits = readBig16(&bytes[22]);
    header.mode = readBig16(&bytes[24]);
    if (auto failure = checkMode(header.mode)) return failure;
    if (!header.knownDepth())
        return "Photoshop documents of " + std::to_string(header.bits) + " bits are not supported";
    if (header.channels < header.colours() || header.channels > 56)
        return "the file is damaged: " + std::to_string(header.channels) + " channels";
    return {};
}

// Passes over a section that starts with its length.
bool skipSection(ByteSource& source, bool longLength) {
    std::array<uint8_t, 8> bytes{};
    if (!source.read(&bytes[longLength ? 0 : 4], longLength ? 8 : 4)) return false;
    const uint64_t length = readBig64(bytes.data());
    return length <= source.left() && source.goTo(source.position() + length);
}

bool readPalette(ByteSource& source, Header& header) {
    std::array<uint8_t, 4> length;
    if (!source.read(length.data(), length.size())) return false;
    if (readBig32(length.data()) < paletteEntries * 3) return false;
    header.palette.resize(paletteEntries * 3);
    const uint64_t end = source.position() + readBig32(length.data());
    return source.read(header.palette.data(), header.palette.size()) && source.goTo(end);
}

Failure readHeader(ByteSource& source, Header& header, uint16_t& compression) {
    if (auto failure = readFixedHeader(source, header)) return failure;
    const bool palette =
        header.mode == indexed ? readPalette(source, header) : skipSection(source, false);
    if (!palette) return "the file ends early: in its palette";
    if (!skipSection(source, false)) return "the file ends early: in its resources";
    if (!skipSection(source, header.large)) return "the file ends early: in its layers";
    std::array<uint8_t, 2> bytes;
    if (!source.read(bytes.data(), bytes.size())) return "the file ends early: behind its layers";
    compression = readBig16(bytes.data());
    if (compression > 1)
        return "Photoshop documents with compression " + std::to_string(compression) +
               " are not supported";
    return {};
}

// Lengths of all packed rows, plane after plane; in large documents of four bytes.
Failure readLengths(ByteSource& source, const Header& header, std::vector<uint32_t>& lengths) {
    const size_t each = header.large ? 4 : 2;
    std::vector<uint8_t> bytes;
    const uint64_t rows = uint64_t{header.height} * header.channels;
    if (rows * each > source.left()) return "the file ends early: in its table of rows";
    bytes.resize(rows * each);
    lengths.resize(rows);
    if (!source.read(bytes.data(), bytes.size()))
        return "the file ends early: in its table of rows";
    for (size_t i = 0; i < lengths.size(); ++i)
        lengths[i] = header.large ? readBig32(&bytes[i * 4]) : readBig16(&bytes[i * 2]);
    return {};
}

// A control byte n: up to 127, n + 1 bytes follow; above 128, the next byte 257 - n times. False
// when that does not give exactly the row.
bool unpackRow(std::span<const uint8_t> packed, std::span<uint8_t> row) {
    size_t from = 0, to = 0;
    while (from < packed.size() && to < row.size()) {
        const uint8_t control = packed[from++];
        if (control == 128) continue;
        const bool literal = control < 128;
        const size_t count = literal ? control + 1u : 257u - control;
        const size_t stored = literal ? count : 1;
        if (count > row.size() - to || stored > packed.size() - from) return false;
        if (literal)
            std::memcpy(&row[to], &packed[from], count);
        else
            std::memset(&row[to], packed[from], count);
        from += stored;
        to += count;
    }
    return to == row.size();
}

void placeIndices(const Header& header, const std::vector<uint8_t>& bytes, uint8_t* pixel) {
    for (size_t x = 0; x < header.width; ++x, pixel += 4)
        for (size_t i = 0; i < 3; ++i) pixel[i] = header.palette[i * paletteEntries + bytes[x]];
}

// One sample of each pixel.
void placeRow(const Header& header, const std::vector<uint8_t>& bytes, Picture& picture, uint32_t y,
              uint8_t place) {
    uint8_t* to = picture.wide ? nullptr : picture.row(y);
    if (header.mode == indexed) return placeIndices(header, bytes, to);
    for (size_t x = 0; x < picture.width; ++x) {
        const size_t at = x * 4 + place;
        switch (header.bits) {
            case 1:
                to[at] = bytes[x / 8] >> (7 - x % 8) & 1 ? 0 : 255;
                break;
            case 8:
                to[at] = bytes[x];
                break;
            case 16:
                picture.wideRow(y)[at] = readBig16(&bytes[x * 2]);
                break;
            default: {
                const float light = std::bit_cast<float>(readBig32(&bytes[x * 4]));
                to[at] = place == 3 ? byteFromMask(light) : byteFromLinear(light);
            }
        }
    }
}

// The three samples of a pixel in Lab become red, green and blue.
template <class Sample>
void lightOfLabRow(Sample* pixel, uint32_t count) {
    constexpr float full = std::numeric_limits<Sample>::max();
    constexpr float step = (full + 1) / 256, middle = 128 * step;
    for (; count > 0; --count, pixel += 4) {
        const auto light =
            lightOfLab(float(pixel[0]) * 100 / full, (float(pixel[1]) - middle) / step,
                       (float(pixel[2]) - middle) / step);
        for (size_t i = 0; i < 3; ++i) pixel[i] = Sample(encodedFromLinear(light[i]) * full + 0.5f);
    }
}

// When the colours' planes are there, and before the mask's.
void convertRows(const Header& header, Picture& picture) {
    for (uint32_t y = 0; y < picture.height; ++y) {
        if (header.mode == cmyk && picture.wide)
            lightOfInks(picture.wideRow(y), picture.width, uint16_t{65535});
        else if (header.mode == cmyk)
            lightOfInks(picture.row(y), picture.width, uint8_t{255});
        else if (header.mode == lab && picture.wide)
            lightOfLabRow(picture.wideRow(y), picture.width);
        else if (header.mode == lab)
            lightOfLabRow(picture.row(y), picture.width);
    }
}

// Plane after plane and row after row.
class Rows {
 public:
    Rows(ByteSource& source, const Header& header) : source_(source), header_(header) {}

    Failure begin(bool packed) {
        if (packed) return readLengths(source_, header_, lengths_);
        early_ = requireRows(source_.left(), uint64_t{header_.rowBytes()} * header_.planes(), 0,
                             header_.height);
        return {};
    }
    Failure next(uint32_t plane, uint32_t y, std::vector<uint8_t>& row) {
        row.resize(header_.rowBytes());
        if (lengths_.empty()) {
            if (source_.read(row.data(), row.size())) return {};
            return early_ ? early_ : endsInRow(y, header_.height);
        }
        const uint32_t length = lengths_[size_t{plane} * header_.height + y];
        if (length > row.size() * 2 + 2) return damagedRow(y, header_.height);
        packed_.resize(length);
        if (!source_.read(packed_.data(), length)) return endsInRow(y, header_.height);
        return unpackRow(packed_, row) ? Failure() : damagedRow(y, header_.height);
    }

 private:
    ByteSource& source_;
    const Header& header_;
    std::vector<uint32_t> lengths_;
    Failure early_;  // of a plain file that does not hold all rows
    std::vector<uint8_t> packed_;
};

Failure readPlanes(ByteSource& source, const Header& header, bool packed, Picture& picture) {
    Rows rows(source, header);
    if (auto failure = rows.begin(packed)) return failure;
    std::vector<uint8_t> row;
    for (uint32_t plane = 0; plane < header.planes(); ++plane) {
        for (uint32_t y = 0; y < header.height; ++y) {
            if (auto failure = rows.next(plane, y, row)) {
                // Lightness alone is a grey picture.
                if (header.mode == lab && plane < 3) picture.colour = false;
                return failure;
            }
            placeRow(header, row, picture, y, header.sampleOf(plane));
            picture.rowsRead = std::max(picture.rowsRead, y + 1);
        }
        if (plane + 1 == header.colours()) convertRows(header, picture);
    }
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header;
    uint16_t compression = 0;
    if (auto failure = readHeader(source, header, compression)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, header.wide())) return failure;
    picture.colour = !header.inGrey();
    picture.mask = header.mask();
    return completed(picture, readPlanes(source, header, compression == 1, picture));
}

}  // namespace

const Codec psdCodec{"psd", recognises, read, nullptr};

}  // namespace vistel
