// What the tests of the two film scan types share: their header in bytes, codes of ten bits, and
// the directions in which pictures can be stored.
#pragma once

#include "codec_files.h"

namespace vistel::test {

// The header of a film scan: numbers put into it in one byte order.
struct FilmScanHeader {
    bool little = false;
    FileBytes bytes = FileBytes(2048);

    void put16(size_t at, uint32_t number) {
        bytes[at + (little ? 0 : 1)] = uint8_t(number);
        bytes[at + (little ? 1 : 0)] = uint8_t(number >> 8);
    }
    void put32(size_t at, uint32_t number) {
        put16(at + (little ? 2 : 0), number >> 16);
        put16(at + (little ? 0 : 2), number);
    }
};

inline FileBytes words(std::initializer_list<uint32_t> numbers, bool little = false) {
    FileBytes bytes;
    for (const uint32_t number : numbers)
        for (int i = 0; i < 4; ++i)
            bytes.push_back(uint8_t(number >> (little ? 8 * i : 24 - 8 * i)));
    return bytes;
}

constexpr uint32_t packed(uint32_t a, uint32_t b, uint32_t c, int unused) {
    return (a << 20 | b << 10 | c) << unused;
}

// A code of 10 bits in 16.
inline int ten(int code) { return code << 6 | code >> 4; }

// Six pixels, stored as 1 2 3 and 4 5 6, in the picture's order.
struct Direction {
    int code;
    std::vector<int> upright;
};

template <class Make>
void expectDirections(const Codec& codec, const std::vector<Direction>& rows, Make file) {
    for (const Direction& row : rows) {
        Picture picture;
        const Failure failure = readBytes(codec, file(row.code), picture);
        ASSERT_FALSE(failure) << *failure;
        EXPECT_EQ(picture.width, row.code < 4 ? 3u : 2u);
        std::vector<int> reds;
        for (size_t i = 0; i < 24; i += 4)
            reds.push_back(picture.wide ? picture.wideSamples[i] >> 6 : picture.samples[i]);
        EXPECT_EQ(reds, row.upright) << row.code;
    }
}

// All codes of ten bits, as read from a file that has them.
inline Picture allTenBitCodes() {
    Picture picture;
    if (picture.allocate(1024, 2, true)) return picture;
    for (uint32_t y = 0; y < 2; ++y)
        for (int x = 0; x < 1024; ++x) {
            uint16_t* pixel = picture.wideRow(y) + x * 4;
            pixel[0] = uint16_t(ten(x));
            pixel[1] = uint16_t(ten(1023 - x));
            pixel[2] = uint16_t(ten(x * 7 % 1024));
            pixel[3] = 65535;
        }
    return picture;
}

}  // namespace vistel::test
