#include "audio/wave_reader.h"

#include "audio/audio_files.h"

namespace vistel::test {
namespace {

TEST(WaveReader, ReadsTheUsualFile) {
    const Bytes samples = little16(1).add(little16(0xFFFE)).add(little16(3)).add(little16(0x8000));
    const OpenedFile file(wave(waveFormat(2, 16).add(waveChunk("data", samples))));
    ASSERT_TRUE(file);
    int32_t version = 1;
    EXPECT_EQ(AFgetfilefmt(file.handle.get(), &version), afWave);
    EXPECT_EQ(version, 0);
    EXPECT_EQ(AFgetchannels(file.handle.get(), afDefaultTrack), 2);
    EXPECT_EQ(AFgetrate(file.handle.get(), afDefaultTrack), 44100.0);
    EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), 2);
    EXPECT_EQ(file.samples<int16_t>(), (std::vector<int16_t>{1, -2, 3, -32768}));
    EXPECT_TRUE(file->track().markers.empty());
}

TEST(WaveReader, EightBitSamplesAreUnsigned) {
    const OpenedFile file(wave(waveFormat(1, 8).add(waveChunk("data", Bytes().u8(0).u8(255)))));
    int32_t format = 0, width = 0;
    EXPECT_EQ(AFgetsampfmt(file.handle.get(), 0, &format, &width), 0);
    EXPECT_EQ(format, 403);
    EXPECT_EQ(file.samples<uint8_t>(), (std::vector<uint8_t>{0, 255}));
}

TEST(WaveReader, TwentyFourBitSamplesAreReadAsIfTheyWereBigEndian) {
    const Bytes samples = Bytes().u8(0x7F).u8(0xFF).u8(0xFE).u8(0xFF).u8(0xFF).u8(0xFF);
    const OpenedFile file(wave(waveFormat(1, 24).add(waveChunk("data", samples))));
    EXPECT_EQ(file.samples<int32_t>(), (std::vector<int32_t>{0x7FFFFE, -1}));
}

TEST(WaveReader, ThirtyTwoBitSamplesAreAsTheyAre) {
    const OpenedFile file(wave(waveFormat(1, 32).add(waveChunk("data", little32(0x80000001)))));
    EXPECT_EQ(file.samples<int32_t>(), std::vector<int32_t>{-2147483647});
}

TEST(WaveReader, WhatIsNoPcmIsRefusedWithoutWords) {
    EXPECT_EQ(refused(wave(waveFormat(1, 32, 3).add(waveChunk("data", {})))),
              "refused: 50 AFopenfile: \n");
    EXPECT_EQ(refused(wave(waveFormat(1, 24, 0xFFFE).add(waveChunk("data", {})))),
              "refused: 50 AFopenfile: \n");
}

TEST(WaveReader, NoPadByteIsSkippedBehindAnOddChunk) {
    const Bytes data = waveChunk("data", Bytes().u8(1));
    Bytes odd = waveChunk("LIST", "abc");
    // With the byte that the format wants, what follows is taken for other chunks and data is not
    // found.
    EXPECT_EQ(refused(wave(Bytes(odd).u8(0).add(waveFormat(1, 8)).add(data))), "refused: ");
    EXPECT_EQ(refused(wave(Bytes(odd).add(waveFormat(1, 8)).add(data))), "opened: ");
}

TEST(WaveReader, WhatIsMissingIsToldByCodeAndText) {
    const std::string no = "refused: ", op = " AFopenfile: ";
    const Bytes start = wave({});
    const auto with = [&](const Bytes& more) { return refused(Bytes(start).add(more)); };
    EXPECT_EQ(with({}), no);
    EXPECT_EQ(with(waveFormat(1, 16)), no);
    EXPECT_EQ(with(waveChunk("fmt ", 15, Bytes().fill(15))),
              no + "112" + op + "fmt chunk to small to be WAVE\n");
    EXPECT_EQ(with(waveChunk("fmt ", 0xFFFFFFFF, Bytes().fill(99))),
              no + "112" + op + "fmt chunk to small to be WAVE\n");
    EXPECT_EQ(with(waveChunk("fmt ", 0x7FFFFFFF, Bytes().u8(1).fill(99))),
              no + "112" + op + "failed to read 2147483647 bytes from fmt chunk data area\n");
    AFfilesetup setup;
    setup.format = afWave;
    EXPECT_EQ(refused("RIFF12", &setup),
              no + "108" + op + "failed to read FORM chunk header from WAVE file\n");
    EXPECT_EQ(refused("RIFX1234WAVE", &setup),
              no + "109" + op + "failed to find FORM chunk id in WAVE file\n");
    EXPECT_EQ(
        refused(Bytes("RIFF").add(little32(0x80000000)).add("AVI ").add(waveFormat(1, 8)), &setup),
        no + "109" + op + "AIFF FORM chunk: invalid data size -2147483648 \n" + "109" + op +
            "couldn't find AIFF identifier\n");
}

TEST(WaveReader, TheFormatMayStandBehindTheSamples) {
    const OpenedFile file(wave(waveChunk("data", Bytes().u8(7).u8(8)).add(waveFormat(1, 8))));
    ASSERT_TRUE(file);
    EXPECT_EQ(file.samples<uint8_t>(), (std::vector<uint8_t>{7, 8}));
}

TEST(WaveReader, ASizeThatAWriterLeftOpenReachesToTheEndOfTheFile) {
    for (const uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        const OpenedFile file(
            wave(waveFormat(1, 16).add(waveChunk("data", size, little16(9).add(little16(8))))));
        ASSERT_TRUE(file) << size;
        EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack), size / 2);
        EXPECT_EQ(file.samples<int16_t>(), (std::vector<int16_t>{9, 8}));
    }
}

TEST(WaveReader, ChunksPastTheEndEndTheWalk) {
    for (const uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF8u, 0xFFFFFFFFu})
        EXPECT_EQ(refused(wave(waveChunk("LIST", size, Bytes().fill(20)))), "refused: ");
}

TEST(WaveReader, NoNumberOfTheHeaderIsTrusted) {
    for (const unsigned channels : {0u, 1u, 0xFFFFu})
        for (const unsigned alignment : {0u, 1u, 0xFFFFu})
            for (const unsigned width : {0u, 1u, 8u, 24u, 33u, 64u, 0xFFFFu}) {
                Bytes format =
                    little16(1).add(little16(channels)).add(little32(0)).add(little32(0));
                format.add(little16(alignment)).add(little16(width));
                const Bytes data = waveChunk("data", 0xFFFFFFF0, Bytes().fill(100));
                const OpenedFile file(wave(waveChunk("fmt ", format).add(data)));
                ASSERT_TRUE(file);
                const int64_t frames = alignment == 0 ? 0 : 0xFFFFFFF0 / alignment;
                EXPECT_EQ(AFgetframecnt(file.handle.get(), afDefaultTrack),
                          channels > 0 ? frames : 0);
                EXPECT_EQ(AFgetrate(file.handle.get(), afDefaultTrack), 0.0);
                std::vector<uint8_t> buffer(4 * 0x10000);
                EXPECT_LE(AFreadframes(file.handle.get(), afDefaultTrack, buffer.data(), 1), 1);
            }
}

TEST(WaveReader, AMillionChunksAreWalked) {
    Bytes chunks;
    for (int i = 0; i < 1000000; ++i) chunks.add("TEST").u32(0);
    const Bytes data = waveChunk("data", Bytes().u8(1));
    const OpenedFile file(wave(chunks.add(waveFormat(1, 8)).add(data)));
    ASSERT_TRUE(file);
    EXPECT_EQ(file.samples<uint8_t>(), std::vector<uint8_t>{1});
}

TEST(WaveReader, TakesItsCuts) {
    cutEverywhere(wave(waveChunk("LIST", "abcd")
                           .add(waveFormat(2, 24))
                           .add(waveChunk("data", Bytes().fill(30, 3)))
                           .add(waveChunk("id3 ", "more"))));
}

TEST(WaveReader, AStreamThatCannotSeekIsTold) {
    AFfilesetup setup;
    setup.format = afWave;
    EXPECT_EQ(refusedFromPipe("RIFF1234WAVETEST123456", setup),
              "115 AFopenfd: lseek returned -1 when seeking to end of unsupported chunk\n"
              "111 AFopenfd: failed to parse chunk with id 0x54455354=TEST\n");
    EXPECT_EQ(refusedFromPipe("RIFF1234WAVEdata123456", setup),
              "110 AFopenfd: lseek returned -1 when parsing data chunk\n");
}

}  // namespace
}  // namespace vistel::test
