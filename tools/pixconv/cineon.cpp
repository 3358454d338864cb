// Cineon film scans: a header, then red, green and blue of 10 bits in one 32-bit word for each
// pixel. The codes are printing densities (logarithmic) and are kept as they are; of a picture that
// does not come from film they are made.
//
//     0    magic 0x802A5FD7 in the file's byte order    4  place of the image
//     192  direction   193 channels   196 28 bytes for each channel: 2 bits, 4 width, 8 height
//     680  interleaving   681 packing: 5 left-justified, 6 right-justified   682 sign
//     684  padding of each row

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "codecs.h"
#include "film_scan.h"
#include "turned.h"

namespace vistel {

namespace {

constexpr uint32_t magic = 0x802A5FD7;
constexpr size_t readBytes = 712, writtenBytes = 2048;
constexpr size_t firstChannel = 196, channelBytes = 28;
constexpr uint32_t unknown = 0xFFFFFFFF;
constexpr uint8_t leftJustified = 5, rightJustified = 6;

// Where the first row and column belong (turned.h), by direction: rows of pixels down or up, from
// left or right; then columns of pixels, down or up, from left or right.
constexpr int orientations[] = {1, 4, 2, 3, 5, 6, 8, 7};

struct Header {
    uint32_t width, height;
    uint8_t direction;
    CodePlane plane;
};

bool recognises(std::span<const uint8_t> start) {
    return start.size() >= 4 &&
           (readBig32(start.data()) == magic || readLittle32(start.data()) == magic);
}

Failure readChannels(const uint8_t* bytes, ByteOrder order, Header& header) {
    if (bytes[193] != 3)
        return "Cineon pictures of " + std::to_string(bytes[193]) +
               " channels are not supported, only red, green and blue";
    for (size_t i = 0; i < 3; ++i) {
        const uint8_t* channel = bytes + firstChannel + i * channelBytes;
        if (channel[2] != 10)
            return "Cineon pictures of " + std::to_string(channel[2]) + " bits are not supported";
        const uint32_t width = number32(channel + 4, order), height = number32(channel + 8, order);
        if (i > 0 && (width != header.width || height != header.height))
            return "the file is damaged: its channels differ in size";
        header.width = width;
        header.height = height;
    }
    return {};
}

Failure readHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, readBytes> bytes;
    if (!source.read(bytes.data(), 4)) return endsInHeader();
    if (!recognises({bytes.data(), 4})) return "not a Cineon picture";
    if (!source.read(&bytes[4], readBytes - 4)) return endsInHeader();
    const ByteOrder order = readBig32(bytes.data()) == magic ? ByteOrder::big : ByteOrder::little;
    if (auto failure = readChannels(bytes.data(), order, header)) return failure;
    header.direction = bytes[192];
    if (header.direction >= std::size(orientations))
        return "the file is damaged: direction " + std::to_string(header.direction);
    if (bytes[680] != 0) return "Cineon pictures in separate planes are not supported";
    if (bytes[681] != leftJustified && bytes[681] != rightJustified)
        return "Cineon pictures in packing " + std::to_string(bytes[681]) + " are not supported";
    if (bytes[682] != 0) return "Cineon pictures with signed codes are not supported";

    CodePlane& plane = header.plane;
    plane.layout = {bytes[681] == leftJustified ? CodePacking::filledHigh : CodePacking::filledLow,
                    10, order};
    plane.order = usualOrder(true, false);
    plane.place = number32(&bytes[4], order);
    plane.padding = number32(&bytes[684], order);
    if (plane.padding == unknown) plane.padding = 0;
    if (plane.place < readBytes) return "the file is damaged: the image lies in the header";
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header{};
    if (auto failure = readHeader(source, header)) return failure;
    if (auto failure = picture.allocate(header.width, header.height, true)) return failure;
    picture.filmCodes = true;
    const Failure early = requireCodes(source, picture, false, header.plane);
    const Failure failure = readCodes(source, header.plane, picture);
    return completed(picture, early ? early : failure, orientations[header.direction]);
}

// Readers take every file of this type for densities of film: code 685 is white, each code less is
// 0.002 of density on a negative of gamma 0.6, and what is left at code 95 is taken off as black.
uint16_t filmCode(float light) {
    constexpr double white = 685, black = 95, codesPerDecade = 0.6 / 0.002;
    const double floor = std::pow(10, (black - white) / codesPerDecade);
    const double shown = std::max(double{light}, 0.0) * (1 - floor) + floor;
    return uint16_t(std::lround(white + codesPerDecade * std::log10(shown)));
}

uint16_t filmCodeOf(const Picture& picture, uint32_t y, size_t sample) {
    static const auto codes = [] {
        std::vector<uint16_t> all(65536);
        for (size_t i = 0; i < all.size(); ++i)
            all[i] = filmCode(linearFromEncoded(float(i) / 65535));
        return all;
    }();
    return codes[wordSample(picture, y, sample)];
}

std::array<uint8_t, writtenBytes> headerOf(const Picture& picture) {
    constexpr uint32_t densityOfWhite = 0x40030000;  // 2.046875 as a floating-point number
    constexpr uint32_t whiteCode = 0x447FC000;       // 1023
    std::array<uint8_t, writtenBytes> bytes{};
    writeBig32(&bytes[0], magic);
    writeBig32(&bytes[4], writtenBytes);
    writeBig32(&bytes[8], 1024);   // the header that every file has
    writeBig32(&bytes[12], 1024);  // film
    writeBig32(&bytes[20], uint32_t(writtenBytes + uint64_t{picture.width} * picture.height * 4));
    std::memcpy(&bytes[24], "V4.5", 4);
    bytes[193] = 3;
    for (size_t i = 0; i < 3; ++i) {
        uint8_t* channel = &bytes[firstChannel + i * channelBytes];
        channel[1] = uint8_t(i + 1);  // red, green, blue
        channel[2] = 10;
        writeBig32(channel + 4, picture.width);
        writeBig32(channel + 8, picture.height);
        writeBig32(channel + 20, whiteCode);
        writeBig32(channel + 24, densityOfWhite);
    }
    bytes[681] = leftJustified;
    return bytes;
}

Failure write(const Picture& picture, const TargetFile& target) {
    return writeTenBitColour(target, headerOf(picture), picture,
                             picture.filmCodes ? tenBitsOf : filmCodeOf);
}

}  // namespace

const Codec cineonCodec{"cineon", recognises, read, write};

}  // namespace vistel
