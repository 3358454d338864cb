#include "audio/written_file.h"

namespace vistel::test {
namespace {

TEST(SampleWriting, OfThirtyTwoBitsTheTopThreeBytesAreWritten) {
    WrittenFile file(setupOf(afWave, 1, 24));
    EXPECT_EQ(file.write<int32_t>({0x12345678, -256}), 2);
    const Bytes bytes = file.closed();
    const Bytes samples = Bytes().u8(0x56).u8(0x34).u8(0x12).u8(0xFF).u8(0xFF).u8(0xFF);
    EXPECT_EQ(std::vector<uint8_t>(bytes.data.end() - 6, bytes.data.end()), samples.data);
}

TEST(SampleWriting, RawSamplesHaveNoHeader) {
    for (const int32_t format : {afRaw, afSocketRaw}) {
        WrittenFile file(setupOf(format, 1, 16));
        EXPECT_EQ(file.write<int16_t>({1, 2}), 2);
        EXPECT_EQ(file.closed(), little16(1).add(little16(2)));
    }
}

TEST(SampleWriting, BadArgumentsAreTold) {
    Reports reports;
    WrittenFile file(setupOf(afWave, 1, 16));
    const int16_t sample = 1;
    EXPECT_EQ(AFwriteframes(nullptr, afDefaultTrack, &sample, 1), 0);
    EXPECT_EQ(AFwriteframes(file.handle.get(), afDefaultTrack, &sample, 0), 0);
    EXPECT_EQ(AFwriteframes(file.handle.get(), afDefaultTrack, &sample, -1), 0);
    EXPECT_EQ(reports.all(), "");
    EXPECT_EQ(AFwriteframes(file.handle.get(), 3, &sample, 1), 0);
    file->track().compression = afMac3;
    EXPECT_EQ(AFwriteframes(file.handle.get(), afDefaultTrack, &sample, 1), 0);
    EXPECT_EQ(reports.all(), "24 AFwriteframes: no track corresponding to id 3 in file " +
                                 file.file.name() +
                                 "\n47 AFwriteframes: bad compression type 506\n");
}

TEST(SampleWriting, AFileThatIsReadTakesNone) {
    const OpenedFile file(wave(waveFormat(1, 8).add(waveChunk("data", Bytes().u8(1)))));
    Reports reports;
    const char sample = 0;
    EXPECT_EQ(AFwriteframes(file.handle.get(), afDefaultTrack, &sample, 1), 0);
    EXPECT_EQ(reports.all(), "6 AFwriteframes: tried to write 1 bytes, write returned -1\n");
}

TEST(SampleWriting, AFullDiskIsTold) {
    if (!platform::fileExists("/dev/full")) GTEST_SKIP() << "no device that is full";
    Reports reports;
    const AFfilesetup setup = setupOf(afRaw, 1, 16);
    const Handle file(AFopenfile("/dev/full", "w", &setup));
    const int16_t sample = 1;
    EXPECT_EQ(AFwriteframes(file.get(), afDefaultTrack, &sample, 1), 0);
    EXPECT_EQ(reports.all(), "6 AFwriteframes: tried to write 2 bytes, write returned -1\n");
    const AFfilesetup aiff = setupOf(afAiff, 1, 16), wave = setupOf(afWave, 1, 16);
    EXPECT_EQ(AFopenfile("/dev/full", "w", &aiff), nullptr);
    EXPECT_EQ(AFopenfile("/dev/full", "w", &wave), nullptr);
    EXPECT_NE(reports.all().find(
                  "6 AFopenfile: AIFF FORM chunk: tried to write 12 bytes, write returned -1\n"
                  "6 AFopenfile: AIFF FORM chunk: tried to write 12 bytes, write returned -1\n"),
              std::string::npos);
}

}  // namespace
}  // namespace vistel::test
