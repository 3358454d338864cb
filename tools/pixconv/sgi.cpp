// SGI pictures: one plane after the other, rows from the bottom one up, plain or in runs.
//
//     0  magic 474         2  storage: 0 plain, 1 runs      3  bytes per sample
//     4  dimension 1 to 3  6  width   8  height  10 channels
//     12 smallest, 16 largest value   24 name, 80 bytes    104 colour map kind
//     512  plain: the planes; runs: a table of the rows' places, one of their lengths, the rows
//
// All numbers are big-endian. A run starts with a sample whose low seven bits are a count, 0 for
// the end of the row; bit 7 set: so many samples follow, clear: the next sample so many times.

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "samples.h"
#include "turned.h"

namespace vistel {

namespace {

constexpr uint16_t magic = 474;
constexpr size_t headerBytes = 512;
constexpr uint32_t longestRun = 127;
constexpr uint8_t literal = 0x80;

struct Header {
    bool runs;
    uint32_t sampleBytes;
    uint32_t width, height;
    uint32_t channels;  // in the file; the first four are read
    uint32_t used() const { return std::min(channels, 4u); }
    uint64_t rowBytes() const { return uint64_t{width} * sampleBytes; }
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 4 && readBig16(start.data()) == magic && start[2] <= 1 &&
           (start[3] == 1 || start[3] == 2);
}

Failure readHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, headerBytes> bytes;
    if (!source.read(bytes.data(), bytes.size())) return endsInHeader();
    const auto number = [&](size_t at) { return readBig16(&bytes[at]); };
    if (number(0) != magic) return "not an SGI picture";
    if (bytes[2] > 1) return "SGI storage " + std::to_string(bytes[2]) + " is not supported";
    if (bytes[3] != 1 && bytes[3] != 2)
        return "planes of " + std::to_string(bytes[3]) + " bytes per sample are not supported";
    if (readBig32(&bytes[104]) != 0) return "SGI pictures with a colour map are not supported";
    const uint16_t dimension = number(4);
    if (dimension < 1 || dimension > 3)
        return "the file is damaged: dimension " + std::to_string(dimension);
    header = {bytes[2] == 1, bytes[3], number(6), dimension >= 2 ? number(8) : 1u,
              dimension == 3 ? number(10) : 1u};
    if (header.channels == 0) return "the file is damaged: no channels";
    return {};
}

// Puts the samples of one plane's row into the picture.
void placeRow(const uint8_t* bytes, Picture& picture, uint32_t y, uint8_t place) {
    for (size_t x = 0; x < picture.width; ++x) {
        if (picture.wide)
            picture.wideRow(y)[x * 4 + place] = readBig16(bytes + x * 2);
        else
            picture.row(y)[x * 4 + place] = bytes[x];
    }
}

// One row's runs to its samples, still as bytes of the file. False when they do not give exactly
// the row.
bool unpackRow(std::span<const uint8_t> packed, uint32_t sampleBytes, std::span<uint8_t> row) {
    size_t from = 0, to = 0;
    while (from + sampleBytes <= packed.size()) {
        const uint8_t control = packed[from + sampleBytes - 1];
        const size_t bytes = size_t{control & longestRun} * sampleBytes;
        from += sampleBytes;
        if (bytes == 0) break;
        const size_t stored = control & literal ? bytes : sampleBytes;
        if (bytes > row.size() - to || stored > packed.size() - from) return false;
        for (size_t i = 0; i < bytes; i += stored) std::memcpy(&row[to + i], &packed[from], stored);
        from += stored;
        to += bytes;
    }
    return to == row.size();
}

Failure readPlain(ByteSource& source, const Header& header, const ChannelOrder& order,
                  Picture& picture) {
    const Failure early =
        requireRows(source.left(), header.rowBytes() * order.channels, 0, header.height);
    std::vector<uint8_t> row(header.rowBytes());
    for (uint32_t channel = 0; channel < order.channels; ++channel)
        for (uint32_t y = header.height; y-- > 0;) {
            if (!source.read(row.data(), row.size()))
                return early ? early : endsInRow(header.height - 1 - y, header.height);
            placeRow(row.data(), picture, y, order.place[channel]);
            picture.rowsRead = std::max(picture.rowsRead, header.height - y);
        }
    return {};
}

// Places and lengths of all rows, in the file's order.
Failure readTables(ByteSource& source, const Header& header, std::vector<uint8_t>& tables) {
    const uint64_t bytes = uint64_t{header.height} * header.channels * 8;
    if (bytes > source.left()) return "the file ends early: in its table of rows";
    tables.resize(bytes);
    if (!source.read(tables.data(), tables.size()))
        return "the file ends early: in its table of rows";
    return {};
}

Failure readRuns(ByteSource& source, const Header& header, const ChannelOrder& order,
                 Picture& picture) {
    std::vector<uint8_t> tables;
    if (auto failure = readTables(source, header, tables)) return failure;
    const size_t rows = size_t{header.height} * header.channels;
    const uint64_t longest = header.rowBytes() * 2 + header.sampleBytes * 2;
    std::vector<uint8_t> packed, row(header.rowBytes());
    for (uint32_t channel = 0; channel < order.channels; ++channel)
        for (uint32_t line = 0; line < header.height; ++line) {
            const size_t i = size_t{channel} * header.height + line;
            const uint32_t place = readBig32(&tables[i * 4]);
            const uint32_t length = readBig32(&tables[(rows + i) * 4]);
            if (uint64_t{place} + length > source.size()) return endsInRow(line, header.height);
            if (place < headerBytes || length > longest) return damagedRow(line, header.height);
            packed.resize(length);
            if (!source.goTo(place) || !source.read(packed.data(), length))
                return endsInRow(line, header.height);
            if (!unpackRow(packed, header.sampleBytes, row)) return damagedRow(line, header.height);
            placeRow(row.data(), picture, header.height - 1 - line, order.place[channel]);
            picture.rowsRead = std::max(picture.rowsRead, line + 1);
        }
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header{};
    if (auto failure = readHeader(source, header)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, header.sampleBytes == 2))
        return failure;
    picture.colour = header.used() >= 3;
    picture.mask = header.used() % 2 == 0;
    const ChannelOrder order = usualOrder(picture.colour, picture.mask);
    return completed(picture, header.runs ? readRuns(source, header, order, picture)
                                          : readPlain(source, header, order, picture));
}

// How many of the samples from the first one on are equal, up to a run's length.
size_t equalSamples(std::span<const uint16_t> samples) {
    size_t count = 1;
    while (count < samples.size() && count < longestRun && samples[count] == samples[0]) ++count;
    return count;
}

// Samples up to the next three equal ones, which are worth a run.
size_t differentSamples(std::span<const uint16_t> samples) {
    size_t count = 1;
    while (count < samples.size() && count < longestRun) {
        const auto rest = samples.subspan(count);
        if (rest.size() >= 3 && rest[0] == rest[1] && rest[1] == rest[2]) break;
        ++count;
    }
    return count;
}

void packRow(std::span<const uint16_t> row, bool wide, std::vector<uint8_t>& packed) {
    const auto put = [&](uint16_t sample) {
        if (wide) packed.push_back(uint8_t(sample >> 8));
        packed.push_back(uint8_t(sample));
    };
    packed.clear();
    while (!row.empty()) {
        size_t count = equalSamples(row);
        if (count >= 3 || count == row.size()) {
            put(uint16_t(count));
            put(row[0]);
        } else {
            count = differentSamples(row);
            put(uint16_t(literal | count));
            for (size_t i = 0; i < count; ++i) put(row[i]);
        }
        row = row.subspan(count);
    }
    put(0);
}

std::array<uint8_t, headerBytes> headerOf(const Picture& picture, uint32_t channels) {
    std::array<uint8_t, headerBytes> bytes{};
    writeBig16(&bytes[0], magic);
    bytes[2] = 1;
    bytes[3] = picture.wide ? 2 : 1;
    writeBig16(&bytes[4], channels > 1 ? 3 : 2);
    writeBig16(&bytes[6], uint16_t(picture.width));
    writeBig16(&bytes[8], uint16_t(picture.height));
    writeBig16(&bytes[10], uint16_t(channels));
    writeBig32(&bytes[16], picture.wide ? 65535 : 255);
    return bytes;
}

Failure write(const Picture& picture, const TargetFile& target) {
    const ChannelOrder order = usualOrder(picture.colour, picture.mask);
    const size_t rows = size_t{picture.height} * order.channels;
    std::vector<uint8_t> tables(rows * 8);
    const auto header = headerOf(picture, order.channels);
    if (!writeAll(target, header) || !writeAll(target, tables)) return cannotWrite();

    uint64_t place = headerBytes + tables.size();
    std::vector<uint16_t> row(picture.width);
    std::vector<uint8_t> packed;
    for (size_t i = 0; i < rows; ++i) {
        const uint32_t y = picture.height - 1 - uint32_t(i % picture.height);
        const uint8_t sample = order.place[i / picture.height];
        for (size_t x = 0; x < row.size(); ++x)
            row[x] =
                picture.wide ? picture.wideRow(y)[x * 4 + sample] : picture.row(y)[x * 4 + sample];
        packRow(row, picture.wide, packed);
        writeBig32(&tables[i * 4], uint32_t(place));
        writeBig32(&tables[(rows + i) * 4], uint32_t(packed.size()));
        place += packed.size();
        if (place > UINT32_MAX) return "the picture is too large for the file type";
        if (!writeAll(target, packed)) return cannotWrite();
    }
    if (!platform::seekStream(target.file, headerBytes, SEEK_SET) || !writeAll(target, tables))
        return cannotWrite();
    return {};
}

}  // namespace

const Codec sgiCodec{"sgi", recognises, read, write};

}  // namespace vistel
