#include "film_scan.h"

#include <algorithm>

namespace vistel {

namespace {

uint64_t inFullWords(uint64_t bytes) { return (bytes + 3) / 4 * 4; }

bool isFilled(CodePacking packing) {
    return packing != CodePacking::bytes && packing != CodePacking::words &&
           packing != CodePacking::highWords && packing != CodePacking::continuous;
}

void unpackFilled(const CodeLayout& layout, const uint8_t* bytes, std::span<uint16_t> codes) {
    const bool high = layout.packing == CodePacking::filledHigh ||
                      layout.packing == CodePacking::filledHighReversed;
    const bool reversed = layout.packing == CodePacking::filledHighReversed ||
                          layout.packing == CodePacking::filledLowReversed;
    const uint32_t unused = high ? 2 : 0;
    for (size_t i = 0; i < codes.size(); ++i) {
        const uint32_t slot = reversed ? i % 3 : 2 - i % 3;
        const uint32_t word = number32(bytes + i / 3 * 4, layout.order);
        codes[i] = uint16_t(word >> (slot * 10 + unused) & 0x3FF);
    }
}

void unpackContinuous(const CodeLayout& layout, const uint8_t* bytes, std::span<uint16_t> codes) {
    uint64_t held = 0;  // bits not yet given out, the next ones lowest
    uint32_t heldBits = 0;
    for (uint16_t& code : codes) {
        if (heldBits < layout.bits) {
            held |= uint64_t{number32(bytes, layout.order)} << heldBits;
            heldBits += 32;
            bytes += 4;
        }
        code = uint16_t(held & ((1u << layout.bits) - 1));
        held >>= layout.bits;
        heldBits -= layout.bits;
    }
}

}  // namespace

uint64_t codeRowBytes(const CodeLayout& layout, uint64_t codes) {
    return inFullWords(shortCodeRowBytes(layout, codes));
}

uint64_t shortCodeRowBytes(const CodeLayout& layout, uint64_t codes) {
    if (layout.packing == CodePacking::bytes) return codes;
    if (isFilled(layout.packing)) return (codes + 2) / 3 * 4;
    if (layout.packing == CodePacking::continuous)
        return inFullWords((codes * layout.bits + 7) / 8);
    return codes * 2;
}

void unpackCodes(const CodeLayout& layout, std::span<const uint8_t> bytes,
                 std::span<uint16_t> codes) {
    if (isFilled(layout.packing)) return unpackFilled(layout, bytes.data(), codes);
    if (layout.packing == CodePacking::continuous)
        return unpackContinuous(layout, bytes.data(), codes);
    if (layout.packing == CodePacking::bytes) {
        std::copy_n(bytes.begin(), codes.size(), codes.begin());
        return;
    }
    const uint32_t shift = layout.packing == CodePacking::highWords ? 16 - layout.bits : 0;
    const uint32_t mask = (1u << layout.bits) - 1;
    for (size_t i = 0; i < codes.size(); ++i)
        codes[i] = uint16_t(number16(&bytes[i * 2], layout.order) >> shift & mask);
}

uint16_t tenBitsOf(const Picture& picture, uint32_t y, size_t sample) {
    return uint16_t(rescaled(wordSample(picture, y, sample), 65535, 1023));
}

Failure writeTenBitColour(const TargetFile& target, std::span<const uint8_t> header,
                          const Picture& picture, CodeOf codeOf) {
    if (!writeAll(target, header)) return cannotWrite();
    const auto fill = [&](uint32_t y, std::vector<uint8_t>& bytes) {
        for (size_t x = 0; x < picture.width; ++x) {
            uint32_t word = 0;
            for (size_t i = 0; i < 3; ++i) word = word << 10 | codeOf(picture, y, x * 4 + i);
            writeBig32(&bytes[x * 4], word << 2);
        }
    };
    return writeRows(target, picture, RowOrder::topFirst, size_t{picture.width} * 4, fill);
}

Failure requireCodes(const ByteSource& source, const Picture& picture, bool maybeShort,
                     CodePlane& plane) {
    const uint32_t height = picture.height;
    const uint64_t codes = uint64_t{picture.width} * plane.order.channels;
    const uint64_t full = codeRowBytes(plane.layout, codes);
    const uint64_t least = shortCodeRowBytes(plane.layout, codes);
    const uint64_t there = plane.place <= source.size() ? source.size() - plane.place : 0;
    const uint64_t filling = full - least;
    Failure failure = requireRows(there, least, plane.padding + filling, height);
    const bool isShort = failure && maybeShort && !requireRows(there, least, plane.padding, height);
    if (!isShort) plane.padding += filling;
    plane.end = plane.place + (least + plane.padding) * height;
    return isShort ? Failure() : failure;
}

namespace {

void placeCodes(std::span<const uint16_t> codes, const CodePlane& plane, uint32_t y,
                Picture& picture) {
    const uint32_t channels = plane.order.channels;
    for (size_t i = 0; i < codes.size(); ++i) {
        const size_t sample = i / channels * 4 + plane.order.place[i % channels];
        if (!picture.wide)
            picture.row(y)[sample] = uint8_t(codes[i]);
        else
            picture.wideRow(y)[sample] = plane.layout.bits == 8
                                             ? wordFromByte(uint8_t(codes[i]))
                                             : widenedCode(codes[i], plane.layout.bits);
    }
}

// The usual kind of scan, at once: red, green and blue of 10 bits in a word.
bool placesWords(const CodePlane& plane, const Picture& picture) {
    const bool inOrder = plane.order.channels == 3 && plane.order.place[0] == 0 &&
                         plane.order.place[1] == 1 && plane.order.place[2] == 2;
    return inOrder && picture.wide &&
           (plane.layout.packing == CodePacking::filledHigh ||
            plane.layout.packing == CodePacking::filledLow);
}

template <ByteOrder order>
void placeWords(const uint8_t* bytes, uint32_t unused, uint16_t* to, uint32_t count) {
    for (; count > 0; --count, bytes += 4, to += 4) {
        const uint32_t word = number32(bytes, order) >> unused;
        to[0] = widenedCode(word >> 20 & 0x3FF, 10);
        to[1] = widenedCode(word >> 10 & 0x3FF, 10);
        to[2] = widenedCode(word & 0x3FF, 10);
        to[3] = 65535;
    }
}

void placeWords(const uint8_t* bytes, const CodePlane& plane, uint32_t y, Picture& picture) {
    const uint32_t unused = plane.layout.packing == CodePacking::filledHigh ? 2 : 0;
    if (plane.layout.order == ByteOrder::big)
        placeWords<ByteOrder::big>(bytes, unused, picture.wideRow(y), picture.width);
    else
        placeWords<ByteOrder::little>(bytes, unused, picture.wideRow(y), picture.width);
}

}  // namespace

Failure readCodes(ByteSource& source, const CodePlane& plane, Picture& picture) {
    std::vector<uint16_t> codes(size_t{picture.width} * plane.order.channels);
    std::vector<uint8_t> bytes(shortCodeRowBytes(plane.layout, codes.size()));
    const uint64_t stride = bytes.size() + plane.padding;
    const bool words = placesWords(plane, picture);
    for (uint32_t y = 0; y < picture.height; ++y) {
        if (!source.goTo(plane.place + stride * y) || !source.read(bytes.data(), bytes.size()))
            return endsInRow(y, picture.height);
        if (words) {
            placeWords(bytes.data(), plane, y, picture);
        } else {
            unpackCodes(plane.layout, bytes, codes);
            placeCodes(codes, plane, y, picture);
        }
        picture.rowsRead = std::max(picture.rowsRead, y + 1);
    }
    return {};
}

}  // namespace vistel
