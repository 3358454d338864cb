// PNG files made by hand: kinds of pixels, palettes, interlacing, headers that lie.
#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

uint32_t crcOf(const FileBytes& bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

FileBytes chunk(const std::string& name, const FileBytes& body) {
    FileBytes named = fileOf(name, body);
    FileBytes bytes = bigWord(uint32_t(body.size()));
    bytes += named;
    return bytes += bigWord(crcOf(named));
}

// A zlib stream that holds the bytes as they are (fewer than 65536).
FileBytes stored(const FileBytes& bytes) {
    const auto size = uint16_t(bytes.size());
    FileBytes stream{
        0x78, 0x01, 1, uint8_t(size), uint8_t(size >> 8), uint8_t(~size), uint8_t(~size >> 8)};
    stream += bytes;
    uint32_t a = 1, b = 0;
    for (const uint8_t byte : bytes) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    return stream += bigWord(b << 16 | a);
}

struct Png {
    uint32_t width = 1, height = 1;
    uint8_t depth = 8, type = 2, interlaced = 0;
    FileBytes rows;        // each begins with its filter
    FileBytes extra = {};  // chunks before the pixels

    FileBytes bytes() const {
        FileBytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
        FileBytes header = bigWord(width);
        header += bigWord(height);
        header += FileBytes{depth, type, 0, 0, interlaced};
        file += chunk("IHDR", header);
        file += extra;
        file += chunk("IDAT", stored(rows));
        return file += chunk("IEND", {});
    }
};

constexpr uint8_t grey = 0, colour = 2, palette = 3, greyMask = 4, colourMask = 6;

TEST(Png, EveryKindOfPixelIsRead) {
    const FileBytes colours = chunk("PLTE", {1, 2, 3, 40, 50, 60});
    FileBytes clearColours = colours;
    clearColours += chunk("tRNS", {7});
    struct Row {
        const char* what;
        Png png;
        std::vector<int> samples;
        bool colour, mask;
    };
    const Row rows[] = {
        {"grey", {2, 1, 8, grey, 0, {0, 9, 200}}, {9, 9, 9, 255, 200, 200, 200, 255}, false, false},
        {"1 bit", {2, 1, 1, grey, 0, {0, 0x40}}, {0, 0, 0, 255, 255, 255, 255, 255}, false, false},
        {"4 bits",
         {2, 1, 4, grey, 0, {0, 0x1F}},
         {17, 17, 17, 255, 255, 255, 255, 255},
         false,
         false},
        {"grey, 16 bits", {1, 1, 16, grey, 0, {0, 1, 2}}, {258, 258, 258, 65535}, false, false},
        {"colour", {1, 1, 8, colour, 0, {0, 1, 2, 3}}, {1, 2, 3, 255}, true, false},
        {"colour, 16 bits",
         {1, 1, 16, colour, 0, {0, 1, 2, 3, 4, 5, 6}},
         {258, 772, 1286, 65535},
         true,
         false},
        {"grey and mask", {1, 1, 8, greyMask, 0, {0, 5, 6}}, {5, 5, 5, 6}, false, true},
        {"colour and mask", {1, 1, 8, colourMask, 0, {0, 5, 6, 7, 8}}, {5, 6, 7, 8}, true, true},
        {"colour and mask, 16 bits",
         {1, 1, 16, colourMask, 0, {0, 0, 1, 0, 2, 0, 3, 0, 4}},
         {1, 2, 3, 4},
         true,
         true},
        {"palette",
         {2, 1, 8, palette, 0, {0, 1, 0}, colours},
         {40, 50, 60, 255, 1, 2, 3, 255},
         true,
         false},
        {"clear palette",
         {2, 1, 8, palette, 0, {0, 1, 0}, clearColours},
         {40, 50, 60, 255, 1, 2, 3, 7},
         true,
         true},
        {"clear colour",
         {2, 1, 8, colour, 0, {0, 1, 2, 3, 1, 2, 4}, chunk("tRNS", {0, 1, 0, 2, 0, 3})},
         {1, 2, 3, 0, 1, 2, 4, 255},
         true,
         true},
        {"clear grey",
         {2, 1, 8, grey, 0, {0, 9, 8}, chunk("tRNS", {0, 9})},
         {9, 9, 9, 0, 8, 8, 8, 255},
         false,
         true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(samplesOf(pngCodec, row.png.bytes()), row.samples);
        Picture picture;
        ASSERT_FALSE(readBytes(pngCodec, row.png.bytes(), picture));
        EXPECT_EQ(picture.colour, row.colour);
        EXPECT_EQ(picture.mask, row.mask);
    }
}

TEST(Png, InterlacedPixelsComeToTheirPlaces) {
    // 3 x 3: the first pass has (0,0), the sixth (1,0) and (1,2), the fourth (2,0), the fifth the
    // rest of row 2, the last row 1.
    const Png png{3, 3, 8, grey, 1, {0, 1, 0, 3, 0, 7, 9, 0, 2, 0, 8, 0, 4, 5, 6}};
    std::vector<int> expected;
    for (int value = 1; value <= 9; ++value)
        expected.insert(expected.end(), {value, value, value, 255});
    EXPECT_EQ(samplesOf(pngCodec, png.bytes()), expected);
}

TEST(Png, HeadersThatPromiseTooMuchAreRefusedAtOnce) {
    struct Row {
        uint32_t width, height;
    };
    const Row rows[] = {{60000, 60000},           {65535, 65535}, {65536, 1},
                        {1, 0x7FFFFFFF},          {0, 5},         {5, 0},
                        {0xFFFFFFFF, 0xFFFFFFFF}, {16000, 16000}};
    for (const Row& row : rows) {
        const Png png{row.width, row.height, 8, colourMask, 0, FileBytes(1000)};
        EXPECT_NE(failureOf(pngCodec, png.bytes()), "") << row.width << " x " << row.height;
    }
}

TEST(Png, ARowTooFewIsAFailure) {
    const Png png{1, 3, 8, grey, 0, {0, 1, 0, 2}};
    EXPECT_NE(failureOf(pngCodec, png.bytes()), "");
}

}  // namespace
