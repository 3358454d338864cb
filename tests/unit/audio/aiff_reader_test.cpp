#include "audio/aiff_reader.h"

#include "audio/audio_files.h"

namespace vistel::test {
namespace {

TEST(AiffReader, ReadsBigEndianSamplesOfTheUsualFile) {
    const OpenedFile file(
        aiff(common(2, 2, 16).add(sound(Bytes().u16(1).u16(0xFFFE).u16(0x7FFF).u16(0x8000)))));
    ASSERT_TRUE(file);
    EXPECT_EQ(AFgetfilefmt(file.handle.get(), nullptr), afAiff);
    EXPECT_EQ(AFgetchannels(file.handle.get(), afDefaultTrack), 2);
    EXPECT_EQ(AFgetrate(file.handle.get(), afDefaultTrack), 44100.0);
    EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), 2);
    EXPECT_EQ(file.samples<int16_t>(), (std::vector<int16_t>{1, -2, 32767, -32768}));
}

TEST(AiffReader, EightBitSamplesAreSigned) {
    const OpenedFile file(aiff(common(1, 3, 8).add(sound(Bytes().u8(0).u8(127).u8(128)))));
    int32_t format = 0, width = 0;
    EXPECT_EQ(AFgetsampfmt(file.handle.get(), 0, &format, &width), 0);
    EXPECT_EQ(format, 401);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(file.samples<int8_t>(), (std::vector<int8_t>{0, 127, -128}));
}

TEST(AiffReader, TakesTheStampAndTheNameOfAiffC) {
    const Bytes stamp = Bytes().chunk("FVER", Bytes().u32(0xA2805140));
    Bytes name = Bytes().u8(14).add("not compressed").u8(0);
    const OpenedFile file(
        aiffC(Bytes(stamp).add(commonOfAiffC(1, 1, 16, "NONE", name)).add(sound(Bytes().u16(5)))));
    ASSERT_TRUE(file);
    int32_t version = 0;
    EXPECT_EQ(AFgetfilefmt(file.handle.get(), &version), afAiffC);
    EXPECT_EQ(static_cast<uint32_t>(version), 0xA2805140u);
    EXPECT_EQ(file->track().compressionName, "not compressed");
    EXPECT_EQ(file.samples<int16_t>(), std::vector<int16_t>{5});
    // In plain AIFF the stamp is no more than a chunk to skip.
    const OpenedFile plain(aiff(Bytes(stamp).add(common(1, 0, 16)).add(sound({}))));
    AFgetfilefmt(plain.handle.get(), &version);
    EXPECT_EQ(version, 0);
}

TEST(AiffReader, ACompressionThatIsKnownIsRecognisedAndRefused) {
    const Bytes empty = Bytes().u8(0).u8(0);
    const struct {
        const char* type;
        const char* id;
    } rows[] = {{"ACE2", "504"}, {"ACE8", "505"}, {"MAC3", "506"}, {"MAC6", "507"}};
    for (const auto& row : rows)
        EXPECT_EQ(refused(aiffC(commonOfAiffC(1, 1, 16, row.type, empty).add(sound({})))),
                  std::string("refused: 47 AFopenfile: unknown compression id ") + row.id + "\n");
    Reports reports;
    const OpenedFile file(aiffC(commonOfAiffC(1, 1, 16, "s\x01wt", empty).add(sound({}))));
    EXPECT_FALSE(file);
    EXPECT_EQ(reports.all(), "112 AFopenfile: unrecognized compression type s.wt for file " +
                                 file.file.name() + "\n47 AFopenfile: unknown compression id -1\n");
}

TEST(AiffReader, OddChunksAreFollowedByAPadByte) {
    const Bytes odd = Bytes().chunk("TEST", "abc", 2).chunk("NAME", "x", 2);
    const OpenedFile file(aiff(Bytes(odd).add(common(1, 1, 8)).add(sound(Bytes().u8(7))).add(odd)));
    ASSERT_TRUE(file);
    EXPECT_EQ(file.samples<int8_t>(), std::vector<int8_t>{7});
    EXPECT_EQ(file->miscCount, 2);
}

TEST(AiffReader, KeepsMiscellaneousChunksInTheirSlots) {
    Bytes chunks = common(1, 0, 16).chunk("(c) ", "owner", 2).chunk("MIDI", Bytes().u8(0xF0), 2);
    const OpenedFile few(aiff(chunks));
    ASSERT_TRUE(few);
    ASSERT_EQ(few->misc.size(), 10u);
    EXPECT_EQ(few->misc[9].id, 10);
    EXPECT_EQ(few->misc[0].type, 201);
    EXPECT_EQ(few->misc[0].size, 5u);
    EXPECT_EQ(few->misc[0].data, Bytes("owner").data);
    EXPECT_EQ(few->misc[0].sizePosition, 12 + 26 + 4);
    EXPECT_EQ(few->misc[0].dataPosition, 12 + 26 + 8);
    EXPECT_EQ(few->misc[1].type, 206);
    for (int i = 0; i < 10; ++i) chunks.chunk("ANNO", "x", 2);
    const OpenedFile many(aiff(chunks));
    EXPECT_EQ(many->miscCount, 12);
    EXPECT_EQ(many->misc[11].id, 12);
    EXPECT_EQ(many->misc[11].type, 204);
}

TEST(AiffReader, ReadsMarkersInstrumentAndChannelStatus) {
    Bytes marks = Bytes().u16(2).u16(1).u32(100).u8(3).add("one").u16(2).u32(0xFFFFFFFF).u8(2);
    marks.add("tw").u8(0);
    Bytes instrument = Bytes().u8(60).u8(0xFF).u8(1).u8(127).u8(2).u8(126).u16(0xFFFA);
    instrument.u16(1).u16(1).u16(2).u16(0).u16(3).u16(4);
    const OpenedFile file(aiff(common(1, 0, 16)
                                   .chunk("MARK", marks, 2)
                                   .chunk("INST", instrument, 2)
                                   .chunk("AESD", Bytes().fill(24, 9), 2)));
    ASSERT_TRUE(file);
    const AFtrack& track = file->track();
    ASSERT_EQ(track.markers.size(), 2u);
    EXPECT_EQ(track.markers[0].id, 1);
    EXPECT_EQ(track.markers[0].position, 100u);
    EXPECT_EQ(track.markers[0].name, "one");
    EXPECT_EQ(track.markers[1].position, 0xFFFFFFFFu);
    EXPECT_EQ(track.markers[1].name, "tw");
    ASSERT_EQ(file->instruments.size(), 1u);
    const AFinstrument& found = file->instruments[0];
    EXPECT_EQ(found.baseNote, 60);
    EXPECT_EQ(found.detune, -1);
    EXPECT_EQ(found.highVelocity, 126);
    EXPECT_EQ(found.gain, -6);
    EXPECT_EQ(found.loops[0].playMode, 1);
    EXPECT_EQ(found.loops[0].endMarker, 2);
    EXPECT_EQ(found.loops[1].beginMarker, 3);
    EXPECT_TRUE(track.hasAes);
    EXPECT_EQ(track.aes[23], 9);
}

TEST(AiffReader, MarkersThatTheirChunkDoesNotHoldDoNotCount) {
    const Bytes marks = Bytes().u16(65535).u16(1).u32(5).u8(1).add("a").u16(2).u32(6).u8(200);
    const OpenedFile file(aiff(common(1, 0, 16).chunk("MARK", marks, 2)));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->track().markers.size(), 1u);
}

TEST(AiffReader, WhatIsMissingIsToldByCodeAndText) {
    const std::string no = "refused: ", op = " AFopenfile: ";
    const Bytes start = aiff({});
    const auto with = [&](const Bytes& more) { return refused(Bytes(start).add(more)); };
    EXPECT_EQ(with("COM"),
              no + "108" + op + "failed to read complete chunk header from AIFF file\n");
    EXPECT_EQ(with(Bytes().header("COMM", 18).fill(17)),
              no + "112" + op + "failed to read 18 bytes from COMM chunk data area\n");
    EXPECT_EQ(with(Bytes().header("INST", 20).fill(19)),
              no + "112" + op + "failed to read 20 bytes from INST chunk data area\n");
    EXPECT_EQ(with(Bytes().header("AESD", 24).fill(23)),
              no + "112" + op + "failed to read 24 bytes from AESD chunk data area\n");
    EXPECT_EQ(with(Bytes().header("MARK", 0xFFFFFFF0).u16(2)),
              no + "112" + op + "failed to read -18 bytes from MARK chunk data area\n");
    EXPECT_EQ(with(Bytes().header("NAME", 0x7FFFFFFF).add("short")),
              no + "5" + op + "failed to read 2147483647 bytes of NAME chunk data (misc[0])\n");
    EXPECT_EQ(with(Bytes().header("SSND", 16).fill(5)),
              "opened: 110" + op + "failed to read 8 bytes from SSND chunk data area\n");
    const Bytes compressed = aiffC({});
    const auto withC = [&](const Bytes& more) { return refused(Bytes(compressed).add(more)); };
    EXPECT_EQ(withC(Bytes().header("COMM", 22).fill(21)),
              no + "112" + op + "failed to read 22 bytes from COMM chunk data area\n");
    const Bytes none = Bytes().header("COMM", 24).fill(18).add("NONE");
    EXPECT_EQ(withC(none),
              no + "112" + op + "failed to read pstring length from COMM chunk data area\n");
    EXPECT_EQ(withC(Bytes(none).u8(4).add("ab")),
              no + "112" + op + "failed to read 5 bytes, pstring COMM chunk data (len=4)\n");
    EXPECT_EQ(withC(Bytes().header("FVER", 4).u16(1)),
              no + "112" + op + "failed to read 4 bytes from FVER chunk data area\n");
}

TEST(AiffReader, WhatASetupPromisesMayNotBeThere) {
    AFfilesetup setup;
    EXPECT_EQ(refused("FORM12", &setup),
              "refused: 108 AFopenfile: failed to read FORM chunk header from AIFF file\n");
    EXPECT_EQ(refused("LIST1234AIFF", &setup),
              "refused: 109 AFopenfile: failed to find FORM chunk id in AIFF file\n");
    EXPECT_EQ(refused(Bytes().header("FORM", 0x80000001).add("8SVX"), &setup),
              "opened: 109 AFopenfile: AIFF FORM chunk: invalid data size -2147483647 \n"
              "109 AFopenfile: couldn't find AIFF identifier\n");
    EXPECT_EQ(refused("FORM1234AI", &setup),
              "opened: 109 AFopenfile: couldn't find AIFF identifier\n");
}

TEST(AiffReader, AFileWithoutSoundOpensEmpty) {
    const OpenedFile file(aiff({}));
    ASSERT_TRUE(file);
    EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), 0);
    EXPECT_EQ(file->track().width, 16);
}

// Sizes up to the greatest are places behind the end: the walk only ever goes forward.
TEST(AiffReader, ChunksPastTheEndEndTheWalk) {
    for (const uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
        for (const char* id : {"TEST", "COMT", "SAXL", "SSND", "FVER", "COMM"}) {
            Bytes bytes = aiff({});
            bytes.header(id, size).add(Bytes().u16(1).u32(100).u16(8).add(rate44100()).fill(40));
            const OpenedFile file(bytes);
            ASSERT_TRUE(file) << id << size;
        }
    }
}

TEST(AiffReader, SamplesOfAFileThatWasCutAreThoseThatAreThere) {
    const Bytes whole = aiff(common(1, 1000000, 16).add(sound(Bytes().u16(1).u16(2).u16(3))));
    const OpenedFile file(whole.cut(whole.size() - 1));
    ASSERT_TRUE(file);
    EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), 1000000);
    EXPECT_EQ(file.samples<int16_t>(), (std::vector<int16_t>{1, 2}));
}

TEST(AiffReader, NoNumberOfTheHeaderIsTrusted) {
    const Reports reports;
    for (const unsigned channels : {0u, 1u, 0x7FFFu, 0x8000u, 0xFFFFu})
        for (const uint32_t frames : {0u, 1u, 0x80000000u, 0xFFFFFFFFu})
            for (const unsigned width : {0u, 1u, 12u, 24u, 33u, 0x7FFFu, 0x8000u, 0xFFFFu}) {
                const OpenedFile file(
                    aiff(common(channels, frames, width).add(sound(Bytes().fill(64)))));
                ASSERT_TRUE(file);
                const auto signedChannels = static_cast<int16_t>(channels);
                EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack),
                          signedChannels > 0 ? frames : int64_t{frames} * signedChannels);
                std::vector<uint8_t> buffer(200);
                const int64_t got = AFreadframes(file.handle.get(), afDefaultTrack, buffer.data(),
                                                 signedChannels > 32 ? 0 : 20);
                EXPECT_LE(got, std::min<int64_t>(20, frames));
                EXPECT_GE(got, 0);
                EXPECT_EQ(AFseekframe(file.handle.get(), afDefaultTrack, 1), 0);
            }
}

TEST(AiffReader, AMillionChunksAreWalked) {
    Bytes chunks;
    for (int i = 0; i < 500000; ++i) chunks.header("TEST", 0).header("ANNO", 0);
    const OpenedFile file(aiff(chunks.add(common(1, 1, 8)).add(sound(Bytes().u8(1)))));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->miscCount, 500000);
    EXPECT_EQ(file.samples<int8_t>(), std::vector<int8_t>{1});
}

TEST(AiffReader, TakesItsCuts) {
    const Bytes marks = Bytes().u16(1).u16(1).u32(5).u8(1).add("a");
    const Bytes name = Bytes().u8(2).add("no").u8(0);
    Bytes chunks = Bytes().chunk("FVER", Bytes().u32(1)).chunk("MARK", marks, 2);
    chunks.chunk("INST", Bytes().fill(20), 2).chunk("AESD", Bytes().fill(24), 2);
    chunks.chunk("NAME", "name", 2).chunk("WHAT", "???", 2);
    cutEverywhere(aiff(Bytes(chunks).add(common(2, 5, 24)).add(sound(Bytes().fill(30, 3)))));
    cutEverywhere(aiffC(
        Bytes(chunks).add(commonOfAiffC(1, 9, 16, "NONE", name)).add(sound(Bytes().fill(18, 3)))));
}

TEST(AiffReader, AStreamThatCannotSeekIsTold) {
    AFfilesetup setup;
    const std::string noPlace = "109 AFopenfd: seek returned -1 when parsing FORM chunk\n";
    EXPECT_EQ(refusedFromPipe("FORM1234AIFFTEST123456", setup),
              noPlace +
                  "115 AFopenfd: lseek returned -1 when seeking to end of unsupported chunk\n"
                  "111 AFopenfd: failed to parse chunk with id 0x54455354=TEST\n");
    EXPECT_EQ(
        refusedFromPipe("FORM1234AIFFCOMT123456", setup),
        noPlace + "115 AFopenfd: lseek returned -1 when seeking to end of unsupported chunk\n");
    EXPECT_EQ(refusedFromPipe("FORM1234AIFFSSND1234567890123456", setup),
              noPlace + "110 AFopenfd: lseek returned -1 when parsing SSND chunk\n");
}

}  // namespace
}  // namespace vistel::test
