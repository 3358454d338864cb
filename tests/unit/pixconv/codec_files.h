// Codecs on files made in memory: read them, write them, cut and spoil them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "codecs.h"
#include "platform/files.h"

namespace vistel::test {

using FileBytes = std::vector<uint8_t>;

inline FileBytes& operator+=(FileBytes& bytes, const FileBytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return bytes;
}
inline FileBytes& operator+=(FileBytes& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
}
inline FileBytes fileOf(const std::string& text, const FileBytes& rest = {}) {
    FileBytes bytes(text.begin(), text.end());
    return bytes += rest;
}

// A number in so many bytes.
inline FileBytes littleEndian(uint64_t value, int bytes) {
    FileBytes number;
    for (int i = 0; i < bytes; ++i) number.push_back(uint8_t(value >> 8 * i));
    return number;
}
inline FileBytes bigEndian(uint64_t value, int bytes) {
    const FileBytes number = littleEndian(value, bytes);
    return {number.rbegin(), number.rend()};
}
inline FileBytes bigWord(uint32_t value) { return bigEndian(value, 4); }

inline Failure readBytes(const Codec& codec, const FileBytes& bytes, Picture& picture) {
    const platform::FilePtr file(std::tmpfile());
    if (!file) return "no temporary file";
    if (!bytes.empty() && std::fwrite(bytes.data(), bytes.size(), 1, file.get()) != 1)
        return "no room for a temporary file";
    std::rewind(file.get());
    return codec.read({"picture", file.get(), bytes.size()}, picture);
}

// Empty, and a failed test, when nothing is written.
inline FileBytes writtenBytes(const Codec& codec, const Picture& picture,
                              const std::string& path = "picture") {
    const platform::FilePtr file(std::tmpfile());
    if (const Failure failure = codec.write(picture, {path, file.get()})) {
        ADD_FAILURE() << *failure;
        return {};
    }
    std::fseek(file.get(), 0, SEEK_END);
    FileBytes bytes(size_t(std::ftell(file.get())));
    std::rewind(file.get());
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        ADD_FAILURE() << "cannot read back";
    return bytes;
}

// A picture with runs, single samples and all extremes, the same for the same numbers.
inline Picture samplePicture(uint32_t width, uint32_t height, bool colour, bool mask, bool wide) {
    Picture picture;
    if (const Failure failure = picture.allocate(width, height, wide)) ADD_FAILURE() << *failure;
    picture.colour = colour;
    picture.mask = mask;
    uint32_t state = 12345;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (uint32_t channel = 0; channel < 4; ++channel) {
                const size_t i = x * 4 + channel;
                state = state * 1664525 + 1013904223;
                // Left half at random, then a run, at last black and white.
                uint32_t value = state >> 16;
                if (x >= width / 2) value = (y * 4 + channel) * 4099 & 0xFFFF;
                if (x + 2 >= width) value = (x + y) % 2 ? 0xFFFF : 0;
                if (channel == 3 && !mask) value = 0xFFFF;
                if (wide)
                    picture.wideRow(y)[i] = uint16_t(value);
                else
                    picture.row(y)[i] = uint8_t(value >> 8);
                if (!colour && (channel == 1 || channel == 2)) {
                    if (wide)
                        picture.wideRow(y)[i] = picture.wideRow(y)[x * 4];
                    else
                        picture.row(y)[i] = picture.row(y)[x * 4];
                }
            }
    return picture;
}

inline void expectSame(const Picture& a, const Picture& b) {
    ASSERT_EQ(a.width, b.width);
    ASSERT_EQ(a.height, b.height);
    EXPECT_EQ(a.wide, b.wide);
    EXPECT_EQ(a.colour, b.colour);
    EXPECT_EQ(a.mask, b.mask);
    EXPECT_EQ(a.samples, b.samples);
    EXPECT_EQ(a.wideSamples, b.wideSamples);
}

inline void expectRoundTrip(const Codec& codec, const Picture& picture,
                            const std::string& path = "picture") {
    Picture back;
    const Failure failure = readBytes(codec, writtenBytes(codec, picture, path), back);
    ASSERT_FALSE(failure) << *failure;
    expectSame(picture, back);
}

// The samples of a file that can be read, as numbers; empty and a failed test else.
inline std::vector<int> samplesOf(const Codec& codec, const FileBytes& bytes) {
    Picture picture;
    if (const Failure failure = readBytes(codec, bytes, picture)) {
        ADD_FAILURE() << *failure;
        return {};
    }
    if (picture.wide) return {picture.wideSamples.begin(), picture.wideSamples.end()};
    return {picture.samples.begin(), picture.samples.end()};
}

inline std::string failureOf(const Codec& codec, const FileBytes& bytes) {
    Picture picture;
    const Failure failure = readBytes(codec, bytes, picture);
    return failure ? *failure : "";
}

// A file cut anywhere before `end` fails with a message.
inline void expectEveryCutFails(const Codec& codec, const FileBytes& bytes, size_t end) {
    for (size_t size = 0; size < end; ++size) {
        const FileBytes part(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
        EXPECT_NE(failureOf(codec, part), "") << "cut to " << size << " of " << bytes.size();
    }
}

// No spoilt byte of the first `count` does harm: the file is read or refused, soon.
inline void expectSpoiltBytesDoNoHarm(const Codec& codec, const FileBytes& bytes, size_t count) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    int refused = 0;
    for (size_t i = 0; i < std::min(count, bytes.size()); ++i)
        for (const uint8_t flip : {0x01, 0x80, 0xFF, 0x10}) {
            FileBytes spoilt = bytes;
            spoilt[i] ^= flip;
            Picture picture;
            const Failure failure = readBytes(codec, spoilt, picture);
            if (failure) {
                ++refused;
                EXPECT_FALSE(failure->empty());
            } else {
                EXPECT_EQ(picture.samples.size() + picture.wideSamples.size(),
                          size_t{picture.width} * picture.height * 4);
            }
        }
    EXPECT_GT(refused, 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(60));
}

}  // namespace vistel::test
