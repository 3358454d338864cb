// TIFF files made by hand: layouts of pixels, byte orders, tiles, orientations, headers that lie.
#include <map>

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

enum Tag : uint16_t {
    width = 256,
    height = 257,
    bits = 258,
    compression = 259,
    photometric = 262,
    stripOffsets = 273,
    orientation = 274,
    samplesPerPixel = 277,
    rowsPerStrip = 278,
    stripBytes = 279,
    planar = 284,
    colourMap = 320,
    tileWidth = 322,
    tileHeight = 323,
    tileOffsets = 324,
    tileBytes = 325,
    extraSamples = 338,
    sampleFormat = 339,
};

// The pixels lie behind the header, the directory behind them, long values behind the directory.
struct Tiff {
    bool big = false;
    std::map<uint16_t, std::vector<uint32_t>> tags;
    FileBytes pixels;

    void put(FileBytes& to, uint64_t value, int bytes) const {
        to += big ? bigEndian(value, bytes) : littleEndian(value, bytes);
    }
    FileBytes bytes() const {
        const size_t directory = 8 + (pixels.size() + 1) / 2 * 2;
        FileBytes file = fileOf(big ? "MM" : "II"), further;
        put(file, 42, 2);
        put(file, directory, 4);
        file += pixels;
        file.resize(directory);
        const size_t behind = directory + 2 + tags.size() * 12 + 4;
        put(file, tags.size(), 2);
        for (const auto& [tag, values] : tags) {
            const bool isShort =
                tag == bits || tag == colourMap || tag == sampleFormat || tag == extraSamples;
            const int size = isShort ? 2 : 4;
            put(file, tag, 2);
            put(file, isShort ? 3 : 4, 2);
            put(file, values.size(), 4);
            FileBytes body;
            for (const uint32_t value : values) put(body, value, size);
            if (body.size() > 4) {
                put(file, behind + further.size(), 4);
                further += body;
            } else {
                body.resize(4);
                file += body;
            }
        }
        put(file, 0, 4);
        return file += further;
    }
};

Tiff strip(uint32_t w, uint32_t h, std::vector<uint32_t> sampleBits, uint32_t kind,
           FileBytes pixels) {
    Tiff tiff;
    const auto count = uint32_t(sampleBits.size()), size = uint32_t(pixels.size());
    tiff.tags = {
        {width, {w}},          {height, {h}},       {bits, sampleBits},         {compression, {1}},
        {photometric, {kind}}, {stripOffsets, {8}}, {samplesPerPixel, {count}}, {rowsPerStrip, {h}},
        {stripBytes, {size}}};
    tiff.pixels = std::move(pixels);
    return tiff;
}

Tiff with(Tiff tiff, uint16_t tag, std::vector<uint32_t> values) {
    tiff.tags[tag] = std::move(values);
    return tiff;
}

Tiff bigEndian(Tiff tiff) {
    tiff.big = true;
    return tiff;
}

Tiff separatePlanes() {
    Tiff tiff = strip(2, 1, {8, 8, 8}, 2, {1, 2, 3, 4, 5, 6});
    tiff.tags[planar] = {2};
    tiff.tags[stripOffsets] = {8, 10, 12};
    tiff.tags[stripBytes] = {2, 2, 2};
    return tiff;
}

// Pixel (x, y) of 3 x 2 is 10 y + x, in a tile of 16 x 16 whose other pixels are 99.
Tiff tile() {
    Tiff tiff = strip(3, 2, {8}, 1, FileBytes(256, 99));
    for (size_t y = 0; y < 2; ++y)
        for (size_t x = 0; x < 3; ++x) tiff.pixels[16 * y + x] = uint8_t(10 * y + x);
    for (const uint16_t tag : {stripOffsets, rowsPerStrip, stripBytes}) tiff.tags.erase(tag);
    tiff.tags[tileWidth] = tiff.tags[tileHeight] = {16};
    tiff.tags[tileOffsets] = {8};
    tiff.tags[tileBytes] = {256};
    return tiff;
}

Tiff paletted() {
    Tiff tiff = strip(2, 1, {8}, 3, {1, 0});
    std::vector<uint32_t> map(768);
    map[0] = 0x0101, map[1] = 0xFFFF;
    map[256] = 0x0202, map[257] = 0x8080;
    map[512] = 0x0303, map[513] = 0;
    tiff.tags[colourMap] = map;
    return tiff;
}

TEST(Tiff, EveryLayoutIsRead) {
    struct Row {
        const char* what;
        Tiff tiff;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"grey", strip(2, 1, {8}, 1, {5, 6}), {5, 5, 5, 255, 6, 6, 6, 255}},
        {"white is zero", strip(2, 1, {8}, 0, {5, 255}), {250, 250, 250, 255, 0, 0, 0, 255}},
        {"colour", strip(1, 2, {8, 8, 8}, 2, {1, 2, 3, 4, 5, 6}), {1, 2, 3, 255, 4, 5, 6, 255}},
        {"a mask is not multiplied in",
         with(strip(1, 1, {8, 8, 8, 8}, 2, {10, 20, 30, 0}), extraSamples, {2}),
         {10, 20, 30, 0}},
        {"signed samples have 0 in the middle, and their mask is not multiplied in",
         with(with(strip(1, 1, {8, 8, 8, 8}, 2, {10, 20, 30, 100}), extraSamples, {2}),
              sampleFormat, {2, 2, 2, 2}),
         {138, 148, 158, 228}},
        {"2 bits",
         strip(4, 1, {2}, 1, {0x1B}),
         {0, 0, 0, 255, 85, 85, 85, 255, 170, 170, 170, 255, 255, 255, 255, 255}},
        {"6 bits, white is zero", strip(1, 1, {6}, 0, {4}), {251, 251, 251, 255}},
        {"12 bits",
         strip(2, 1, {12}, 1, {0x12, 0x3F, 0xFF}),
         {4657, 4657, 4657, 65535, 65535, 65535, 65535, 65535}},
        {"inks of 16 bits and a mask",
         with(strip(1, 1, {16, 16, 16, 16, 16}, 5, {0, 0, 255, 255, 0, 0, 0, 0, 2, 1}),
              extraSamples, {2}),
         {65535, 0, 65535, 258}},
        {"planes apart", separatePlanes(), {1, 3, 5, 255, 2, 4, 6, 255}},
        {"16 bits", strip(1, 1, {16}, 1, {0x34, 0x12}), {0x1234, 0x1234, 0x1234, 65535}},
        {"16 bits, big-endian",
         bigEndian(strip(1, 1, {16}, 1, {0x12, 0x34})),
         {0x1234, 0x1234, 0x1234, 65535}},
        {"16 bits, white is zero", strip(1, 1, {16}, 0, {0, 0}), {65535, 65535, 65535, 65535}},
        {"32 bits", strip(1, 1, {32}, 1, {1, 2, 3, 4}), {0x0403, 0x0403, 0x0403, 65535}},
        {"light",
         with(strip(1, 1, {32}, 1, {0, 0, 0, 0x3F}), sampleFormat, {3}),
         {188, 188, 188, 255}},
        {"light in halfs",
         with(strip(1, 1, {16}, 1, {0, 0x38}), sampleFormat, {3}),
         {188, 188, 188, 255}},
        {"light in doubles",
         with(strip(1, 1, {64}, 1, {0, 0, 0, 0, 0, 0, 0xE0, 0x3F}), sampleFormat, {3}),
         {188, 188, 188, 255}},
        {"light that is no number",
         with(strip(1, 1, {32}, 1, {0, 0, 0xC0, 0x7F}), sampleFormat, {3}),
         {0, 0, 0, 255}},
        {"a tile", tile(), {0,  0,  0,  255, 1,  1,  1,  255, 2,  2,  2,  255,
                            10, 10, 10, 255, 11, 11, 11, 255, 12, 12, 12, 255}},
        {"a palette", paletted(), {255, 128, 0, 255, 1, 2, 3, 255}},
        {"1 bit", strip(2, 1, {1}, 1, {0x40}), {0, 0, 0, 255, 255, 255, 255, 255}},
        {"inks", strip(1, 1, {8, 8, 8, 8}, 5, {0, 255, 255, 0}), {255, 0, 0, 255}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(samplesOf(tiffCodec, row.tiff.bytes()), row.samples);
    }
}

TEST(Tiff, PicturesAreTurnedUpright) {
    // Stored 3 x 2: 1 2 3 / 4 5 6.
    struct Row {
        uint32_t orientation, width;
        std::vector<int> values;
    };
    const Row rows[] = {
        {1, 3, {1, 2, 3, 4, 5, 6}}, {2, 3, {3, 2, 1, 6, 5, 4}}, {3, 3, {6, 5, 4, 3, 2, 1}},
        {4, 3, {4, 5, 6, 1, 2, 3}}, {5, 2, {1, 4, 2, 5, 3, 6}}, {6, 2, {4, 1, 5, 2, 6, 3}},
        {7, 2, {6, 3, 5, 2, 4, 1}}, {8, 2, {3, 6, 2, 5, 1, 4}}, {9, 3, {1, 2, 3, 4, 5, 6}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.orientation);
        const Tiff tiff =
            with(strip(3, 2, {8}, 1, {1, 2, 3, 4, 5, 6}), orientation, {row.orientation});
        Picture picture;
        const Failure failure = readBytes(tiffCodec, tiff.bytes(), picture);
        ASSERT_FALSE(failure) << *failure;
        EXPECT_EQ(picture.width, row.width);
        std::vector<int> values;
        for (size_t i = 0; i < picture.samples.size(); i += 4) values.push_back(picture.samples[i]);
        EXPECT_EQ(values, row.values);
    }
}

TEST(Tiff, AStripThatClaimsMoreThanTheFileHoldsIsReadWhenItsPixelsAreThere) {
    const Tiff tiff = with(strip(1, 1, {8}, 1, {9}), stripBytes, {0xFFFFFFFF});
    EXPECT_EQ(samplesOf(tiffCodec, tiff.bytes()), (std::vector<int>{9, 9, 9, 255}));
}

TEST(Tiff, HeadersThatPromiseTooMuchAreRefused) {
    const Tiff small = strip(1, 1, {8}, 1, {1});
    const Tiff files[] = {
        with(with(small, width, {60000}), height, {60000}),
        with(small, width, {0}),
        with(small, height, {70000}),
        with(with(small, width, {16000}), height, {16000}),
        with(small, samplesPerPixel, {65535}),
        with(with(small, stripOffsets, {0xFFFFFFF0}), stripBytes, {100}),
        with(with(tile(), tileWidth, {0x40000000}), tileHeight, {0x40000000}),
        with(with(tile(), tileWidth, {65520}), tileHeight, {65520}),
    };
    for (const Tiff& file : files)
        EXPECT_NE(failureOf(tiffCodec, file.bytes()), "") << &file - files;
}

}  // namespace
