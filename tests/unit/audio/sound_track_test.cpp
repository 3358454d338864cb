#include "audio/sound_track.h"

#include "audio/audio_files.h"

namespace vistel::test {
namespace {

// Frames 0, 1, 2 ... of 16 bits.
Bytes counted(unsigned frames, unsigned channels = 1) {
    Bytes samples;
    for (unsigned i = 0; i < frames; ++i)
        for (unsigned channel = 0; channel < channels; ++channel)
            samples.add(little16(i + 100 * channel));
    return wave(waveFormat(channels, 16).add(waveChunk("data", samples)));
}

std::vector<int16_t> readAt(SoundTrack& track, int64_t frames, double speed) {
    std::vector<int16_t> buffer(static_cast<size_t>(frames * track.channels()), 999);
    const int64_t got = track.read(buffer.data(), frames, speed);
    buffer.resize(static_cast<size_t>(got * track.channels()));
    return buffer;
}

TEST(SoundTrack, TellsWhatTheFileHolds) {
    const TemporaryFile file(wave(waveFormat(2, 24).add(waveChunk("data", Bytes().fill(12)))));
    const auto track = SoundTrack::open(file.name());
    ASSERT_TRUE(track);
    EXPECT_EQ(track->fileFormat(), afWave);
    EXPECT_EQ(track->sampleFormat(), afTwosComplement);
    EXPECT_EQ(track->channels(), 2);
    EXPECT_EQ(track->rate(), 44100);
    EXPECT_EQ(track->frames(), 2);
    EXPECT_EQ(track->sampleBytes(), 3);
    EXPECT_EQ(track->frameBytes(), 8);
}

TEST(SoundTrack, PlaysOneTwoAndFourChannelsOfUpTo24Bits) {
    Reports reports;
    for (unsigned channels = 0; channels <= 5; ++channels)
        for (const unsigned width : {0u, 1u, 8u, 9u, 16u, 17u, 24u, 25u, 32u}) {
            const TemporaryFile file(
                wave(waveFormat(channels, width).add(waveChunk("data", Bytes().fill(64)))));
            const auto track = SoundTrack::open(file.name());
            const bool channelsFit = channels == 1 || channels == 2 || channels == 4;
            EXPECT_EQ(track.has_value(), channelsFit && width >= 1 && width <= 24)
                << channels << " " << width;
            EXPECT_TRUE(!track || track->sampleBytes() == (width <= 8 ? 1 : width <= 16 ? 2 : 3));
        }
    EXPECT_EQ(reports.all(), "");
    EXPECT_FALSE(SoundTrack::open("no/such.wav"));
}

TEST(SoundTrack, ARateThatIsNoneIsNotPlayed) {
    for (const Bytes& rate :
         {Bytes().fill(10), Bytes().u16(0xC00E).u32(0xAC440000).u32(0), Bytes().u16(0x7FFF).fill(8),
          Bytes().u16(0x401E).u32(0x80000000).u32(0)}) {
        const Bytes common = Bytes().u16(1).u32(1).u16(8).add(rate);
        const TemporaryFile file(aiff(Bytes().chunk("COMM", common, 2).add(sound(Bytes().u8(1)))));
        EXPECT_FALSE(SoundTrack::open(file.name()));
    }
}

TEST(SoundTrack, ReadsAtEverySpeed) {
    struct Row {
        double speed;
        std::vector<int16_t> frames;
    };
    const Row rows[] = {
        {1, {0, 1, 2, 3, 4, 5}},    {1 + 1e-11, {0, 1, 2, 3, 4, 5}}, {2, {0, 2, 4, 6, 8, 10}},
        {1.5, {0, 1, 3, 4, 6, 7}},  {0.5, {0, 0, 1, 1, 2, 2}},       {0.75, {0, 0, 1, 2, 3, 3}},
        {0.01, {0, 0, 0, 0, 0, 0}},
    };
    for (const Row& row : rows) {
        const TemporaryFile file(counted(50));
        auto track = SoundTrack::open(file.name());
        EXPECT_EQ(readAt(*track, 6, row.speed), row.frames) << row.speed;
    }
}

TEST(SoundTrack, AllChannelsOfAFrameMoveTogether) {
    for (const unsigned channels : {1u, 2u, 4u}) {
        const TemporaryFile file(counted(20, channels));
        for (const double speed : {0.5, 2.0}) {
            auto track = SoundTrack::open(file.name());
            const auto frames = readAt(*track, 4, speed);
            for (size_t i = 0; i < 4; ++i)
                for (size_t channel = 0; channel < channels; ++channel)
                    EXPECT_EQ(frames[i * channels + channel],
                              static_cast<int>(static_cast<double>(i) * speed) +
                                  100 * static_cast<int>(channel));
        }
    }
}

TEST(SoundTrack, EndsWhereTheFileEnds) {
    struct Row {
        double speed;
        size_t frames;
    };
    for (const Row& row : {Row{1, 10}, Row{2, 5}, Row{3, 4}, Row{0.5, 20}, Row{0.7, 15}}) {
        const TemporaryFile file(counted(10));
        auto track = SoundTrack::open(file.name());
        std::vector<int16_t> all;
        for (;;) {
            const auto part = readAt(*track, 100, row.speed);
            if (part.empty()) break;
            all.insert(all.end(), part.begin(), part.end());
        }
        EXPECT_EQ(all.size(), row.frames) << row.speed;
        EXPECT_LE(all.back(), 9);
    }
}

TEST(SoundTrack, IsSilentBeforeItsStart) {
    const TemporaryFile file(counted(50));
    auto track = SoundTrack::open(file.name());
    track->setStart(4);
    EXPECT_EQ(readAt(*track, 3, 1), (std::vector<int16_t>{0, 0, 0}));
    EXPECT_EQ(track->position(), 3);
    EXPECT_EQ(readAt(*track, 3, 1), (std::vector<int16_t>{0, 0, 1}));
    track->seek(0);
    EXPECT_EQ(readAt(*track, 4, 2), (std::vector<int16_t>{0, 0, 0, 2}));
    track->seek(6);
    EXPECT_EQ(readAt(*track, 2, 1), (std::vector<int16_t>{2, 3}));
    // The silence of unsigned bytes is in their middle.
    const TemporaryFile bytes(wave(waveFormat(1, 8).add(waveChunk("data", Bytes().u8(7)))));
    auto quiet = SoundTrack::open(bytes.name());
    quiet->setStart(1);
    uint8_t two[2];
    EXPECT_EQ(quiet->read(two, 2, 1), 2);
    EXPECT_EQ(two[0], 128);
    EXPECT_EQ(two[1], 7);
}

}  // namespace
}  // namespace vistel::test
