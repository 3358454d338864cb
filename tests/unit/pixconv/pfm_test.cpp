#include <bit>
#include <limits>

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

FileBytes floats(std::initializer_list<float> values, bool littleEndian) {
    FileBytes bytes;
    for (const float value : values)
        for (int i = 0; i < 4; ++i)
            bytes.push_back(
                uint8_t(std::bit_cast<uint32_t>(value) >> (littleEndian ? 8 * i : 24 - 8 * i)));
    return bytes;
}

TEST(Pfm, LightIsReadFromTheBottomRowUp) {
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    struct Row {
        const char* what;
        FileBytes file;
        std::vector<int> samples;
    };
    const Row rows[] = {
        {"big-endian colour",
         fileOf("PF\n1 2\n1.0\n", floats({0, 0.5f, 1, 1, 1, 0}, false)),
         {255, 255, 0, 255, 0, 188, 255, 255}},
        {"little-endian grey",
         fileOf("Pf\n2 1\n-1.0\n", floats({0.5f, 1}, true)),
         {188, 188, 188, 255, 255, 255, 255, 255}},
        {"the scale's size does not count",
         fileOf("Pf 1 1 -2.5e3\n", floats({0.5f}, true)),
         {188, 188, 188, 255}},
        {"too bright, too dark, no number",
         fileOf("PF 1 1 1\n", floats({9, -1, nothing}, false)),
         {255, 0, 0, 255}},
    };
    for (const Row& row : rows) EXPECT_EQ(samplesOf(pfmCodec, row.file), row.samples) << row.what;
}

TEST(Pfm, WhatIsDamagedIsRefusedInWords) {
    struct Row {
        FileBytes file;
        const char* failure;
    };
    const char* const header = "the file is damaged: its header";
    const Row rows[] = {
        {fileOf("PX 1 1 1 "), "not a PFM picture"},
        {fileOf("PF"), "the file ends early: in its header"},
        {fileOf("PF 1 x 1 "), header},
        {fileOf("PF 1 1 0.0 abcd"), header},
        {fileOf("PF 1 1 nan abcd"), header},
        {fileOf("PF 1 1 "), header},
        {fileOf("PF 0 1 1 "), "the picture has no pixels"},
        {fileOf("Pf 2 9 1\n", FileBytes(20)), "the file ends early: row 3 of 9"},
        {fileOf("PF 65000 65000 1\n"), "the picture is too large: it would take over 1 GB"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(failureOf(pfmCodec, row.file), row.failure)
            << std::string(row.file.begin(), row.file.end());
}

TEST(Pfm, EightBitsSurviveTheWayToLight) {
    for (const bool colour : {false, true}) {
        expectRoundTrip(pfmCodec, samplePicture(600, 5, colour, false, false));
        Picture all;
        ASSERT_FALSE(all.allocate(256, 1, false));
        all.colour = colour;
        for (size_t i = 0; i < 1024; ++i) all.samples[i] = uint8_t(i % 4 == 3 ? 255 : i / 4);
        expectRoundTrip(pfmCodec, all);
    }
}

TEST(Pfm, SixteenBitsAreWrittenAsFine) {
    Picture wide;
    ASSERT_FALSE(wide.allocate(2, 1, true));
    wide.colour = false;
    wide.wideSamples[0] = 32768;
    wide.wideSamples[4] = 32769;
    const FileBytes file = writtenBytes(pfmCodec, wide);
    ASSERT_EQ(file.size(), fileOf("Pf\n2 1\n-1.0\n").size() + 8);
    float light[2];
    std::memcpy(light, file.data() + file.size() - 8, 8);
    EXPECT_NEAR(light[0], 0.2140475, 1e-6);
    EXPECT_GT(light[1], light[0]);
}

TEST(Pfm, CutAndSpoiltFilesDoNoHarm) {
    const FileBytes file = writtenBytes(pfmCodec, samplePicture(5, 3, true, false, false));
    expectEveryCutFails(pfmCodec, file, file.size());
    expectSpoiltBytesDoNoHarm(pfmCodec, file, file.size());
}

}  // namespace
