#include "audio/audio_files.h"

namespace vistel::test {
namespace {

TEST(FileSetup, IsAiffCInStereoAtFirst) {
    const std::unique_ptr<AFfilesetup> setup(AFnewfilesetup());
    EXPECT_EQ(setup->magic, 48004);
    EXPECT_EQ(setup->format, 1);
    EXPECT_EQ(setup->trackId, 1001);
    EXPECT_EQ(setup->channels, 2);
    EXPECT_EQ(setup->rate, 44100.0);
    EXPECT_EQ(setup->sampleFormat, 401);
    EXPECT_EQ(setup->width, 16);
    EXPECT_EQ(setup->loopIds, (std::array<int32_t, 2>{1, 2}));
    EXPECT_EQ(setup->markers[3].id, 4);
    EXPECT_TRUE(setup->misc.empty());
}

TEST(FileSetup, TakesOnlyTheFormatsUpToSeven) {
    Reports reports;
    AFfilesetup setup;
    for (const int32_t format : {2, 1, 7}) {
        AFinitfilefmt(&setup, format);
        EXPECT_EQ(setup.format, format);
    }
    EXPECT_EQ(reports.all(), "");
    for (const int32_t format : {50, 10, 8, 3, 0, -1}) AFinitfilefmt(&setup, format);
    EXPECT_EQ(setup.format, 7);
    std::string expected;
    for (const char* format : {"50", "10", "8", "3", "0", "-1"})
        expected += std::string("13 AFinitfilefmt: unrecognized file format ") + format + "\n";
    EXPECT_EQ(reports.all(), expected);
}

TEST(FileSetup, KeepsANegativeRateThoughItTells) {
    Reports reports;
    AFfilesetup setup;
    AFinitrate(&setup, afDefaultTrack, -2.5);
    EXPECT_EQ(setup.rate, -2.5);
    AFinitrate(&setup, 7, 1);
    EXPECT_EQ(setup.rate, -2.5);
    EXPECT_EQ(reports.all(),
              "14 AFinitrate: invalid sample rate -2.500000\n24 AFinitrate: invalid track id 7\n");
}

TEST(FileSetup, ABadOneIsTold) {
    Reports reports;
    AFfilesetup stale;
    stale.magic = 5;
    AFinitfilefmt(nullptr, 1);
    AFinitfilefmt(&stale, 2);
    AFinitrate(nullptr, afDefaultTrack, 1);
    AFinitrate(&stale, afDefaultTrack, 1);
    EXPECT_EQ(stale.format, 1);
    EXPECT_EQ(reports.all(),
              "23 AFinitfilefmt: null file setup\n23 AFinitfilefmt: invalid file setup\n"
              "23 AFinitrate: null file setup\n23 AFinitrate: invalid file setup\n");
}

}  // namespace
}  // namespace vistel::test
