#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

TEST(Radiance, LightIsRead) {
    FileBytes file = fileOf("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2 +X 1\n");
    file += FileBytes{128, 64, 0, 128, 128, 0, 0, 129};
    EXPECT_EQ(samplesOf(hdrCodec, file), (std::vector<int>{188, 137, 0, 255, 255, 0, 0, 255}));
}

TEST(Radiance, XyzBecomesColour) {
    FileBytes file = fileOf("#?RADIANCE\nFORMAT=32-bit_rle_xyze\n\n-Y 1 +X 2\n");
    // White, and the screen's green of 0.5: X 0.17879, Y 0.35758, Z 0.0596.
    file += FileBytes{122, 128, 139, 129, 92, 183, 31, 127};
    const auto samples = samplesOf(hdrCodec, file);
    const int wanted[] = {255, 255, 255, 255, 0, 188, 0, 255};
    ASSERT_EQ(samples.size(), 8u);
    for (size_t i = 0; i < 8; ++i) EXPECT_NEAR(samples[i], wanted[i], 14) << i;
}

FileBytes radiance(const std::string& lines, const std::string& size, const FileBytes& rows) {
    return fileOf("#?RADIANCE\n" + lines + "FORMAT=32-bit_rle_rgbe\n\n" + size + "\n", rows);
}

TEST(Radiance, GammaIsUndoneAndExposureStays) {
    struct Row {
        const char* lines;
        float light;  // of a pixel of 0.5
    };
    const Row rows[] = {
        {"", 0.5f},
        {"EXPOSURE=2\n", 0.5f},
        {"GAMMA=2\n", 0.25f},
        {"GAMMA= 2\r\n", 0.25f},
        {"GAMMA=4\nEXPOSURE=3\nGAMMA=5e-1\n", 0.25f},
        {"GAMMA=0\nGAMMA=-1\nGAMMA=much\nGAMMA=nan\nGAMMA=inf\nGAMMA=\n", 0.5f},
        {"# GAMMA=2\nSOFTWARE=GAMMA=2\n", 0.5f},
    };
    for (const Row& row : rows) {
        const int byte = byteFromLinear(row.light);
        EXPECT_EQ(samplesOf(hdrCodec, radiance(row.lines, "-Y 1 +X 1", {128, 128, 128, 128})),
                  (std::vector<int>{byte, byte, byte, 255}))
            << row.lines;
    }
}

TEST(Radiance, TheSizeLineTellsWhereTheFirstPixelStands) {
    struct Row {
        const char* size;
        const char* greys;  // of the pixels a, b, c / d, e, f as stored
    };
    const Row rows[] = {
        {"-Y 2 +X 3", "abcdef"}, {"-Y 2 -X 3", "cbafed"}, {"+Y 2 -X 3", "fedcba"},
        {"+Y 2 +X 3", "defabc"}, {"+X 2 -Y 3", "adbecf"}, {"-X 2 -Y 3", "daebfc"},
        {"-X 2 +Y 3", "fcebda"}, {"+X 2 +Y 3", "cfbead"},
    };
    FileBytes pixels;
    for (const uint8_t byte : {10, 20, 40, 80, 160, 255})
        pixels += FileBytes{byte, byte, byte, 128};
    const auto upright = samplesOf(hdrCodec, radiance("", "-Y 2 +X 3", pixels));
    ASSERT_EQ(upright.size(), 24u);
    for (const Row& row : rows) {
        const auto samples = samplesOf(hdrCodec, radiance("", row.size, pixels));
        ASSERT_EQ(samples.size(), 24u);
        for (size_t i = 0; i < 6; ++i)
            EXPECT_EQ(samples[i * 4], upright[size_t(row.greys[i] - 'a') * 4]) << row.size;
    }
}

TEST(Radiance, RowsAreInRunsOrPixelAfterPixel) {
    const FileBytes a{128, 64, 32, 128}, b{10, 20, 30, 129};
    const auto pixels = [&](const char* order) {
        FileBytes bytes;
        for (; *order; ++order) bytes += *order == 'a' ? a : b;
        return bytes;
    };
    const auto plain = samplesOf(hdrCodec, radiance("", "-Y 1 +X 8", pixels("aaabbbbb")));
    struct Row {
        const char* what;
        FileBytes bytes;
    };
    const Row rows[] = {
        {"planes in runs and copies",
         {2,  2,  0,  8,   131, 128, 133, 10, 8,   64, 64,  64,  20,  20,
          20, 20, 20, 131, 32,  2,   30,  30, 131, 30, 131, 128, 133, 129}},
        {"the pixel before, twice and four times",
         {128, 64, 32, 128, 1, 1, 1, 2, 10, 20, 30, 129, 1, 1, 1, 4}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(samplesOf(hdrCodec, radiance("", "-Y 1 +X 8", row.bytes)), plain) << row.what;
    // The second count of two is worth 256 times as much.
    const auto wide = samplesOf(
        hdrCodec, radiance("", "-Y 1 +X 260", {128, 64, 32, 128, 1, 1, 1, 3, 1, 1, 1, 1}));
    ASSERT_EQ(wide.size(), 260u * 4);
    EXPECT_EQ(wide[259 * 4], wide[0]);
}

TEST(Radiance, WhatIsDamagedIsRefusedInWords) {
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const Row rows[] = {
        {fileOf("P6 1 1 255 "), "not a Radiance picture"},
        {fileOf("#?RADIANCE\nFORMAT=32-bit_rle_lab\n\n-Y 1 +X 1\n1234"),
         "the Radiance format 32-bit_rle_lab is not supported"},
        {fileOf("#?RADIANCE\nEXPOSURE=1"), "the file ends early: in its header"},
        {radiance("", "-Y 1 +Y 1", FileBytes(4)), "the file is damaged: no size of the picture"},
        {radiance("", "-Y 1", FileBytes(4)), "the file is damaged: no size of the picture"},
        {radiance("", "-Y one +X 1", FileBytes(4)), "the file is damaged: no size of the picture"},
        {radiance("", "-Y 1 +X 1 +Z 1", FileBytes(4)),
         "the file is damaged: no size of the picture"},
        {radiance("", "-Y 0 +X 1", FileBytes(4)), "the picture has no pixels"},
        {radiance("", "-Y 2 +X 1", FileBytes(4)), "the file ends early: row 2 of 2"},
        {radiance("", "-Y 1 +X 2", {1, 1, 1, 1}), "the file is damaged: row 1 of 1"},
        {radiance("", "-Y 1 +X 2", {9, 9, 9, 9, 1, 1, 1, 2}), "the file is damaged: row 1 of 1"},
        {radiance("", "-Y 1 +X 8", {2, 2, 0, 8, 137, 1}), "the file is damaged: row 1 of 1"},
        {radiance("", "-Y 1 +X 8", {2, 2, 0, 8, 0, 1}), "the file is damaged: row 1 of 1"},
        {radiance("", "-Y 1 +X 8", {2, 2, 0, 8, 3, 1}), "the file ends early: row 1 of 1"},
    };
    for (const Row& row : rows) EXPECT_EQ(failureOf(hdrCodec, row.file), row.failure);
}

TEST(Radiance, AFileIsKnownByItsStart) {
    EXPECT_TRUE(hdrCodec.recognises(fileOf("#?RADIANCE\n")));
    EXPECT_TRUE(hdrCodec.recognises(fileOf("#?RGBE\n")));
    EXPECT_TRUE(hdrCodec.recognises(fileOf("#?RADIANCE\r\n")));
    EXPECT_FALSE(hdrCodec.recognises(fileOf("#?")));
}

TEST(Radiance, EightBitsOfGreySurvive) {
    Picture picture, back;
    ASSERT_FALSE(picture.allocate(256, 1, false));
    for (size_t i = 0; i < 1024; ++i) picture.samples[i] = uint8_t(i % 4 == 3 ? 255 : i / 4);
    expectRoundTrip(hdrCodec, picture);
}

// Told by the sanitizers, too: black has no brightest channel to be measured by.
TEST(Radiance, BlackIsFourZeros) {
    Picture black;
    ASSERT_FALSE(black.allocate(2, 1, false));
    const FileBytes bytes = writtenBytes(hdrCodec, black);
    EXPECT_EQ(FileBytes(bytes.end() - 8, bytes.end()), FileBytes(8));
}

TEST(Radiance, DarkChannelsAreAsFineAsTheBrightestLets) {
    Picture picture = samplePicture(300, 20, true, false, true), back;
    ASSERT_FALSE(readBytes(hdrCodec, writtenBytes(hdrCodec, picture), back));
    for (size_t i = 0; i < back.samples.size(); i += 4) {
        float brightest = 0;
        for (size_t k = 0; k < 3; ++k)
            brightest =
                std::max(brightest, linearFromEncoded(picture.wideSamples[i + k] / 65535.f));
        for (size_t k = 0; k < 3; ++k) {
            const float light = linearFromEncoded(picture.wideSamples[i + k] / 65535.f);
            ASSERT_GE(back.samples[i + k], byteFromLinear(light - brightest / 250));
            ASSERT_LE(back.samples[i + k], byteFromLinear(light + brightest / 250));
        }
    }
}

TEST(Radiance, CutAndSpoiltFilesDoNoHarm) {
    FileBytes runs = fileOf("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2 +X 8\n");
    for (int row = 0; row < 2; ++row)
        runs += FileBytes{2, 2, 0, 8, 0x88, 128, 0x88, 64, 0x84, 0, 4, 1, 2, 3, 4, 0x88, 128};
    const FileBytes plain = writtenBytes(hdrCodec, samplePicture(40, 3, true, false, false));
    for (const FileBytes& file : {runs, plain}) {
        EXPECT_EQ(failureOf(hdrCodec, file), "");
        expectEveryCutFails(hdrCodec, file, file.size());
        expectSpoiltBytesDoNoHarm(hdrCodec, file, 130);
    }
    EXPECT_EQ(failureOf(hdrCodec, fileOf("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n"
                                         "-Y 60000 +X 60000\n.")),
              "the picture is too large: it would take over 1 GB");
}

}  // namespace
