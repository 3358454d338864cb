// Photoshop documents: the flattened picture that stands behind the layers. Grey, indexed or RGB of
// 8 or 16 bits, with or without a mask, plain or packed; also large documents.
//
//     0   magic "8BPS"   4  version: 1, or 2 for large ones    12 channels
//     14  height   18 width   22 bits   24 mode
//     26  palette, resources, layers: each a length and so many bytes
//     ... compression: 0 plain, 1 packed with a length for each row; the rows, plane after plane
//
// All numbers are big-endian. Where the picture is partly transparent, Photoshop stores it over
// white; it is kept as stored.

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "byte_source.h"
#include "codecs.h"
#include "samples.h"

namespace vistel {

namespace {

constexpr size_t headerBytes = 26;
constexpr uint32_t grey = 1, indexed = 2, rgb = 3;
constexpr uint32_t paletteEntries = 256;

struct Header {
    bool large = false;
    uint32_t width = 0, height = 0;
    uint32_t channels = 0;  // in the file
    uint32_t bits = 0, mode = 0;
    std::vector<uint8_t> palette;  // 256 reds, 256 greens, 256 blues
    size_t rowBytes() const { return size_t{width} * bits / 8; }
    uint32_t colours() const { return mode == rgb ? 3 : 1; }
    bool mask() const { return mode != indexed && channels > colours(); }
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 6 && std::memcmp(start.data(), "8BPS", 4) == 0 && start[4] == 0 &&
           (start[5] == 1 || start[5] == 2);
}

Failure modeNotSupported(uint32_t mode) {
    static constexpr const char* names[] = {"black and white", "",        "",   "", "CMYK", "", "",
                                            "multichannel",    "duotone", "Lab"};
    if (mode < std::size(names) && *names[mode])
        return std::string("Photoshop documents in ") + names[mode] + " are not supported";
    return "the file is damaged: colour mode " + std::to_string(mode);
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
    if (header.mode != grey && header.mode != indexed && header.mode != rgb)
        return modeNotSupported(header.mode);
    if ((header.bits != 8 && header.bits != 16) || (header.mode == indexed && header.bits != 8))
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

void placeRow(const Header& header, const std::vector<uint8_t>& bytes, Picture& picture, uint32_t y,
              uint8_t place) {
    for (size_t x = 0; x < picture.width; ++x) {
        if (header.mode == indexed) {
            for (size_t i = 0; i < 3; ++i)
                picture.row(y)[x * 4 + i] = header.palette[i * paletteEntries + bytes[x]];
        } else if (picture.wide) {
            picture.wideRow(y)[x * 4 + place] = readBig16(&bytes[x * 2]);
        } else {
            picture.row(y)[x * 4 + place] = bytes[x];
        }
    }
}

Failure readPlanes(ByteSource& source, const Header& header, bool packedRows, Picture& picture) {
    std::vector<uint32_t> lengths;
    const ChannelOrder order = usualOrder(header.mode == rgb, header.mask());
    if (packedRows) {
        if (auto failure = readLengths(source, header, lengths)) return failure;
    } else if (auto failure = requireRows(
                   source.left(), uint64_t{header.rowBytes()} * order.channels, 0, header.height)) {
        return failure;
    }
    std::vector<uint8_t> packed, row(header.rowBytes());
    for (uint32_t channel = 0; channel < order.channels; ++channel)
        for (uint32_t y = 0; y < header.height; ++y) {
            if (packedRows) {
                const uint32_t length = lengths[size_t{channel} * header.height + y];
                if (length > row.size() * 2 + 2) return damagedRow(y, header.height);
                packed.resize(length);
                if (!source.read(packed.data(), length)) return endsInRow(y, header.height);
                if (!unpackRow(packed, row)) return damagedRow(y, header.height);
            } else if (!source.read(row.data(), row.size())) {
                return endsInRow(y, header.height);
            }
            placeRow(header, row, picture, y, order.place[channel]);
        }
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header;
    uint16_t compression = 0;
    if (auto failure = readHeader(source, header, compression)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, header.bits == 16))
        return failure;
    picture.colour = header.mode != grey;
    picture.mask = header.mask();
    if (auto failure = readPlanes(source, header, compression == 1, picture)) return failure;
    for (uint32_t y = 0; y < picture.height; ++y) completeRow(picture, y);
    return {};
}

}  // namespace

const Codec psdCodec{"psd", recognises, read, nullptr};

}  // namespace vistel
