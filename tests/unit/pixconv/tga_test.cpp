#include "codec_files.h"
#include "host/byte_order.h"

using namespace vistel;
using namespace vistel::test;

namespace {

FileBytes targa(int kind, int bits, int width, int height, const FileBytes& rest,
                int descriptor = 0x20) {
    FileBytes bytes(18);
    bytes[2] = uint8_t(kind);
    writeLittle16(&bytes[12], uint16_t(width));
    writeLittle16(&bytes[14], uint16_t(height));
    bytes[16] = uint8_t(bits);
    bytes[17] = uint8_t(descriptor);
    return bytes += rest;
}

TEST(Targa, PlainAndPackedPicturesAreRead) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"colour", targa(2, 24, 1, 1, {3, 2, 1}), {1, 2, 3, 255}},
        {"colour and mask", targa(2, 32, 1, 1, {3, 2, 1, 4}, 0x28), {1, 2, 3, 4}},
        {"a fourth byte that is no mask", targa(2, 32, 1, 1, {3, 2, 1, 4}), {1, 2, 3, 255}},
        {"grey", targa(3, 8, 1, 1, {7}), {7, 7, 7, 255}},
        {"grey and mask", targa(3, 16, 1, 1, {7, 9}, 0x28), {7, 7, 7, 9}},
        {"grey and a byte that is no mask", targa(3, 16, 1, 1, {7, 9}), {7, 7, 7, 255}},
        {"runs",
         targa(10, 24, 3, 1, {0x81, 3, 2, 1, 0, 6, 5, 4}),
         {1, 2, 3, 255, 1, 2, 3, 255, 4, 5, 6, 255}},
        {"runs of grey",
         targa(11, 8, 3, 1, {0x80, 9, 1, 7, 8}),
         {9, 9, 9, 255, 7, 7, 7, 255, 8, 8, 8, 255}},
        {"a run over two rows", targa(11, 8, 1, 2, {0x81, 9}), {9, 9, 9, 255, 9, 9, 9, 255}},
        {"a run longer than the picture", targa(11, 8, 1, 1, {0xFF, 9}), {9, 9, 9, 255}},
        {"copies longer than the picture", targa(11, 8, 1, 1, {2, 9, 8}), {9, 9, 9, 255}},
        {"5 bits each", targa(2, 16, 1, 1, {0x1F, 0x7C}), {255, 0, 255, 255}},
        {"5 bits, upper ones repeated", targa(2, 16, 1, 1, {0x23, 0x04}), {8, 8, 24, 255}},
        {"5 bits and one of mask",
         targa(2, 16, 2, 1, {0, 0x80, 0, 0}, 0x21),
         {0, 0, 0, 255, 0, 0, 0, 0}},
        {"15 bits", targa(2, 15, 1, 1, {0, 0x7C}, 0x21), {255, 0, 0, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(tgaCodec, row.file), row.samples) << row.what;
}

// Colour map entries of `bits`, from index `first` on, before the pixels.
FileBytes mappedTarga(int bits, int first, const FileBytes& map, const FileBytes& pixels,
                      int pixelBits = 8) {
    FileBytes rest = map;
    FileBytes file = targa(1, pixelBits, int(pixels.size()) * 8 / pixelBits, 1, rest += pixels);
    file[1] = 1;
    file[3] = uint8_t(first);
    file[5] = uint8_t(map.size() * 8 / size_t(bits + (bits == 15)));
    file[7] = uint8_t(bits);
    return file;
}

TEST(Targa, PixelsWithAMapAreItsColours) {
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"24 bits", mappedTarga(24, 0, {1, 2, 3, 4, 5, 6}, {1, 0}), {6, 5, 4, 255, 3, 2, 1, 255}},
        {"32 bits", mappedTarga(32, 0, {1, 2, 3, 4}, {0}), {3, 2, 1, 4}},
        {"16 bits", mappedTarga(16, 0, {0x1F, 0}, {0}), {0, 0, 255, 255}},
        {"indices of two bytes", mappedTarga(24, 0, {1, 2, 3}, {0, 0}, 16), {3, 2, 1, 255}},
        {"from an index on", mappedTarga(24, 5, {1, 2, 3}, {5, 4}), {3, 2, 1, 255, 0, 0, 0, 255}},
        {"an index behind the last", mappedTarga(24, 0, {1, 2, 3}, {1}), {0, 0, 0, 255}},
        {"the same with a mask", mappedTarga(32, 0, {1, 2, 3, 4}, {1}), {0, 0, 0, 0}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(tgaCodec, row.file), row.samples) << row.what;
    // One that nothing needs is passed over, as the comment is.
    FileBytes file = targa(3, 8, 1, 1, {99, 98, 1, 2, 3, 7});
    file[0] = 2;
    file[1] = 1;
    file[5] = 1;
    file[7] = 24;
    EXPECT_EQ(samplesOf(tgaCodec, file), (std::vector<int>{7, 7, 7, 255}));
}

TEST(Targa, TheDescriptorTellsWhereTheFirstPixelStands) {
    struct Row {
        int descriptor;
        std::vector<int> greys;
    };
    const Row rows[] = {
        {0x00, {3, 4, 1, 2}}, {0x10, {4, 3, 2, 1}}, {0x20, {1, 2, 3, 4}}, {0x30, {2, 1, 4, 3}}};
    for (const Row& row : rows)
        for (const bool runs : {false, true}) {
            const FileBytes pixels = runs ? FileBytes{3, 1, 2, 3, 4} : FileBytes{1, 2, 3, 4};
            const auto samples =
                samplesOf(tgaCodec, targa(runs ? 11 : 3, 8, 2, 2, pixels, row.descriptor));
            ASSERT_EQ(samples.size(), 16u);
            for (size_t i = 0; i < 4; ++i) EXPECT_EQ(samples[i * 4], row.greys[i]);
        }
}

TEST(Targa, WhatIsNoTargaIsRefused) {
    EXPECT_EQ(failureOf(tgaCodec, targa(4, 8, 1, 1, {1})), "not a Targa picture");
    EXPECT_EQ(failureOf(tgaCodec, targa(2, 8, 1, 1, {1})), "not a Targa picture");
    EXPECT_EQ(failureOf(tgaCodec, targa(1, 8, 1, 1, {1})), "the file is damaged: no colour map");
    EXPECT_EQ(failureOf(tgaCodec, targa(3, 8, 1, 3, {1})), "the file ends early: row 2 of 3");
    EXPECT_EQ(failureOf(tgaCodec, targa(11, 8, 1, 3, {0x81, 1, 0})),
              "the file ends early: row 3 of 3");
}

TEST(Targa, RunsShortenEvenAreas) {
    Picture even;
    ASSERT_FALSE(even.allocate(1000, 10, false));
    even.mask = true;
    EXPECT_EQ(writtenBytes(tgaCodec, even).size(), 18u + 10 * 8 * 5);
}

TEST(Targa, PicturesSurvive) {
    for (const uint32_t width : {1u, 2u, 3u, 128u, 129u, 600u})
        expectRoundTrip(tgaCodec, samplePicture(width, 5, true, true, false));
    expectRoundTrip(tgaCodec, samplePicture(150, 5, true, false, false));
    expectRoundTrip(tgaCodec, samplePicture(150, 5, false, false, false));
}

TEST(Targa, GreyWithMaskBecomesColour) {
    Picture picture = samplePicture(5, 5, false, true, false), back;
    ASSERT_FALSE(readBytes(tgaCodec, writtenBytes(tgaCodec, picture), back));
    picture.colour = true;
    expectSame(picture, back);
}

TEST(Targa, SixteenBitsAreRounded) {
    const Picture wide = samplePicture(50, 3, true, true, true);
    Picture back;
    ASSERT_FALSE(readBytes(tgaCodec, writtenBytes(tgaCodec, wide), back));
    for (size_t i = 0; i < wide.wideSamples.size(); ++i)
        ASSERT_EQ(back.samples[i], byteFromWord(wide.wideSamples[i]));
}

TEST(Targa, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes runs = writtenBytes(tgaCodec, samplePicture(20, 3, true, true, false));
    expectEveryCutFails(tgaCodec, runs, runs.size());
    expectSpoiltBytesDoNoHarm(tgaCodec, runs, 60);
    const FileBytes plain = targa(3, 8, 37, 2, FileBytes(74));
    EXPECT_EQ(failureOf(tgaCodec, plain), "");
    expectEveryCutFails(tgaCodec, plain, plain.size());
    const FileBytes map = mappedTarga(24, 3, {1, 2, 3, 4, 5, 6}, {3, 4, 5});
    expectEveryCutFails(tgaCodec, map, map.size());
    expectSpoiltBytesDoNoHarm(tgaCodec, map, map.size());
}

TEST(Targa, AFewBytesMayNotPromiseAHugePicture) {
    EXPECT_EQ(failureOf(tgaCodec, targa(2, 32, 65535, 65535, FileBytes(100))),
              "the picture is too large: it would take over 1 GB");
    EXPECT_EQ(failureOf(tgaCodec, targa(10, 32, 4000, 4000, FileBytes(100))),
              "the file ends early: row 1 of 4000");
    EXPECT_EQ(failureOf(tgaCodec, targa(2, 24, 0, 1, {1})), "the picture has no pixels");
    EXPECT_EQ(tgaCodec.recognises, nullptr);
}

}  // namespace
