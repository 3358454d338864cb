#include "audio/sound.h"

#include "audio/sound_fixture.h"

namespace vistel::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

TEST_F(SoundTest, PlaysTheWholeFile) {
    const Bytes bytes = counted(20000, 2);
    const TemporaryFile file(bytes);
    Sound sound;
    ASSERT_TRUE(sound.load(file.name()));
    EXPECT_TRUE(sound.isLoaded());
    EXPECT_FALSE(sound.isPlaying());
    sound.start();
    ASSERT_TRUE(becomes([&] { return !sound.isPlaying(); }));
    EXPECT_EQ(headless::recordedWaves().heard, soundOf(bytes));
    EXPECT_DOUBLE_EQ(sound.timePlayed(), 20000 / 44100.0);
    sound.unload();
    EXPECT_FALSE(sound.isLoaded());
    EXPECT_EQ(headless::recordedWaves().closed, 1);
}

TEST_F(SoundTest, TheDeviceIsGivenNoMoreThanItHolds) {
    headless::resetWaves({.playsAtOnce = false});
    const TemporaryFile file(counted(200000));
    Sound sound;
    ASSERT_TRUE(sound.load(file.name()));
    sound.start();
    EXPECT_EQ(headless::recordedWaves().blocks, 10);  // 0.1 of 0.15 seconds
    headless::playWaves(4 * 882);
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_EQ(headless::recordedWaves().blocks, 10);
    headless::playWaves(882);  // 0.05 seconds are left: there is room for a chunk
    EXPECT_TRUE(becomes([] { return headless::recordedWaves().blocks == 20; }));
    EXPECT_DOUBLE_EQ(sound.timePlayed(), 0.05);
    EXPECT_TRUE(sound.isPlaying());
    sound.stop();
    EXPECT_FALSE(sound.isPlaying());
    EXPECT_TRUE(sound.isLoaded());
}

TEST_F(SoundTest, GivesUpOnADeviceThatNeverPlays) {
    headless::resetWaves({.playsAtOnce = false});
    const TemporaryFile file(counted(200000));
    Sound sound;
    sound.play(file.name(), 1);
    const auto start = Clock::now();
    sound.unload();  // comes to an end
    EXPECT_GE(Clock::now() - start, milliseconds(250));  // its patience
}

TEST_F(SoundTest, GoesOnAfterBlocksThatCameLateOrWereLost) {
    headless::resetWaves({.playsAtOnce = false, .blocksToLose = 3});
    const Bytes bytes = counted(44100);
    const TemporaryFile file(bytes);
    Sound sound;
    sound.play(file.name(), 1);
    while (sound.isPlaying()) {  // in unequal steps, some late
        headless::playWaves(3000);
        std::this_thread::sleep_for(milliseconds(1));
        headless::playWaves(7);
    }
    headless::playWaves(SIZE_MAX);
    const auto whole = soundOf(bytes);
    EXPECT_EQ(
        headless::recordedWaves().heard,
        std::vector<uint8_t>(whole.begin() + 3 * 882, whole.end()));  // without the lost blocks
}

TEST_F(SoundTest, ADeviceThatVanishesEndsTheSoundAndTheNextLoadFindsItAgain) {
    headless::resetWaves({.blocksToTake = 2});
    const TemporaryFile file(counted(44100));
    Sound sound;
    sound.play(file.name(), 1);
    EXPECT_TRUE(becomes([&] { return !sound.isPlaying(); }));
    EXPECT_EQ(headless::recordedWaves().blocks, 2);
    headless::setWaveFaults({.absent = true});
    EXPECT_FALSE(sound.load(file.name()));
    EXPECT_FALSE(sound.isLoaded());
    sound.start();
    EXPECT_FALSE(sound.isPlaying());
    EXPECT_EQ(sound.timePlayed(), 0.0);
    headless::resetWaves({});
    sound.play(file.name(), 1);
    EXPECT_TRUE(becomes([&] { return !sound.isPlaying(); }));
    EXPECT_EQ(headless::recordedWaves().heard.size(), 88200u);
}

TEST_F(SoundTest, WhatIsNoSoundIsNotLoaded) {
    Reports reports;
    Sound sound;
    const TemporaryFile text(Bytes("no sound"));
    EXPECT_FALSE(sound.load(""));
    EXPECT_FALSE(sound.load("no/such.wav"));
    EXPECT_FALSE(sound.load(text.name()));
    EXPECT_EQ(headless::recordedWaves().opened, 0);
    sound.seek(5, 24);
    EXPECT_FALSE(sound.feed(24));
    sound.stop();
}

TEST_F(SoundTest, SpeedsAreKeptUnlessTheyAreNone) {
    const TemporaryFile file(counted(44100));
    Sound sound;
    sound.play(file.name(), 2);
    EXPECT_TRUE(becomes([&] { return !sound.isPlaying(); }));
    EXPECT_EQ(headless::recordedWaves().heard.size(), 44100u);
    EXPECT_DOUBLE_EQ(sound.timePlayed(), 1.0);  // of the recording
    for (const double none : {0.0, 1e-10, -1.0, 1e9, std::nan("")}) {
        headless::resetWaves({});
        sound.play(file.name(), none);
        EXPECT_TRUE(becomes([&] { return !sound.isPlaying(); }));
        EXPECT_EQ(headless::recordedWaves().heard.size(), 44100u) << none;
    }
    headless::resetWaves({});
    sound.play(file.name(), 0.5);
    EXPECT_TRUE(becomes([&] { return !sound.isPlaying(); }));
    EXPECT_EQ(headless::recordedWaves().heard.size(), 176400u);
}

TEST_F(SoundTest, FeedsOneChunkForEachPicture) {
    const Bytes bytes = counted(44100);
    const TemporaryFile file(bytes);
    Sound sound;
    ASSERT_TRUE(sound.load(file.name()));
    EXPECT_TRUE(sound.feed(24));
    EXPECT_EQ(headless::recordedWaves().heard.size(), 44100u / 24 * 2);
    EXPECT_TRUE(sound.feed(9));  // the usual chunk
    EXPECT_EQ(headless::recordedWaves().heard.size(), (44100u / 24 + 4410) * 2);
    sound.seek(12, 24);
    headless::resetWaves({});
    EXPECT_TRUE(sound.feed(25));
    const auto whole = soundOf(bytes);
    EXPECT_EQ(headless::recordedWaves().heard,
              std::vector<uint8_t>(whole.begin() + 44100, whole.begin() + 44100 + 1764 * 2));
    while (sound.feed(24)) {
    }
    EXPECT_FALSE(sound.feed(24));
    EXPECT_EQ(headless::recordedWaves().heard.size(), 44100u);
}

// A second of sound, heard as the test plays it.
struct PicturesTest : SoundTest {
    PicturesTest() : bytes(counted(44100)), file(bytes), whole(soundOf(bytes)) {
        headless::resetWaves({.playsAtOnce = false});
        EXPECT_TRUE(sound.load(file.name()));
    }
    std::vector<uint8_t> part(size_t from, size_t frames) const {
        const auto begin = whole.begin() + static_cast<std::ptrdiff_t>(from * 2);
        return {begin, begin + static_cast<std::ptrdiff_t>(frames * 2)};
    }
    // What is heard of so many frames, if there are so many.
    std::vector<uint8_t> newlyHeard(size_t frames = SIZE_MAX / 2) {
        headless::playWaves(frames * 2);
        const auto heard = headless::recordedWaves().heard;
        const auto begin = heard.begin() + static_cast<std::ptrdiff_t>(heardBefore);
        heardBefore = heard.size();
        return {begin, heard.end()};
    }

    Bytes bytes;
    TemporaryFile file;
    std::vector<uint8_t> whole;
    Sound sound;
    size_t heardBefore = 0;
};

constexpr size_t framesPart = 44100 / 25;  // of a picture's time

TEST_F(PicturesTest, HasMoreInHandThanThePartOfOne) {
    constexpr size_t parts = 8;  // until it is 0.3 seconds
    sound.feedPicture({.number = 0, .frameRate = 25, .goesOn = true});
    sound.feedPicture({.number = 0, .frameRate = 25, .goesOn = true});
    EXPECT_EQ(newlyHeard(framesPart), part(0, framesPart));
    for (int picture = 1; picture < 4; ++picture)  // each as soon as there is room for it
        sound.feedPicture({.number = picture, .frameRate = 25, .goesOn = true});
    EXPECT_EQ(newlyHeard(), part(framesPart, parts * framesPart));
}

TEST_F(PicturesTest, OneThatStaysHasAShortPart) {
    sound.feedPicture({.number = 2, .frameRate = 25});
    EXPECT_EQ(newlyHeard(), part(2 * framesPart, 3 * framesPart));  // at least 0.1 seconds
    sound.feedPicture({.number = 1, .frameRate = 5});
    EXPECT_EQ(newlyHeard(), part(8820, 4410));
}

TEST_F(PicturesTest, AnEmptyDeviceGoesOnWithThePicture) {
    sound.feedPicture({.number = 0, .frameRate = 25});
    newlyHeard();
    sound.feedPicture({.number = 1, .frameRate = 25});  // what was heard too early is heard again
    EXPECT_EQ(newlyHeard(), part(framesPart, 3 * framesPart));
    sound.feedPicture({.number = 1, .frameRate = 25, .late = 0.06});  // where it should be by now
    EXPECT_EQ(newlyHeard(), part(framesPart + 2646, 3 * framesPart));
}

TEST_F(PicturesTest, OutOfStepForAWhileItGoesOnWhereItShouldBe) {
    const auto show = [&](int picture) {
        sound.feedPicture({.number = picture, .frameRate = 25, .goesOn = true});
    };
    show(0);  // what it has goes from here to part 8
    headless::playWaves(framesPart * 2);
    show(3);
    headless::advanceMilliseconds(99);
    headless::playWaves(framesPart * 2);
    show(4);
    headless::advanceMilliseconds(1);
    headless::playWaves(framesPart * 2);
    show(5);  // two pictures ahead of what is heard
    newlyHeard(7 * framesPart);
    EXPECT_EQ(newlyHeard(), part(12 * framesPart, framesPart));
    headless::playWaves(SIZE_MAX);
    show(9);
    headless::playWaves(framesPart * 2);
    show(12);
    headless::advanceMilliseconds(100);
    show(10);  // in time again
    headless::playWaves(framesPart * 2);
    show(11);
    newlyHeard(7 * framesPart);
    EXPECT_EQ(newlyHeard(), part(18 * framesPart, framesPart));
}

TEST_F(PicturesTest, OfPicturesThatAreLeftOutTheSoundIsToo) {
    sound.feedPicture({.number = 0, .frameRate = 25, .goesOn = true, .step = 2});
    headless::playWaves(framesPart * 2);
    sound.feedPicture({.number = 2, .frameRate = 25, .goesOn = true, .step = 2});
    headless::advanceMilliseconds(100);
    headless::playWaves(framesPart * 2);
    sound.feedPicture({.number = 4, .frameRate = 25, .goesOn = true, .step = 2});
    newlyHeard(7 * framesPart);
    // What was to be heard at once is now heard after seven parts: there the pictures are 14 on.
    EXPECT_EQ(newlyHeard(), part(18 * framesPart, framesPart));
}

TEST_F(SoundTest, TimeNeverGoesBack) {
    headless::resetWaves({.playsAtOnce = false});
    const TemporaryFile file(counted(4 * 44100));
    Sound sound;
    sound.play(file.name(), 1);
    double before = 0;
    std::thread device([&] {
        while (sound.isPlaying()) headless::playWaves(882);
    });
    while (sound.isPlaying()) {
        const double now = sound.timePlayed();
        EXPECT_GE(now, before);
        before = now;
    }
    device.join();
    EXPECT_GE(sound.timePlayed(), before);
}

TEST_F(SoundTest, SeeksWhileItPlays) {
    headless::resetWaves({.playsAtOnce = false});
    const Bytes bytes = counted(441000);
    const TemporaryFile file(bytes);
    Sound sound;
    sound.play(file.name(), 1);
    sound.seek(96, 24);  // four seconds on
    headless::playWaves(8820);
    ASSERT_TRUE(becomes([] { return headless::recordedWaves().blocks == 20; }));
    headless::playWaves(8820);
    const auto heard = headless::recordedWaves().heard;
    const auto whole = soundOf(bytes);
    ASSERT_EQ(heard.size(), 17640u);
    EXPECT_TRUE(std::equal(heard.begin() + 8820, heard.end(), whole.begin() + 4 * 88200));
    sound.unload();
}

// --- levels -------------------------------------------------------------------------------------

TEST_F(SoundTest, LevelsAreThoseOfTheMixerOnly) {
    Sound sound;
    SoundSetting settings[] = {{4, 0}, {7, 0}, {5, 99}, {-1, 99}};
    EXPECT_TRUE(sound.read(settings));
    EXPECT_EQ(settings[0].value, 6);
    EXPECT_EQ(settings[1].value, 22050);
    EXPECT_EQ(settings[2].value, 0);
    EXPECT_EQ(settings[3].value, 0);
    for (int32_t parameter = 0; parameter <= 3; ++parameter) {
        SoundSetting one[] = {{parameter, 0}};
        EXPECT_FALSE(sound.read(one));
    }
    const TemporaryFile file(counted(10));
    ASSERT_TRUE(sound.load(file.name()));
    EXPECT_TRUE(sound.read(settings));
    EXPECT_EQ(settings[1].value, 44100);
}

TEST_F(SoundTest, LevelsHaveAScaleTo255) {
    platform::setEnvironmentVariable("TAVO_USE_DIRECTSOUND", "1");
    headless::resetWaves({.noRing = false});
    const TemporaryFile file(counted(10));
    Sound sound;
    ASSERT_TRUE(sound.load(file.name()));
    const SoundSetting wanted[] = {{0, 128}, {2, 255}, {7, 8000}, {9, 1}};
    sound.write(wanted);
    EXPECT_EQ(headless::recordedWaves().pan, 5020);  // 128 x 10000 / 255, rounded
    EXPECT_EQ(headless::recordedWaves().volume, 0);
    EXPECT_EQ(sound.deviceRate(), 8000);
    SoundSetting read[] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    EXPECT_TRUE(sound.read(read));
    EXPECT_EQ(read[0].value, 128);
    EXPECT_EQ(read[1].value, 0);
    EXPECT_EQ(read[2].value, 127);  // less the pan
    EXPECT_EQ(read[3].value, 255);
    const SoundSetting left[] = {{1, 255}, {3, 100}};
    sound.write(left);
    EXPECT_EQ(headless::recordedWaves().pan, -10000);
    EXPECT_EQ(headless::recordedWaves().volume, 3922 - 10000);
    EXPECT_TRUE(sound.read(read));
    EXPECT_EQ(read[0].value, 0);
    EXPECT_EQ(read[1].value, 255);
    EXPECT_EQ(read[2].value, 100);
    EXPECT_EQ(read[3].value, -155);  // 3922 less 10000
}

}  // namespace
}  // namespace vistel::test
