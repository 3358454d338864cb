#include "audio/raw_samples.h"

#include "audio/audio_files.h"

namespace vistel::test {
namespace {

AFfilesetup rawSetup(int32_t channels, int32_t width, int32_t format = afRaw) {
    AFfilesetup setup;
    setup.format = format;
    setup.channels = channels;
    setup.width = width;
    setup.rate = 8000;
    return setup;
}

TEST(RawSamples, AreWhatTheSetupSays) {
    const AFfilesetup setup = rawSetup(2, 16);
    const OpenedFile file(little16(1).add(little16(2)).add(little16(3)).add(little16(4)).u8(9),
                          &setup);
    ASSERT_TRUE(file);
    EXPECT_EQ(AFgetfilefmt(file.handle.get(), nullptr), afRaw);
    EXPECT_EQ(AFgetrate(file.handle.get(), afDefaultTrack), 8000.0);
    EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), 2);
    EXPECT_EQ(file->track().compressionName, "not compressed");
    EXPECT_EQ(file.samples<int16_t>(), (std::vector<int16_t>{1, 2, 3, 4}));
}

TEST(RawSamples, OfASocketNobodyKnowsHowManyThereAre) {
    const AFfilesetup setup = rawSetup(1, 8, afSocketRaw);
    const OpenedFile file("abc", &setup);
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->seekable);
    EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), 0);
    EXPECT_TRUE(file.samples<uint8_t>().empty());
}

TEST(RawSamples, OfMoreThanTwoChannelsCannotBeCompressed) {
    AFfilesetup setup = rawSetup(3, 16);
    setup.compression = afAce2;
    EXPECT_EQ(refused("abc", &setup),
              "refused: 47 AFopenfile: can't compress more than 2 channels of data\n");
    setup.channels = 2;
    Reports reports;
    const OpenedFile file("abcd", &setup);
    ASSERT_TRUE(file);
    char buffer[8];
    EXPECT_EQ(AFreadframes(file.handle.get(), afDefaultTrack, buffer, 1), 0);
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, 1), 0);  // left alone
    EXPECT_EQ(reports.all(), "47 AFreadframes: bad compression type 504\n");
}

TEST(RawSamples, OddSetupsOpenEmpty) {
    for (const int32_t channels : {-1, 0, 1})
        for (const int32_t width : {-1, 0, 8}) {
            const AFfilesetup setup = rawSetup(channels, width);
            const OpenedFile file("abc", &setup);
            ASSERT_TRUE(file);
            char buffer[8];
            const bool real = channels == 1 && width == 8;
            EXPECT_EQ(AFreadframes(file.handle.get(), afDefaultTrack, buffer, 8), real ? 3 : 0);
        }
}

}  // namespace
}  // namespace vistel::test
