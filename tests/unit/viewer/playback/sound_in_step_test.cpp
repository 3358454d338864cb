#include "viewer/playback/sound_in_step.h"

#include "audio/audio_files.h"
#include "platform/headless/headless.h"

namespace vistel::test {
namespace {

namespace headless = platform::headless;

// Ten frames, 1 to 10, at 10 frames a second of 1000 bytes a second: 100 bytes a picture. Byte i of
// the sound is 1 + i / 100, the number of its tenth of a second.
struct SoundInStepTest : testing::Test {
    SoundInStepTest() : file(soundFile()) {
        headless::resetWaves({.playsAtOnce = false});
        player.audioFile = file.name();
        player.soundOn = 1;
        player.playFirst = 1;
        player.playLast = 10;
        player.frameRate = 10;
        player.playMode = PlayMode::forward;
        openSound(player);
    }
    static Bytes soundFile() {
        Bytes samples;
        for (unsigned i = 0; i < 2000; ++i) samples.u8(1 + i / 100);
        Bytes format = little16(1).add(little16(1)).add(little32(1000)).add(little32(1000));
        format.add(little16(1)).add(little16(8));
        return wave(waveChunk("fmt ", format).add(waveChunk("data", samples)));
    }
    // Shows a frame and lets the device play as long as it is on screen. What was heard of it.
    std::vector<uint8_t> show(int frame) {
        player.currentFrame = frame;
        keepSoundInStep(player);
        player.wentBackward = false;
        const size_t before = headless::recordedWaves().heard.size();
        headless::playWaves(100);
        const auto heard = headless::recordedWaves().heard;
        return {heard.begin() + static_cast<std::ptrdiff_t>(before), heard.end()};
    }
    static std::vector<uint8_t> tenth(int number) {
        return std::vector<uint8_t>(100, static_cast<uint8_t>(number));
    }

    TemporaryFile file;
    Player player;
};

TEST_F(SoundInStepTest, EachPictureHasItsPartInEveryPass) {
    ASSERT_TRUE(player.soundLoaded);
    for (int pass = 0; pass < 3; ++pass)
        for (int frame = 1; frame <= 10; ++frame) EXPECT_EQ(show(frame), tenth(frame)) << pass;
}

TEST_F(SoundInStepTest, APictureThatComesLateHasItsPartStill) {
    for (int frame = 1; frame <= 4; ++frame) EXPECT_EQ(show(frame), tenth(frame));
    headless::playWaves(300);  // there is something in hand
    const auto heard = headless::recordedWaves().heard;
    EXPECT_EQ(heard.size(), 600u);
    EXPECT_EQ(heard.back(), 6);
}

TEST_F(SoundInStepTest, EndsAtOnceWithAPause) {
    for (int frame = 1; frame <= 3; ++frame) EXPECT_EQ(show(frame), tenth(frame));
    player.paused = 1;
    EXPECT_TRUE(show(3).empty());
    EXPECT_EQ(show(4).size(), 100u);  // of a picture that stays a short part
    EXPECT_TRUE(show(4).empty());
    player.paused = 0;
    EXPECT_EQ(show(5), tenth(5));
}

TEST_F(SoundInStepTest, EndsAtOnceWhereThePicturesTurn) {
    for (int frame = 1; frame <= 3; ++frame) EXPECT_EQ(show(frame), tenth(frame));
    for (int frame = 2; frame >= 1; --frame) {
        player.wentBackward = true;
        EXPECT_TRUE(show(frame).empty());
    }
    EXPECT_EQ(headless::recordedWaves().opened, 2);
    EXPECT_EQ(show(2), tenth(3));  // what the offset names, as after a jump
}

TEST_F(SoundInStepTest, PicturesThatAreSkippedLeaveItAsItIs) {
    player.frameSkip = 1;
    EXPECT_EQ(show(1), tenth(1));
    EXPECT_EQ(show(2), tenth(2));
    headless::playWaves(100);
    EXPECT_EQ(show(4), tenth(4));
    EXPECT_EQ(headless::recordedWaves().opened, 1);
    headless::playWaves(10000);
    EXPECT_EQ(show(9), tenth(10));  // too many: a jump
}

TEST_F(SoundInStepTest, APictureThatIsDrawnAgainHasNoFurtherPart) {
    show(1);
    const size_t heard = headless::recordedWaves().heard.size();
    headless::playWaves(10000);
    const size_t all = headless::recordedWaves().heard.size();
    for (int i = 0; i < 5; ++i) show(1);
    EXPECT_EQ(headless::recordedWaves().heard.size(), all);
    EXPECT_GE(all, heard);
}

TEST_F(SoundInStepTest, IsSilentBeforeItsOffset) {
    player.audioOffset = 4;
    for (int frame = 1; frame <= 3; ++frame) EXPECT_TRUE(show(frame).empty());
    EXPECT_EQ(show(4), tenth(1));
}

TEST_F(SoundInStepTest, FollowsPicturesThatJump) {
    show(1);
    headless::playWaves(10000);
    EXPECT_EQ(show(6), tenth(7));  // six tenths on
    headless::playWaves(10000);
    player.wentBackward = true;
    EXPECT_TRUE(show(5).empty());  // backward nothing is heard
    EXPECT_EQ(show(6), tenth(7));  // and it goes on with the pictures
    EXPECT_EQ(show(7), tenth(8));
    EXPECT_EQ(show(1), tenth(1));  // to the start
    EXPECT_EQ(show(2), tenth(2));
}

TEST_F(SoundInStepTest, ADeviceThatComesBackIsFoundInTheNextPass) {
    headless::setWaveFaults({.playsAtOnce = false, .blocksToTake = 0});
    EXPECT_TRUE(show(9).empty());
    headless::setWaveFaults({.absent = true});
    EXPECT_TRUE(show(1).empty());
    headless::setWaveFaults({.playsAtOnce = false});
    EXPECT_TRUE(show(2).empty());
    EXPECT_EQ(show(1), tenth(1));
    EXPECT_EQ(headless::recordedWaves().opened, 2);
}

TEST_F(SoundInStepTest, OneThatIsNotPlayedIsToldOnce) {
    const auto told = [&](const std::string& name) {
        player.audioFile = name;
        testing::internal::CaptureStderr();
        startSound(player);
        for (const int frame : {9, 10, 1, 2, 10, 1}) EXPECT_TRUE(show(frame).empty());
        return testing::internal::GetCapturedStderr();
    };
    const TemporaryFile noSound(Bytes("no sound at all, but text"));
    const TemporaryFile cut(wave(waveChunk("fmt ", little16(1))));
    EXPECT_EQ(told("no such.wav"), "no such.wav is not played: No such file or directory.\n");
    EXPECT_EQ(told(noSound.name()),
              noSound.name() + " is not played: no sound of a known type (AIFF, AIFF-C, WAVE).\n");
    EXPECT_TRUE(told(cut.name()).starts_with(cut.name() + " is not played: "));
    headless::setWaveFaults({.absent = true});
    EXPECT_EQ(told(file.name()),
              file.name() + " is not played: no sound device plays 1 channels at 1000 Hz.\n");
}

TEST_F(SoundInStepTest, ADeviceThatRefusesLateIsToldOnce) {
    testing::internal::CaptureStderr();
    startSound(player);
    EXPECT_TRUE(player.soundLoaded);
    tellOfSilence(player);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    headless::setWaveFaults({.blocksToTake = 0});
    testing::internal::CaptureStderr();
    tellOfSilence(player);  // while nothing plays
    EXPECT_FALSE(player.soundLoaded);
    for (const int frame : {1, 2, 9, 10, 1, 2}) EXPECT_TRUE(show(frame).empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              file.name() + " is not played: no sound device plays 1 channels at 1000 Hz.\n");
}

TEST_F(SoundInStepTest, WithoutSoundNothingHappens) {
    player.soundOn = 0;
    EXPECT_TRUE(show(1).empty());
    player.soundOn = 1;
    headless::setWaveFaults({.absent = true});
    openSound(player);
    EXPECT_FALSE(player.soundLoaded);
    EXPECT_TRUE(show(2).empty());
}

}  // namespace
}  // namespace vistel::test
