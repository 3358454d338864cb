// Windows and OS/2 bitmaps: 1 to 8 bits with a palette, plain or in runs; 16 to 32 bits plain.
//
//     0  "BM"   2 size (4)   6 reserved (4)   10 place of the pixels (4)
//     14 size of what follows up to the palette or the masks: 12, 16 to 64 (OS/2), 40, 52, 56, 108,
//        124
//     18 of 12 bytes: width (2) height (2) planes (2) bits (2); the palette has three bytes an
//     entry
//        of more: width (4) height (4), negative: rows from the top down; planes (2) bits (2)
//     30 packing (4)   34 size (4)   38 resolution (8)   46 colours of the palette (4)   50 (4)
//     54 masks of red, green, blue and, from 56 bytes or with packing 6, mask: in the header or, of
//        40 bytes, behind it
//
// Numbers are little-endian, rows are padded to four bytes. Runs: a count above 0 and what to
// repeat (with 4 bits two pixels in turn), or 0 and: 0 the row ends, 1 the picture ends, 2 steps to
// the right and up follow, else so many pixels follow, padded to two bytes. What runs leave out has
// the first colour.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "samples.h"

namespace vistel {

namespace {

constexpr size_t fileHeaderBytes = 14;
constexpr size_t oldHeaderBytes = 12;
constexpr size_t mostHeaderBytes = 124;

enum Packing { plain = 0, runsOf8 = 1, runsOf4 = 2, byMasks = 3, byFourMasks = 6 };

// Where a channel lies in a pixel of 16 or 32 bits. `most` is 0 for one that is not there.
struct Field {
    uint32_t shift, most;
};

using Palette = std::array<std::array<uint8_t, 4>, 256>;

struct Header {
    uint32_t bytes, pixelsAt;  // `bytes` without the file header's
    uint32_t width, height, bits, packing, colours;
    bool fromTop;
    bool inRuns() const { return packing == runsOf8 || packing == runsOf4; }
    bool isOs2() const { return bytes < 40 || bytes == 64; }
    uint64_t rowBytes() const { return (uint64_t{width} * bits + 7) / 8; }
    uint64_t padding() const { return (4 - rowBytes() % 4) % 4; }
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 2 && start[0] == 'B' && start[1] == 'M';
}

bool isPacking(const Header& header) {
    switch (header.packing) {
        case plain:
            return true;
        case runsOf8:
            return header.bits == 8;
        case runsOf4:
            return header.bits == 4;
        case byMasks:
        case byFourMasks:
            return !header.isOs2() && (header.bits == 16 || header.bits == 32);
        default:
            return false;
    }
}

Failure check(const Header& header) {
    static constexpr uint32_t depths[] = {1, 2, 4, 8, 16, 24, 32};
    if (std::find(std::begin(depths), std::end(depths), header.bits) == std::end(depths))
        return "the file is damaged: pixels of " + std::to_string(header.bits) + " bits";
    if (!isPacking(header))
        return "bitmaps of " + std::to_string(header.bits) + " bits with packing " +
               std::to_string(header.packing) + " are not supported";
    if (header.inRuns() && header.fromTop) return "the file is damaged: runs from the top down";
    if (header.pixelsAt < fileHeaderBytes + header.bytes)
        return "the file is damaged: pixels within the header";
    return {};
}

// `bytes` has room for the longest header and the masks; what is not there is zero.
Failure readHeader(ByteSource& source, std::span<uint8_t> bytes, Header& header) {
    uint8_t start[fileHeaderBytes + 4];
    if (!source.read(start, sizeof start)) return endsInHeader();
    if (!recognises(start)) return "not a bitmap";
    header.pixelsAt = readLittle32(start + 10);
    header.bytes = readLittle32(start + 14);
    if (header.bytes < 16 ? header.bytes != oldHeaderBytes : header.bytes > mostHeaderBytes)
        return "the file is damaged: a header of " + std::to_string(header.bytes) + " bytes";
    const size_t rest = header.bytes - 4;
    if (!source.read(bytes.data() + 4, rest)) return endsInHeader();
    const auto two = [&](size_t at) { return readLittle16(&bytes[at]); };
    const auto four = [&](size_t at) { return readLittle32(&bytes[at]); };
    if (header.bytes == oldHeaderBytes) {
        header.width = two(4);
        header.height = two(6);
        header.bits = two(10);
        return check(header);
    }
    header.width = four(4);
    header.fromTop = int32_t(four(8)) < 0;
    header.height = header.fromTop ? 0 - four(8) : four(8);
    header.bits = two(14);
    header.packing = four(16);
    header.colours = four(32);
    const size_t masks = header.packing == byFourMasks ? 16 : header.packing == byMasks ? 12 : 0;
    if (header.bytes == 40 && masks > 0 && !source.read(&bytes[40], masks)) return endsInHeader();
    return check(header);
}

Failure readPalette(ByteSource& source, const Header& header, Palette& palette) {
    const size_t entryBytes = header.bytes == oldHeaderBytes ? 3 : 4;
    const uint64_t all = uint64_t{1} << header.bits;
    uint64_t count = header.colours > 0 ? std::min<uint64_t>(header.colours, all) : all;
    // Some files store fewer than they tell.
    count = std::min<uint64_t>(count, (header.pixelsAt - source.position()) / entryBytes);
    palette.fill({0, 0, 0, 255});
    for (uint64_t i = 0; i < count; ++i) {
        uint8_t entry[4];
        if (!source.read(entry, entryBytes)) return "the file ends early: in its palette";
        palette[i] = {entry[2], entry[1], entry[0], 255};
    }
    return {};
}

// Only masks tell of a fourth channel: without them the fourth byte of a pixel may be anything.
// False when a channel's bits do not stand together.
bool fieldsOf(const Header& header, const uint8_t* masks, std::array<Field, 4>& fields) {
    static constexpr uint32_t five[] = {0x7C00, 0x3E0, 0x1F, 0};
    static constexpr uint32_t eight[] = {0xFF0000, 0xFF00, 0xFF, 0};
    for (size_t i = 0; i < 4; ++i) {
        uint32_t mask = header.bits == 16 ? five[i] : eight[i];
        if (header.packing != plain) mask = readLittle32(masks + i * 4);
        if (header.packing == byMasks && header.bytes < 56 && i == 3) mask = 0;
        const uint32_t shift = mask ? uint32_t(std::countr_zero(mask)) : 0;
        fields[i] = {shift, mask >> shift};
        if (fields[i].most & (fields[i].most + 1)) return false;
    }
    return true;
}

// Of four to seven bits the upper ones fill the lower ones, as usual; else to the nearest.
uint8_t sampleOf(uint32_t pixel, const Field& field, uint8_t without) {
    if (field.most == 0) return without;
    const uint32_t value = pixel >> field.shift & field.most;
    if (field.most == 255) return uint8_t(value);
    const int bits = std::popcount(field.most);
    if (bits >= 4 && bits < 8) return uint8_t(value << (8 - bits) | value >> (2 * bits - 8));
    return uint8_t((uint64_t{value} * 255 + field.most / 2) / field.most);
}

// Rows of plain pixels, of which `unpack` makes a picture's.
template <class Unpack>
Failure readRows(ByteSource& source, const Header& header, Picture& picture, Unpack unpack) {
    const Failure early =
        requireRows(source.left(), header.rowBytes(), header.padding(), header.height);
    std::vector<uint8_t> row(header.rowBytes() + header.padding());
    for (uint32_t y = 0; y < header.height; ++y) {
        const size_t bytes = size_t(std::min<uint64_t>(row.size(), source.left()));
        if (bytes < header.rowBytes() || !source.read(row.data(), bytes))
            return early ? early : endsInRow(y, header.height);
        unpack(row.data(), picture.row(header.fromTop ? y : header.height - 1 - y));
        picture.rowsRead = y + 1;
    }
    return {};
}

Failure readIndices(ByteSource& source, const Header& header, const Palette& palette,
                    Picture& picture) {
    const uint32_t bits = header.bits, inByte = 8 / bits, most = (1u << bits) - 1;
    return readRows(source, header, picture, [&](const uint8_t* from, uint8_t* to) {
        for (uint32_t x = 0; x < header.width; ++x) {
            const uint32_t shift = 8 - bits - x % inByte * bits;
            std::memcpy(to + size_t{x} * 4, palette[from[x / inByte] >> shift & most].data(), 4);
        }
    });
}

Failure readBytes(ByteSource& source, const Header& header, Picture& picture) {
    return readRows(source, header, picture, [&](const uint8_t* from, uint8_t* to) {
        for (uint32_t x = 0; x < header.width; ++x, from += 3, to += 4) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
            to[3] = 255;
        }
    });
}

Failure readFields(ByteSource& source, const Header& header, const std::array<Field, 4>& fields,
                   Picture& picture) {
    const bool four = header.bits == 32;
    picture.mask = fields[3].most != 0;
    return readRows(source, header, picture, [&](const uint8_t* from, uint8_t* to) {
        for (uint32_t x = 0; x < header.width; ++x, from += four ? 4 : 2, to += 4) {
            const uint32_t pixel = four ? readLittle32(from) : readLittle16(from);
            for (size_t i = 0; i < 3; ++i) to[i] = sampleOf(pixel, fields[i], 0);
            to[3] = sampleOf(pixel, fields[3], 255);
        }
    });
}

Failure readRuns(ByteSource& source, const Header& header, const Palette& palette,
                 Picture& picture) {
    uint64_t x = 0, y = 0;  // from the bottom up
    const auto put = [&](uint32_t index) {
        if (x < header.width && y < header.height)
            std::memcpy(picture.row(header.height - 1 - uint32_t(y)) + x * 4, palette[index].data(),
                        4);
        ++x;
    };
    const auto index = [&](const uint8_t* bytes, uint32_t i) -> uint32_t {
        if (header.bits == 8) return bytes[i];
        return i % 2 ? bytes[i / 2] & 15 : bytes[i / 2] >> 4;
    };
    while (y < header.height) {
        picture.rowsRead = uint32_t(y);
        uint8_t code[2], bytes[256];
        // The end mark may be missing.
        if (!source.read(code, 2)) {
            if (y + 1 == header.height && x >= header.width) break;
            return endsInRow(uint32_t(y), header.height);
        }
        if (code[0] > 0) {
            std::memset(bytes, code[1], sizeof bytes);
            for (uint32_t i = 0; i < code[0]; ++i) put(index(bytes, i));
        } else if (code[1] == 0) {
            x = 0;
            ++y;
        } else if (code[1] == 1) {
            break;
        } else if (code[1] == 2) {
            if (!source.read(bytes, 2)) return endsInRow(uint32_t(y), header.height);
            x += bytes[0];
            y += bytes[1];
        } else {
            const size_t length = (size_t{code[1]} * header.bits + 15) / 16 * 2;
            if (!source.read(bytes, length)) return endsInRow(uint32_t(y), header.height);
            for (uint32_t i = 0; i < code[1]; ++i) put(index(bytes, i));
        }
    }
    for (size_t i = 0; i < picture.samples.size(); i += 4)
        if (picture.samples[i + 3] == 0) std::memcpy(&picture.samples[i], palette[0].data(), 4);
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header{};
    std::array<uint8_t, mostHeaderBytes> bytes{};
    if (auto failure = readHeader(source, bytes, header)) return failure;
    Palette palette;
    std::array<Field, 4> fields{};
    if (header.bits <= 8)
        if (auto failure = readPalette(source, header, palette)) return failure;
    if (!fieldsOf(header, &bytes[40], fields)) return "the file is damaged: masks with gaps";
    if (auto failure = picture.allocate(header.width, header.height, false)) return failure;
    if (!source.goTo(header.pixelsAt)) return endsInRow(0, header.height);
    if (header.inRuns()) return readRuns(source, header, palette, picture);
    if (header.bits <= 8) return readIndices(source, header, palette, picture);
    if (header.bits == 24) return readBytes(source, header, picture);
    return readFields(source, header, fields, picture);
}

// A mask goes with the longer header, the only one that tells of it.
std::vector<uint8_t> headerOf(const Picture& picture, uint64_t rowBytes) {
    const uint32_t bytes = picture.mask ? 108 : 40;
    const uint32_t pixelsAt = fileHeaderBytes + bytes;
    const uint32_t pixels = uint32_t(rowBytes * picture.height);
    std::vector<uint8_t> header(pixelsAt);
    header[0] = 'B';
    header[1] = 'M';
    writeLittle32(&header[2], pixelsAt + pixels);
    writeLittle32(&header[10], pixelsAt);
    writeLittle32(&header[14], bytes);
    writeLittle32(&header[18], picture.width);
    writeLittle32(&header[22], picture.height);
    header[26] = 1;
    header[28] = picture.mask ? 32 : 24;
    writeLittle32(&header[34], pixels);
    if (!picture.mask) return header;
    header[30] = byMasks;
    static constexpr uint32_t masks[] = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    for (size_t i = 0; i < 4; ++i) writeLittle32(&header[54 + i * 4], masks[i]);
    std::memcpy(&header[70], "BGRs", 4);  // the colours are sRGB
    return header;
}

Failure write(const Picture& picture, const TargetFile& target) {
    const size_t channels = picture.mask ? 4 : 3;
    const uint64_t rowBytes = (uint64_t{picture.width} * channels + 3) / 4 * 4;
    if (rowBytes * picture.height > INT32_MAX) return "the picture is too large for the file type";
    if (!writeAll(target, headerOf(picture, rowBytes))) return cannotWrite();
    std::vector<uint8_t> room;
    const auto fill = [&](uint32_t y, std::vector<uint8_t>& row) {
        const uint8_t* from = picture.byteRow(y, room);
        for (size_t x = 0; x < picture.width; ++x, from += 4) {
            const uint8_t pixel[] = {from[2], from[1], from[0], from[3]};
            std::memcpy(&row[x * channels], pixel, channels);
        }
    };
    return writeRows(target, picture, RowOrder::bottomFirst, rowBytes, fill);
}

}  // namespace

const Codec bmpCodec{"bmp", recognises, read, write};

}  // namespace vistel
