// Portable float maps: "PF" (colour) or "Pf" (grey), width, height and a scale as text, then 32-bit
// floating-point samples from the bottom row up, little-endian when the scale is negative. The
// samples are light. The scale's size, a unit of measure, is left alone.

#include <array>
#include <bit>
#include <string>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "samples.h"
#include "text_header.h"

namespace vistel {

namespace {

struct Header {
    uint32_t width = 0, height = 0;
    uint32_t channels = 0;
    ByteOrder order = ByteOrder::big;
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 3 && start[0] == 'P' && (start[1] == 'F' || start[1] == 'f') &&
           isBlank(start[2]);
}

// The scale: its sign alone counts. False for what is no number but 0.
bool readScale(ByteSource& source, bool& negative) {
    const std::string word = readWord(source);
    negative = word.starts_with('-');
    return !word.empty() && word.find_first_not_of("+-.0123456789eE") == std::string::npos &&
           word.find_first_of("123456789") != std::string::npos;
}

Failure readHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, 3> magic;
    if (!source.read(magic.data(), magic.size())) return endsInHeader();
    if (!recognises(magic)) return "not a PFM picture";
    header.channels = magic[1] == 'F' ? 3 : 1;
    bool negative = false;
    if (!readNumber(source, header.width) || !readNumber(source, header.height) ||
        !readScale(source, negative))
        return "the file is damaged: its header";
    header.order = negative ? ByteOrder::little : ByteOrder::big;
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header;
    if (auto failure = readHeader(source, header)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, false)) return failure;
    const uint64_t rowBytes = uint64_t{header.width} * header.channels * 4;
    picture.colour = header.channels == 3;
    std::vector<uint8_t> bytes(rowBytes);
    for (uint32_t y = picture.height; y-- > 0;) {
        if (!source.read(bytes.data(), bytes.size()))
            return endsInRow(picture.height - 1 - y, picture.height);
        for (size_t i = 0; i < size_t{header.width} * header.channels; ++i)
            picture.row(y)[i / header.channels * 4 + i % header.channels] =
                byteFromLinear(std::bit_cast<float>(number32(&bytes[i * 4], header.order)));
        completeRow(picture, y);
        picture.rowsRead = picture.height - y;
    }
    return {};
}

Failure write(const Picture& picture, const TargetFile& target) {
    const uint32_t channels = picture.colour ? 3 : 1;
    if (std::fprintf(target.file, "%s\n%u %u\n-1.0\n", picture.colour ? "PF" : "Pf", picture.width,
                     picture.height) < 0)
        return cannotWrite();
    const size_t samples = size_t{picture.width} * channels;
    const auto fill = [&](uint32_t y, std::vector<uint8_t>& bytes) {
        for (size_t i = 0; i < samples; ++i)
            writeLittle32(&bytes[i * 4], std::bit_cast<uint32_t>(lightOfSample(
                                             picture, y, i / channels * 4 + i % channels)));
    };
    return writeRows(target, picture, RowOrder::bottomFirst, samples * 4, fill);
}

}  // namespace

const Codec pfmCodec{"pfm", recognises, read, write};

}  // namespace vistel
