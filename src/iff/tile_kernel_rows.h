// Packets and pixels one by one: what the scalar kernels are made of, and what the fast ones do
// with the data and pixels before and behind their blocks. Internal to the kernels.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "host/byte_order.h"

namespace vistel {

// Run-length packets without a look beyond the end of the data. storeRun may write kernelSlack
// bytes behind the run.
template <void (*storeRun)(uint8_t* values, uint8_t value, size_t length)>
size_t unpackPackets(const uint8_t*& data, const uint8_t* end, uint8_t* values, size_t count,
                     size_t enough) {
    size_t done = 0;
    while (done < enough && end - data >= 2) {
        const size_t length = (data[0] & 127u) + 1;
        if (length > count - done) break;
        if (data[0] >= 128) {
            storeRun(values + done, data[1], length);
            data += 2;
            done += length;
            continue;
        }
        ++data;
        const size_t there = std::min(length, static_cast<size_t>(end - data));
        std::memcpy(values + done, data, there);
        data += there;
        done += there;
    }
    return done;
}

inline uint32_t packBytes(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
    return b0 | uint32_t{b1} << 8 | uint32_t{b2} << 16 | uint32_t{b3} << 24;
}

// One row of each of the four planes that are interleaved.
struct BytePlanes {
    const uint8_t *b0, *b1, *b2, *b3;

    explicit BytePlanes(const uint8_t* const bytes[4])
        : b0(bytes[0]), b1(bytes[1]), b2(bytes[2]), b3(bytes[3]) {}
    void advance(const size_t step[4]) {
        b0 += step[0];
        b1 += step[1];
        b2 += step[2];
        b3 += step[3];
    }
};

// Pixels [at, end).
inline void separatePixels(const uint8_t* pixels, size_t at, size_t end, uint8_t* const planes[4]) {
    for (; at < end; ++at)
        for (size_t place = 0; place < 4; ++place) planes[place][at] = pixels[4 * at + place];
}

// Pixels [at, end) of a row.
inline void interleaveRow(uint32_t* row, const BytePlanes& from, size_t at, size_t end) {
    for (; at < end; ++at) row[at] = packBytes(from.b0[at], from.b1[at], from.b2[at], from.b3[at]);
}

inline void reverse4Row(uint32_t* row, const uint8_t* source, size_t at, size_t end) {
    for (; at < end; ++at) row[at] = readBig32(source + 4 * at);
}

inline void reverse3Row(uint32_t* row, const uint8_t* source, size_t at, size_t end) {
    for (; at < end; ++at)
        row[at] = packBytes(source[3 * at + 2], source[3 * at + 1], source[3 * at], 255);
}

// Pixels of a cache line, and how many of a row of `count` pixels lie before its first whole line.
constexpr size_t linePixels = 16;
inline size_t pixelsBeforeLine(const uint32_t* row, size_t count) {
    const size_t before = (0 - reinterpret_cast<uintptr_t>(row)) / sizeof(uint32_t) % linePixels;
    return before < count ? before : count;
}

}  // namespace vistel
