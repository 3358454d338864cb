#include "audio/format_table.h"

#include "audio/audio_files.h"

namespace vistel {
namespace {

TEST(FormatTable, MapsIdsAndPlacesBothWays) {
    const int32_t ids[] = {2, 1, 10, 20, 30, 40, 50, 7};
    for (int32_t place = 0; place < 8; ++place) {
        EXPECT_EQ(tablePositionOf(ids[place]), place);
        EXPECT_EQ(fileFormatAt(place), ids[place]);
    }
    for (const int32_t other : {-1, 0, 3, 8, 60}) EXPECT_EQ(tablePositionOf(other), -1);
    for (const int32_t other : {-1, 8}) EXPECT_EQ(fileFormatAt(other), -1);
}

TEST(FormatTable, RecognisesFirstBytes) {
    struct Row {
        std::string_view bytes;
        const char* name;
    };
    const Row rows[] = {
        {"FORM....AIFF", "AIFF"},
        {"FORM....AIFC", "AIFF-C"},
        {"RIFF....WAVE", "MS RIFF WAVE"},
        {"SFIL", "Sound Designer 1"},
        {"Sd2f", "Sound Designer 2"},
        {"dns.", "NeXT .snd"},
        {".snd........", nullptr},
        {"FORM....8SVX", nullptr},
        {"RIFF....AVI ", nullptr},
        {"FORM....AIF", nullptr},
        {"", nullptr},
        {"RIFX....WAVE", nullptr},
    };
    for (const Row& row : rows) {
        const AudioFormat* found = recogniseAudio(row.bytes);
        EXPECT_STREQ(found ? found->name : nullptr, row.name) << row.bytes;
    }
}

TEST(FormatTable, WhatIsRecognisedMayNotBeSupported) {
    EXPECT_EQ(test::refused("dns.12345678"),
              "refused: 0 AFopenfile: WARNING NeXT .snd format not supported by audio file "
              "library\n");
    EXPECT_EQ(test::refused("SFIL"),
              "refused: 0 AFopenfile: WARNING Sound Designer 1 format not supported by audio file "
              "library\n");
}

}  // namespace
}  // namespace vistel
