#include <cstring>
#include <limits>

#include "audio/audio_files.h"

namespace vistel::test {
namespace {

// Eight frames 0 to 7, one byte each.
struct SampleReadingTest : testing::Test {
    SampleReadingTest() : file(wave(waveFormat(1, 8).add(waveChunk("data", countedBytes())))) {}
    static Bytes countedBytes() {
        Bytes bytes;
        for (unsigned i = 0; i < 8; ++i) bytes.u8(i);
        return bytes.add("behind");
    }
    int64_t read(int64_t frames) {
        return AFreadframes(file.handle.get(), afDefaultTrack, buffer, frames);
    }
    Reports reports;
    OpenedFile file;
    char buffer[64] = {};
};

TEST_F(SampleReadingTest, NoMoreThanThereIs) {
    file->track().samples = 8;
    EXPECT_EQ(read(3), 3);
    EXPECT_EQ(read(std::numeric_limits<int64_t>::max()), 5);
    EXPECT_EQ(std::memcmp(buffer, "\3\4\5\6\7\0", 6), 0);
    EXPECT_EQ(read(1), 0);
    EXPECT_EQ(read(0), 0);
    EXPECT_EQ(read(-1), 0);
    EXPECT_EQ(reports.all(), "");
}

// What would be read ahead is copied twice.
TEST_F(SampleReadingTest, NothingIsReadAhead) {
    const int descriptor = platform::streamDescriptor(file->stream.get());
    EXPECT_EQ(read(3), 3);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), file->track().dataStart + 3);
    EXPECT_EQ(read(2), 2);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), file->track().dataStart + 5);
}

TEST_F(SampleReadingTest, GoesOnWhereItWasSoughtTo) {
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, 5), 0);
    EXPECT_EQ(read(2), 2);
    EXPECT_EQ(buffer[0], 5);
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, 0), 0);
    EXPECT_EQ(read(1), 1);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, 1000), 0);  // nothing is there
    EXPECT_EQ(read(1), 0);
    EXPECT_EQ(reports.all(), "");
}

TEST_F(SampleReadingTest, APlaceThatCannotBeReachedIsTold) {
    EXPECT_EQ(read(2), 2);
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, -1), 0);
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, std::numeric_limits<int64_t>::max()),
              0);
    EXPECT_EQ(reports.all(), "7 AFseekframe: lseek to offset 43 bytes into " + file.file.name() +
                                 " failed\n7 AFseekframe: lseek to offset -1 bytes into " +
                                 file.file.name() + " failed\n");
    EXPECT_EQ(read(1), 1);
    EXPECT_EQ(buffer[0], 2);  // as if nothing had been sought
}

TEST_F(SampleReadingTest, BadArgumentsAreTold) {
    EXPECT_EQ(AFreadframes(nullptr, afDefaultTrack, buffer, 1), 0);
    EXPECT_EQ(AFseekframe(nullptr, afDefaultTrack, 1), -1);
    EXPECT_EQ(AFreadframes(file.handle.get(), 5, buffer, 1), 0);
    EXPECT_EQ(AFseekframe(file.handle.get(), 5, 1), -1);
    file->access = afWrite;
    EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, 1), -1);
    file->access = afRead;
    const std::string name = file.file.name();
    EXPECT_EQ(reports.all(),
              "1 AFreadframes: null audio file descriptor\n"
              "1 AFseekframe: null file handle\n"
              "24 AFreadframes: no track corresponding to id 5 in file " +
                  name + "\n24 AFseekframe: no track corresponding to id 5 in file " + name +
                  "\n12 AFseekframe: file must be opened for reading\n");
}

TEST(SampleReading, TwentyFourBitsAreSignExtendedHoweverManyAreRead) {
    Bytes samples;
    std::vector<int32_t> expected;
    for (uint32_t i = 0; i < 40000; ++i) {  // more than a block of the conversion
        const uint32_t value = i * 0x9E3779B1u >> 8;
        samples.u8(value >> 16).u8(value >> 8).u8(value);
        expected.push_back(static_cast<int32_t>(value << 8) >> 8);
    }
    const Bytes bytes = aiff(common(1, 40000, 24).add(sound(samples)));
    for (const int64_t frames : {1, 7, 1000, 40000, 50000})
        EXPECT_EQ(OpenedFile(bytes).samples<int32_t>(frames), expected) << frames;
}

TEST(SampleReading, TheExtremesOfTwentyFourBits) {
    const Bytes samples = Bytes().add("\x7F\xFF\xFF\xFF\xFF\xFF\x80").u8(0).u8(0);
    EXPECT_EQ(OpenedFile(aiff(common(1, 3, 24).add(sound(samples)))).samples<int32_t>(),
              (std::vector<int32_t>{8388607, -1, -8388608}));
}

TEST(SampleReading, OnlySixteenBitsAreSwapped) {
    const Bytes twelve = aiff(common(1, 1, 12).add(sound(Bytes().u16(0x1230))));
    EXPECT_EQ(OpenedFile(twelve).samples<uint16_t>(), std::vector<uint16_t>{0x3012});
    const Bytes thirtyTwo = aiff(common(1, 1, 32).add(sound(Bytes().u32(0x12345678))));
    EXPECT_EQ(OpenedFile(thirtyTwo).samples<uint32_t>(), std::vector<uint32_t>{0x78563412});
}

}  // namespace
}  // namespace vistel::test
