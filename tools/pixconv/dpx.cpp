// DPX film scans: a header of 2048 bytes, then one or more images ("elements"), as a rule a single
// one of red, green and blue in 10 bits.
//
//     0    magic "SDPX" (big-endian) or "XPDS"    4    place of the first image
//     768  direction   770 elements   772 width   776 height
//     780  72 bytes for each of eight elements: 0 sign, 20 kind, 21 transfer curve, 23 bits,
//          24 packing, 26 encoding, 28 place, 32 padding of each row
//     1408 orientation, 1664 film, 1920 television: not read
//
// What is not known is all ones. Codes are kept as they are; the curve only tells those of film
// from those of video (Rec. 709, what screens show), so that they are written as what they are.

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "codecs.h"
#include "film_scan.h"
#include "turned.h"

namespace vistel {

namespace {

constexpr uint32_t bigMagic = 0x53445058, littleMagic = 0x58504453;
constexpr size_t readBytes = 1408, writtenBytes = 2048;
constexpr size_t firstElement = 780, elementBytes = 72, mostElements = 8;
constexpr uint32_t unknown = 0xFFFFFFFF;
constexpr uint16_t unknown16 = 0xFFFF;

// Where the first row and column belong (turned.h), by direction: rows of pixels from left or
// right, down or up; then columns of pixels, down or up, from left or right.
constexpr int orientations[] = {1, 2, 4, 3, 5, 6, 8, 7};

struct Kind {
    uint8_t code;
    bool grey;
    ChannelOrder order;
};
constexpr Kind kinds[] = {
    {1, false, {1, {0}}},            // red
    {2, false, {1, {1}}},            // green
    {3, false, {1, {2}}},            // blue
    {4, false, {1, {3}}},            // mask
    {6, true, {1, {0}}},             // luminance
    {50, false, {3, {0, 1, 2}}},     // red, green, blue
    {51, false, {4, {0, 1, 2, 3}}},  // ... and mask
    {52, false, {4, {3, 2, 1, 0}}},  // mask, blue, green, red
};

struct Packing {
    uint32_t bits;
    uint32_t code;  // 0 packed, 1 filled on the right, 2 filled on the left
    CodePacking packing;
};
constexpr Packing packings[] = {
    {8, 0, CodePacking::bytes},       {8, 1, CodePacking::bytes},
    {8, 2, CodePacking::bytes},       {10, 0, CodePacking::continuous},
    {10, 1, CodePacking::filledHigh}, {10, 2, CodePacking::filledLow},
    {12, 0, CodePacking::continuous}, {12, 1, CodePacking::highWords},
    {12, 2, CodePacking::words},      {16, 0, CodePacking::words},
    {16, 1, CodePacking::words},      {16, 2, CodePacking::words},
};

// The curve of codes, and what primaries they have.
enum Curve : uint8_t { printingDensity = 1, logarithmic = 3, video = 6 };

struct Header {
    uint32_t width, height;
    uint64_t place;         // of the first element
    uint64_t declaredSize;  // of the file
    uint16_t direction;
    bool grey = false;
    bool filmCodes = false;
    uint32_t samples = 0;  // which of a pixel's four the planes give, a bit each
    std::vector<CodePlane> planes;
};

bool recognises(std::span<const uint8_t> start) {
    if (start.size() < 4) return false;
    const uint32_t magic = readBig32(start.data());
    return magic == bigMagic || magic == littleMagic;
}

uint32_t samplesOf(const ChannelOrder& order) {
    uint32_t samples = 0;
    for (uint32_t i = 0; i < order.channels; ++i) samples |= 1u << order.place[i];
    return samples;
}

// Codes of one channel lie in a filled word the other way round: the first one lowest.
CodePacking packingOf(const Packing& row, uint32_t channels) {
    if (channels > 1) return row.packing;
    if (row.packing == CodePacking::filledHigh) return CodePacking::filledHighReversed;
    if (row.packing == CodePacking::filledLow) return CodePacking::filledLowReversed;
    return row.packing;
}

Failure readElement(const uint8_t* bytes, ByteOrder order, const Kind*& kind, CodePlane& plane) {
    const auto is = [&](const Kind& row) { return row.code == bytes[20]; };
    kind = std::find_if(std::begin(kinds), std::end(kinds), is);
    if (kind == std::end(kinds))
        return "DPX images of kind " + std::to_string(bytes[20]) +
               " are not supported, only red, green, blue, mask and grey";
    if (number32(bytes, order) == 1) return "DPX images with signed codes are not supported";
    if (number16(bytes + 26, order) == 1) return "run-length encoded DPX images are not supported";
    const uint32_t bits = bytes[23], code = number16(bytes + 24, order);
    const auto fits = [&](const Packing& row) {
        return row.bits == bits && row.code == (code == unknown16 ? 0 : code);
    };
    const auto* packing = std::find_if(std::begin(packings), std::end(packings), fits);
    if (packing == std::end(packings))
        return "DPX images of " + std::to_string(bits) + " bits in packing " +
               std::to_string(code) + " are not supported";
    plane.layout = {packingOf(*packing, kind->order.channels), bits, order};
    plane.order = kind->order;
    plane.place = number32(bytes + 28, order);
    plane.padding = number32(bytes + 32, order);
    if (plane.padding == unknown) plane.padding = 0;
    return {};
}

bool isTold(uint64_t place) { return place != 0 && place != unknown; }

// The elements in order; one that repeats channels of another is not read, nor one that is not
// supported where the others are a whole picture.
Failure readElements(const uint8_t* bytes, ByteOrder order, Header& header) {
    uint32_t count = number16(bytes + 770, order);
    if (count == 0 || count == unknown16) count = 1;
    if (count > mostElements)
        return "the file is damaged: " + std::to_string(count) + " image elements";
    Failure unusable;
    bool endKnown = true;  // of the element before
    for (uint32_t i = 0; i < count; ++i) {
        CodePlane plane;
        const Kind* kind = nullptr;
        if (auto failure =
                readElement(bytes + firstElement + i * elementBytes, order, kind, plane)) {
            if (!unusable) unusable = failure;
            endKnown = false;
            continue;
        }
        endKnown = (endKnown || isTold(plane.place)) && !(header.samples & samplesOf(kind->order));
        if (!endKnown) continue;
        header.samples |= samplesOf(kind->order);
        header.grey |= kind->grey;
        header.planes.push_back(plane);
    }
    if (header.grey || (header.samples & 7) == 7) return {};
    return unusable ? unusable : "the file has not all of red, green and blue";
}

Failure readHeader(ByteSource& source, Header& header) {
    std::array<uint8_t, readBytes> bytes;
    if (!source.read(bytes.data(), 4)) return endsInHeader();
    if (!recognises({bytes.data(), 4})) return "not a DPX picture";
    if (!source.read(&bytes[4], readBytes - 4)) return endsInHeader();
    const ByteOrder order =
        readBig32(bytes.data()) == bigMagic ? ByteOrder::big : ByteOrder::little;
    header.direction = number16(&bytes[768], order);
    if (header.direction == unknown16) header.direction = 0;
    if (header.direction >= std::size(orientations))
        return "the file is damaged: direction " + std::to_string(header.direction);
    header.place = number32(&bytes[4], order);
    const uint32_t declared = number32(&bytes[16], order);
    header.declaredSize = declared == unknown ? 0 : declared;
    const uint8_t curve = bytes[firstElement + 21];
    header.filmCodes = curve == printingDensity || curve == logarithmic;
    header.width = number32(&bytes[772], order);
    header.height = number32(&bytes[776], order);
    return readElements(bytes.data(), order, header);
}

// An element whose place is not told follows the one before it.
Failure readPlanes(ByteSource& source, Header& header, Picture& picture) {
    uint64_t place = header.place;
    for (CodePlane& plane : header.planes) {
        if (!isTold(plane.place)) plane.place = place;
        if (plane.place < readBytes) return "the file is damaged: the image lies in the header";
        const Failure early =
            requireCodes(source, picture, header.declaredSize <= source.size(), plane);
        if (auto failure = readCodes(source, plane, picture)) return early ? early : failure;
        place = plane.end;
    }
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header{};
    if (auto failure = readHeader(source, header)) return failure;
    const bool wide = std::any_of(header.planes.begin(), header.planes.end(),
                                  [](const CodePlane& plane) { return plane.layout.bits > 8; });
    if (auto failure = picture.allocate(header.width, header.height, wide)) return failure;
    picture.colour = !header.grey;
    picture.mask = (header.samples & 8) != 0;
    picture.filmCodes = header.filmCodes;
    return completed(picture, readPlanes(source, header, picture), orientations[header.direction]);
}

std::array<uint8_t, writtenBytes> headerOf(const Picture& picture) {
    std::array<uint8_t, writtenBytes> bytes{};
    const auto fill = [&](size_t from, size_t to) { std::memset(&bytes[from], 0xFF, to - from); };
    const uint64_t imageBytes = uint64_t{picture.width} * picture.height * 4;
    writeBig32(&bytes[0], bigMagic);
    writeBig32(&bytes[4], writtenBytes);
    std::memcpy(&bytes[8], "V1.0", 4);
    writeBig32(&bytes[16], uint32_t(writtenBytes + imageBytes));
    writeBig32(&bytes[20], 1);     // nothing that depends on other frames
    writeBig32(&bytes[24], 1664);  // the header that every file has
    writeBig32(&bytes[28], 384);   // film and television
    fill(660, 664);                // not encrypted
    writeBig16(&bytes[770], 1);
    writeBig32(&bytes[772], picture.width);
    writeBig32(&bytes[776], picture.height);
    fill(1408, 1432);  // offsets, centres and original size are not known
    fill(1628, 1636);
    fill(1712, 1732);
    fill(1920, 1972);

    uint8_t* element = &bytes[firstElement];
    writeBig32(element + 8, 0);
    writeBig32(element + 12, 1023);
    element[20] = 50;
    // Without these two readers guess, most of them film.
    element[21] = element[22] = picture.filmCodes ? printingDensity : video;
    element[23] = 10;
    writeBig16(element + 24, 1);
    writeBig32(element + 28, writtenBytes);
    return bytes;
}

Failure write(const Picture& picture, const TargetFile& target) {
    return writeTenBitColour(target, headerOf(picture), picture, tenBitsOf);
}

}  // namespace

const Codec dpxCodec{"dpx", recognises, read, write};

}  // namespace vistel
