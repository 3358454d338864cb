#include "codec_files.h"
#include "host/byte_order.h"

using namespace vistel;
using namespace vistel::test;

namespace {

FileBytes bitmap(int bits, int width, int height, const FileBytes& rest) {
    FileBytes bytes(54);
    bytes[0] = 'B';
    bytes[1] = 'M';
    bytes[10] = uint8_t(54 + (bits == 8 ? 8 : 0));
    bytes[14] = 40;
    bytes[18] = uint8_t(width);
    writeLittle32(&bytes[22], uint32_t(height));
    bytes[26] = 1;
    bytes[28] = uint8_t(bits);
    bytes[46] = bits == 8 ? 2 : 0;
    return bytes += rest;
}

TEST(Bitmap, RowsStandFromTheBottomUpUnlessTheHeightIsNegative) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"24 bits", bitmap(24, 1, 2, {3, 2, 1, 0, 6, 5, 4, 0}), {4, 5, 6, 255, 1, 2, 3, 255}},
        {"from the top down",
         bitmap(24, 1, -2, {3, 2, 1, 0, 6, 5, 4, 0}),
         {1, 2, 3, 255, 4, 5, 6, 255}},
        {"without the last row's padding", bitmap(24, 1, 1, {3, 2, 1}), {1, 2, 3, 255}},
        {"a palette",
         bitmap(8, 2, 1, {3, 2, 1, 0, 6, 5, 4, 0, 1, 0, 0, 0}),
         {4, 5, 6, 255, 1, 2, 3, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(bmpCodec, row.file), row.samples) << row.what;
}

void put(FileBytes& bytes, size_t at, uint32_t number) { writeLittle32(&bytes[at], number); }

// Four colours: 0 is (1, 2, 3), 1 (4, 5, 6) ...
const FileBytes fourColours{3, 2, 1, 0, 6, 5, 4, 0, 9, 8, 7, 0, 12, 11, 10, 0};

FileBytes mapped(int bits, int packing, int width, int height, const FileBytes& rows) {
    FileBytes bytes = bitmap(1, width, height, fourColours);
    bytes[10] = 54 + 16;
    bytes[28] = uint8_t(bits);
    bytes[30] = uint8_t(packing);
    bytes[46] = 4;
    return bytes += rows;
}

// The colours as digits, rows divided by blanks; "-" for what is none of them.
std::string coloursOf(const FileBytes& bytes) {
    Picture picture;
    if (const Failure failure = readBytes(bmpCodec, bytes, picture)) return *failure;
    std::string text;
    for (uint32_t y = 0; y < picture.height; ++y) {
        if (y > 0) text += ' ';
        for (uint32_t x = 0; x < picture.width; ++x) {
            const uint8_t* pixel = picture.row(y) + x * 4;
            const int colour = pixel[0] / 3;
            const bool known = pixel[0] == colour * 3 + 1 && pixel[1] == colour * 3 + 2 &&
                               pixel[2] == colour * 3 + 3 && pixel[3] == 255 && colour < 4;
            text += known ? char('0' + colour) : '-';
        }
    }
    return text;
}

TEST(Bitmap, IndicesOfAllDepthsAreReadPlainOrInRuns) {
    struct Row {
        const char* what;
        FileBytes file;
        const char* colours;
    };
    const Row rows[] = {
        {"1 bit", mapped(1, 0, 9, 1, {0xA5, 0x80, 0, 0}), "101001011"},
        {"2 bits", mapped(2, 0, 5, 1, {0x1B, 0x40, 0, 0}), "01231"},
        {"4 bits", mapped(4, 0, 3, 2, {0x01, 0x20, 0, 0, 0x32, 0x10, 0, 0}), "321 012"},
        {"8 bits", mapped(8, 0, 4, 1, {0, 1, 2, 3}), "0123"},
        {"an index without a colour", mapped(8, 0, 4, 1, {0, 1, 2, 4}), "012-"},
        {"8 bits in runs", mapped(8, 1, 4, 2, {3, 1, 1, 2, 0, 0, 4, 3, 0, 1}), "3333 1112"},
        {"copies", mapped(8, 1, 4, 1, {0, 3, 1, 2, 3, 0, 1, 1, 0, 1}), "1231"},
        {"4 bits in runs", mapped(4, 2, 5, 1, {3, 0x12, 2, 0x30, 0, 1}), "12130"},
        {"copies of 4 bits", mapped(4, 2, 5, 1, {0, 5, 0x12, 0x31, 0x20, 0, 0, 1}), "12312"},
        {"steps over pixels", mapped(8, 1, 3, 3, {1, 1, 0, 2, 1, 1, 1, 2, 0, 1}), "000 002 100"},
        {"steps out of the picture", mapped(8, 1, 2, 1, {1, 1, 0, 2, 9, 9, 1, 2, 0, 1}), "10"},
        {"rows and the picture end early", mapped(8, 1, 2, 3, {1, 1, 0, 0, 1, 2, 0, 1}),
         "00 20 10"},
        {"a run longer than the row", mapped(8, 1, 2, 2, {9, 1, 0, 0, 9, 2, 0, 1}), "22 11"},
        {"without the end mark", mapped(8, 1, 2, 2, {2, 1, 0, 0, 2, 2}), "22 11"},
        {"rows behind the last", mapped(8, 1, 2, 1, {2, 1, 0, 0, 2, 2, 0, 0, 2, 3}), "11"},
    };
    for (const Row& row : rows) EXPECT_EQ(coloursOf(row.file), row.colours) << row.what;
}

TEST(Bitmap, OldHeadersAreRead) {
    FileBytes core = fileOf("BM", FileBytes(24));
    core[10] = 32;
    core[14] = 12;
    core[18] = 2;
    core[20] = 2;
    core[22] = 1;
    core[24] = 1;
    core += FileBytes{3, 2, 1, 6, 5, 4, 0x40, 0, 0, 0, 0x80, 0, 0, 0};
    EXPECT_EQ(coloursOf(core), "10 01");
    FileBytes os2 = mapped(8, 1, 4, 1, {4, 2, 0, 1});
    os2.insert(os2.begin() + 54, 24, 0);
    os2[10] += 24;
    os2[14] = 64;
    EXPECT_EQ(coloursOf(os2), "2222");
    os2[30] = 3;  // its own packing of another kind
    EXPECT_EQ(coloursOf(os2), "bitmaps of 8 bits with packing 3 are not supported");
}

// Masks in a header of `headerBytes` or behind one of 40.
FileBytes withMasks(int bits, uint32_t headerBytes, const std::vector<uint32_t>& masks,
                    const FileBytes& pixels, int width, uint8_t packing) {
    FileBytes bytes =
        bitmap(bits, width, 1,
               FileBytes(headerBytes + 14 - 54 + (headerBytes == 40 ? masks.size() * 4 : 0)));
    put(bytes, 10, uint32_t(bytes.size()));
    put(bytes, 14, headerBytes);
    bytes[30] = packing;
    for (size_t i = 0; i < masks.size(); ++i) put(bytes, 54 + i * 4, masks[i]);
    return bytes += pixels;
}

TEST(Bitmap, MasksTellWhereTheChannelsLie) {
    const std::vector<uint32_t> colour{0xFF, 0xFF00, 0xFF0000},
        all{0xFF, 0xFF00, 0xFF0000, 0xFF000000};
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"behind the header", withMasks(32, 40, colour, {1, 2, 3, 4}, 1, 3), {1, 2, 3, 255}},
        {"four behind it", withMasks(32, 40, all, {1, 2, 3, 4}, 1, 6), {1, 2, 3, 4}},
        {"52 bytes", withMasks(32, 52, colour, {1, 2, 3, 4}, 1, 3), {1, 2, 3, 255}},
        {"56 bytes", withMasks(32, 56, all, {1, 2, 3, 4}, 1, 3), {1, 2, 3, 4}},
        {"56 bytes without a mask", withMasks(32, 56, colour, {1, 2, 3, 4}, 1, 3), {1, 2, 3, 255}},
        {"108 bytes", withMasks(32, 108, all, {1, 2, 3, 4}, 1, 3), {1, 2, 3, 4}},
        {"124 bytes", withMasks(32, 124, all, {1, 2, 3, 4}, 1, 3), {1, 2, 3, 4}},
        {"10 bits each",
         withMasks(32, 40, {0x3FF, 0xFFC00, 0x3FF00000}, {0xFF, 0x03, 0x08, 0x20}, 1, 3),
         {255, 128, 128, 255}},
        {"5, 6 and 5 bits",
         withMasks(16, 40, {0xF800, 0x7E0, 0x1F}, {0x61, 0x18, 0xFF, 0xFF}, 2, 3),
         {24, 12, 8, 255, 255, 255, 255, 255}},
        {"one bit of mask",
         withMasks(16, 56, {0x7C00, 0x3E0, 0x1F, 0x8000}, {0, 0x80, 0, 0}, 2, 3),
         {0, 0, 0, 255, 0, 0, 0, 0}},
        {"16 bits without masks", bitmap(16, 1, 1, {0x23, 0x84, 0, 0}), {8, 8, 24, 255}},
        {"32 bits without masks", bitmap(32, 1, 1, {3, 2, 1, 4}), {1, 2, 3, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(bmpCodec, row.file), row.samples) << row.what;
    EXPECT_EQ(failureOf(bmpCodec, withMasks(32, 40, {5, 0xFF00, 0xFF0000}, {1, 2, 3, 4}, 1, 3)),
              "the file is damaged: masks with gaps");
}

TEST(Bitmap, WhatIsDamagedOrNotSupportedIsRefusedInWords) {
    const auto spoilt = [](size_t at, uint32_t number) {
        FileBytes bytes = bitmap(24, 1, 1, {1, 2, 3, 0});
        put(bytes, at, number);
        return bytes;
    };
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {fileOf("BA", FileBytes(60)), "not a bitmap"},
        {spoilt(14, 13), "the file is damaged: a header of 13 bytes"},
        {spoilt(14, 5000), "the file is damaged: a header of 5000 bytes"},
        {spoilt(10, 53), "the file is damaged: pixels within the header"},
        {spoilt(10, 1000), "the file ends early: row 1 of 1"},
        {spoilt(28, 7), "the file is damaged: pixels of 7 bits"},
        {spoilt(30, 4), "bitmaps of 24 bits with packing 4 are not supported"},
        {spoilt(30, 1), "bitmaps of 24 bits with packing 1 are not supported"},
        {spoilt(18, 0), "the picture has no pixels"},
        {spoilt(18, 0x80000000),
         "the picture is too large: 2147483648 x 1 pixels, a frame has at "
         "most 65535 each way"},
        {spoilt(22, 0x80000000),
         "the picture is too large: 1 x 2147483648 pixels, a frame has at "
         "most 65535 each way"},
        {spoilt(22, 60000), "the file ends early: row 2 of 60000"},
        {mapped(8, 1, 2, -2, {2, 1, 0, 1}), "the file is damaged: runs from the top down"},
        {mapped(8, 1, 2, 2, {2, 1, 0, 0}), "the file ends early: row 2 of 2"},
        {mapped(8, 1, 200, 1, {0, 200, 1, 2, 3}), "the file ends early: row 1 of 1"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(bmpCodec, row.file), row.failure);
}

TEST(Bitmap, AFileIsKnownByItsStart) {
    EXPECT_TRUE(bmpCodec.recognises(fileOf("BM")));
    EXPECT_FALSE(bmpCodec.recognises(fileOf("B")));
}

TEST(Bitmap, ColourSurvivesWithAndWithoutMask) {
    expectRoundTrip(bmpCodec, samplePicture(31, 5, true, true, false));
    expectRoundTrip(bmpCodec, samplePicture(31, 5, true, false, false));
}

TEST(Bitmap, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes file = writtenBytes(bmpCodec, samplePicture(9, 3, true, false, false));
    expectEveryCutFails(bmpCodec, file, file.size() - 1);  // the last byte is padding
    expectSpoiltBytesDoNoHarm(bmpCodec, file, 54);
    const FileBytes masked = writtenBytes(bmpCodec, samplePicture(9, 3, true, true, false));
    expectEveryCutFails(bmpCodec, masked, masked.size());
    expectSpoiltBytesDoNoHarm(bmpCodec, masked, 122);
    const FileBytes runs =
        mapped(4, 2, 5, 2, {0, 5, 0x12, 0x31, 0x20, 0, 0, 0, 0, 2, 1, 0, 4, 0x12, 0, 1});
    EXPECT_EQ(failureOf(bmpCodec, runs), "");
    expectEveryCutFails(bmpCodec, runs, runs.size() - 2);  // the end mark may be missing
    expectSpoiltBytesDoNoHarm(bmpCodec, runs, runs.size());
}

}  // namespace
