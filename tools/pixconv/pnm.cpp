// Portable maps: a header in words, then the samples from the top row down.
//
//     P1 P2 P3  bits, grey, colour as decimal text      P4 P5 P6  the same as bytes
//     P7        lines "WIDTH 4" ... "ENDHDR": any of grey and colour, with or without mask
//
// A bit that is set is black (in P1 and P4 only). A sample counts up to the largest value that the
// header tells; above 255 it takes two bytes, big-endian.
//
// Written are P5 and P6, in 8 or 16 bits as the picture has them, which lose a mask; to a file
// whose name ends in ".pam", P7 with the mask.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "host/tstring.h"
#include "samples.h"
#include "text_header.h"

namespace vistel {

namespace {

struct Header {
    uint32_t width = 0, height = 0;
    uint32_t channels = 1;
    uint32_t most = 1;  // the largest value
    enum class Raster { text, textBits, bits, bytes } raster = Raster::text;
    bool wide() const { return most > 255; }
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 3 && start[0] == 'P' && start[1] >= '1' && start[1] <= '7' &&
           (isBlank(start[2]) || start[2] == '#');
}

Failure damagedHeader() { return "the file is damaged: its header"; }

struct TupleType {
    const char* name;
    uint32_t channels;
};
constexpr TupleType tupleTypes[] = {
    {"BLACKANDWHITE", 1}, {"BLACKANDWHITE_ALPHA", 2}, {"GRAYSCALE", 1}, {"GRAYSCALE_ALPHA", 2},
    {"RGB", 3},           {"RGB_ALPHA", 4},
};

struct Tuples {
    uint32_t depth = 0;
    std::string type;
};

// One line of a P7 header. False at its end.
bool readHeaderLine(ByteSource& source, Header& header, Tuples& tuples, Failure& failure) {
    const std::string line = readLine(source);
    const size_t blank = line.find_first_of(" \t");
    const std::string name = line.substr(0, blank);
    if (name == "ENDHDR") return false;
    if (name.empty() || name.starts_with('#')) {
        if (source.left() == 0) failure = endsInHeader();
        return source.left() > 0;
    }
    const size_t start = line.find_first_not_of(" \t", blank);
    const std::string value = start == std::string::npos ? "" : line.substr(start);
    if (name == "TUPLTYPE") {
        tuples.type = value;
        return true;
    }
    const struct {
        const char* name;
        uint32_t* field;
    } fields[] = {{"WIDTH", &header.width},
                  {"HEIGHT", &header.height},
                  {"DEPTH", &tuples.depth},
                  {"MAXVAL", &header.most}};
    for (const auto& row : fields)
        if (name == row.name && parseNumber(value, *row.field)) return true;
    failure = damagedHeader();
    return false;
}

Failure readTupleHeader(ByteSource& source, Header& header) {
    Tuples tuples;
    Failure failure;
    while (readHeaderLine(source, header, tuples, failure)) {
    }
    if (failure) return failure;
    if (tuples.type.empty() && tuples.depth >= 1 && tuples.depth <= 4)
        tuples.type = tupleTypes[tuples.depth + 1].name;
    for (const TupleType& row : tupleTypes)
        if (tuples.type == row.name && tuples.depth == row.channels) {
            header.channels = row.channels;
            header.raster = Header::Raster::bytes;
            return {};
        }
    return "portable maps of type \"" + tuples.type + "\" with " + std::to_string(tuples.depth) +
           " channels are not supported";
}

Failure readHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, 2> magic;
    if (!source.read(magic.data(), magic.size())) return endsInHeader();
    if (magic[0] != 'P' || magic[1] < '1' || magic[1] > '7') return "not a portable map";
    const int kind = magic[1] - '0';
    if (kind == 7) {
        readLine(source);
        if (auto failure = readTupleHeader(source, header)) return failure;
    } else {
        header.channels = kind % 3 == 0 ? 3 : 1;
        header.raster = kind == 1   ? Header::Raster::textBits
                        : kind < 4  ? Header::Raster::text
                        : kind == 4 ? Header::Raster::bits
                                    : Header::Raster::bytes;
        if (!readNumber(source, header.width) || !readNumber(source, header.height))
            return damagedHeader();
        if (kind % 3 != 1 && !readNumber(source, header.most)) return damagedHeader();
    }
    if (header.most == 0 || header.most > 65535)
        return "the file is damaged: its largest value is " + std::to_string(header.most);
    return {};
}

uint64_t rowBytes(const Header& header) {
    const uint64_t samples = uint64_t{header.width} * header.channels;
    switch (header.raster) {
        case Header::Raster::bits:
            return (samples + 7) / 8;
        case Header::Raster::bytes:
            return samples * (header.wide() ? 2 : 1);
        default:
            return samples;  // at the least
    }
}

// The next digit of a map of bits as text: 0 or 1; below 0 for anything else.
int nextBit(ByteSource& source) {
    int byte = source.next();
    while (isBlank(byte) || byte == '#') {
        if (byte == '#') readLine(source);
        byte = source.next();
    }
    return byte == '0' || byte == '1' ? byte - '0' : -1;
}

bool readTextRow(ByteSource& source, const Header& header, std::vector<uint32_t>& row) {
    for (uint32_t& sample : row) {
        if (header.raster == Header::Raster::text) {
            if (!readNumber(source, sample)) return false;
            continue;
        }
        const int bit = nextBit(source);
        if (bit < 0) return false;
        sample = uint32_t(1 - bit);
    }
    return true;
}

bool readSamples(ByteSource& source, const Header& header, std::vector<uint8_t>& bytes,
                 std::vector<uint32_t>& row) {
    if (header.raster == Header::Raster::text || header.raster == Header::Raster::textBits)
        return readTextRow(source, header, row);
    if (!source.read(bytes.data(), bytes.size())) return false;
    for (size_t i = 0; i < row.size(); ++i) {
        if (header.raster == Header::Raster::bits)
            row[i] = ~bytes[i / 8] >> (7 - i % 8) & 1;
        else
            row[i] = header.wide() ? readBig16(&bytes[i * 2]) : bytes[i];
    }
    return true;
}

Failure readRow(ByteSource& source, const Header& header, std::vector<uint8_t>& bytes, uint32_t y,
                std::vector<uint32_t>& row) {
    if (!readSamples(source, header, bytes, row))
        return source.left() == 0 ? endsInRow(y, header.height) : damagedRow(y, header.height);
    const auto most = std::max_element(row.begin(), row.end());
    return *most > header.most ? damagedRow(y, header.height) : Failure();
}

void placeRow(const std::vector<uint32_t>& row, const Header& header, const ChannelOrder& order,
              uint32_t y, Picture& picture) {
    for (size_t i = 0; i < row.size(); ++i) {
        const size_t sample = i / order.channels * 4 + order.place[i % order.channels];
        if (picture.wide)
            picture.wideRow(y)[sample] = uint16_t(rescaled(row[i], header.most, 65535));
        else
            picture.row(y)[sample] = uint8_t(rescaled(row[i], header.most, 255));
    }
    completeRow(picture, y);
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header;
    if (auto failure = readHeader(source, header)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, header.wide())) return failure;
    const Failure early = requireRows(source.left(), rowBytes(header), 0, header.height);
    picture.colour = header.channels >= 3;
    picture.mask = header.channels % 2 == 0;
    const ChannelOrder order = usualOrder(picture.colour, picture.mask);
    std::vector<uint8_t> bytes(rowBytes(header));
    std::vector<uint32_t> row(size_t{header.width} * header.channels);
    for (uint32_t y = 0; y < picture.height; ++y) {
        if (auto failure = readRow(source, header, bytes, y, row)) return early ? early : failure;
        placeRow(row, header, order, y, picture);
        picture.rowsRead = y + 1;
    }
    return {};
}

bool endsInPam(const std::string& path) {
    return Tstring(path.substr(path.size() - std::min<size_t>(path.size(), 4)))
        .equalsIgnoringCase(".pam");
}

bool writeHeader(const Picture& picture, const ChannelOrder& order, bool tuples, FILE* file) {
    const int most = picture.wide ? 65535 : 255;
    if (!tuples)
        return std::fprintf(file, "P%d\n%u %u\n%d\n", picture.colour ? 6 : 5, picture.width,
                            picture.height, most) > 0;
    return std::fprintf(file,
                        "P7\nWIDTH %u\nHEIGHT %u\nDEPTH %u\nMAXVAL %d\nTUPLTYPE %s%s\nENDHDR\n",
                        picture.width, picture.height, order.channels, most,
                        picture.colour ? "RGB" : "GRAYSCALE", picture.mask ? "_ALPHA" : "") > 0;
}

Failure write(const Picture& picture, const TargetFile& target) {
    const bool tuples = endsInPam(target.path);
    const ChannelOrder order = usualOrder(picture.colour, tuples && picture.mask);
    if (!writeHeader(picture, order, tuples, target.file)) return cannotWrite();
    const size_t samples = size_t{picture.width} * order.channels;
    const auto fill = [&](uint32_t y, std::vector<uint8_t>& bytes) {
        for (size_t i = 0; i < samples; ++i) {
            const size_t sample = i / order.channels * 4 + order.place[i % order.channels];
            if (picture.wide)
                writeBig16(&bytes[i * 2], picture.wideRow(y)[sample]);
            else
                bytes[i] = picture.row(y)[sample];
        }
    };
    return writeRows(target, picture, RowOrder::topFirst, samples * (picture.wide ? 2 : 1), fill);
}

}  // namespace

const Codec pnmCodec{"pnm", recognises, read, write};

}  // namespace vistel
