#include "audio/aiff_writer.h"

#include "audio/format_table.h"
#include "audio/written_file.h"

namespace vistel::test {
namespace {

// The header of an AIFF file of one channel: numbers little-endian, the rate big-endian.
Bytes writtenAiff(uint32_t formSize, uint32_t frames, unsigned width, uint32_t soundSize,
                  const Bytes& samples) {
    Bytes bytes = Bytes("FORM").add(little32(formSize)).add("AIFF");
    bytes.add("COMM").add(little32(18)).add(little16(1)).add(little32(frames));
    bytes.add(little16(width)).add(rate44100());
    bytes.add("SSND").add(little32(soundSize)).fill(8);
    return bytes.add(samples);
}

TEST(AiffWriter, SixteenBitFramesNeedNoPadByte) {
    WrittenFile file(setupOf(afAiff, 1, 16));
    EXPECT_EQ(file.write<int16_t>({1, -2, 0x1234}), 3);
    const Bytes samples = Bytes().u16(1).u16(0xFFFE).u16(0x1234);  // big-endian
    EXPECT_EQ(file.closed(), writtenAiff(4 + 26 + 8 + 14, 3, 16, 14, samples));
}

TEST(AiffWriter, TheSoundChunkCountsItsPadByte) {
    WrittenFile file(setupOf(afAiff, 1, 8));
    EXPECT_EQ(file.write<int8_t>({1, 2, -1}), 3);
    EXPECT_EQ(file.closed(),
              writtenAiff(4 + 26 + 8 + 12, 3, 8, 12, Bytes().u8(1).u8(2).u8(255).u8(0)));
}

TEST(AiffWriter, AiffCHasAStampAndANameOfItsCompression) {
    WrittenFile file(setupOf(afAiffC, 2, 16));
    EXPECT_EQ(file.write<int16_t>({1, 2}), 1);
    Bytes expected = Bytes("FORM").add(little32(4 + 12 + 46 + 8 + 12)).add("AIFC");
    expected.add("FVER").u8(4).u8(0).u8(0).u8(0).u8(0x40).u8(0x51).u8(0x80).u8(0xA2);
    expected.add("COMM").add(little32(38)).add(little16(2)).add(little32(1)).add(little16(16));
    expected.add(rate44100()).add("NONE").u8(14).add("not compressed").u8(0);
    expected.add("SSND").add(little32(12)).fill(8).u16(1).u16(2);
    EXPECT_EQ(file.closed(), expected);
}

// A new file gets these chunks only where its records hold them before the header is written.
TEST(AiffWriter, WritesWhatTheRecordsHold) {
    WrittenFile file(setupOf(afAiff, 1, 8));
    AFfilehandle& handle = *file.handle;
    AFtrack& track = handle.track();
    track.markers = {AFmarker{1, 0, "one", 0}, AFmarker{2, 0, "", 0}};
    handle.instruments.resize(1);
    handle.instruments[0].baseNote = 60;
    track.hasAes = true;
    track.aes[0] = 1;
    handle.miscCount = 1;
    handle.misc[0].type = afMiscName;
    handle.misc[0].size = 3;
    ASSERT_TRUE(platform::seekStream(handle.stream.get(), 0, SEEK_SET));
    ASSERT_TRUE(writeAiffHeader("AFopenfile", handle));
    // What is known by the end only.
    track.markers[0].position = 7;
    handle.instruments[0].loops[0] = {1, 1, 1, 2};
    handle.instruments[0].loops[1] = {2, 0, 2, 1};
    track.aes[0] = 2;
    handle.misc[0].data = Bytes("abc").data;
    EXPECT_EQ(file.write<int8_t>({9, 8}), 2);

    const uint32_t markBytes = 2 + 10 + 8;
    const uint32_t formSize = 4 + 26 + (8 + markBytes) + 28 + 32 + 12 + 8 + 10;
    Bytes expected = Bytes("FORM").add(little32(formSize)).add("AIFF");
    expected.add("COMM").add(little32(18)).add(little16(1)).add(little32(2)).add(little16(8));
    expected.add(rate44100());
    expected.add("MARK").add(little32(markBytes)).add(little16(2));
    expected.add(little16(1)).add(little32(7)).u8(3).add("one");
    expected.add(little16(2)).add(little32(0)).u8(0).u8(0);
    expected.add("INST").add(little32(20)).u8(60).fill(7);
    for (const unsigned value : {1, 1, 2, 0, 2, 1}) expected.add(little16(value));
    expected.add("AESD").add(little32(24)).u8(2).fill(23);
    expected.add("NAME").add(little32(3)).add("abc").u8(0);
    expected.add("SSND").add(little32(10)).fill(8).u8(9).u8(8);
    EXPECT_EQ(file.closed(), expected);
}

TEST(AiffWriter, TellsOfAChunkOfNoType) {
    WrittenFile file(setupOf(afAiff, 1, 8));
    file->miscCount = 1;
    file->misc[0].type = 207;
    Reports reports;
    EXPECT_FALSE(writeAiffHeader("AFopenfile", *file.handle));
    EXPECT_EQ(reports.all(), "6 AFopenfile: bad miscellaneous chunk type 207\n");
}

TEST(AiffWriter, TellsOfALoopThatIsNotThere) {
    WrittenFile file(setupOf(afAiff, 1, 8));
    file->instruments.resize(1);
    file->instruments[0].loops[0].id = 5;
    Reports reports;
    EXPECT_EQ(AFclosefile(file.handle.release()), -1);
    EXPECT_EQ(reports.all(), "21 AFclosefile: failed to find loopid for sustain\n");
}

}  // namespace
}  // namespace vistel::test
