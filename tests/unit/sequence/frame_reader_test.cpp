#include "sequence/frame_reader.h"

#include "source_fixture.h"

namespace vistel {
namespace {

using FrameReader = SourceTest;

TEST_F(FrameReader, TheFramesOfAnAnimationAreReadInAnyOrder) {
    for (int i = 1; i <= 3; ++i) write("shot." + std::to_string(i), imageForm(10 + i));
    setRange(1, 3, 1);
    EXPECT_EQ(open("shot"), 0);
    EXPECT_EQ(red(), 11);
    EXPECT_EQ(readAgain({2, 3, 1}), (Results{{0, 12}, {0, 13}, {0, 11}}));
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(state_.currentFrame, 1);
    EXPECT_FALSE(state_.oneFileStream);
}

TEST_F(FrameReader, AMissingFrameInTheMiddleIsToldByItsNameAndReason) {
    write("shot.1", imageForm(11));
    write("shot.3", imageForm(13).substr(0, 80));
    write("shot.4", imageForm(14));
    setRange(1, 4, 1);
    EXPECT_EQ(open("shot"), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(readAgain({2}), (Results{{iffNotIff, -1}}));
    EXPECT_EQ(last_.name, "shot.2");
    EXPECT_NE(last_.reason, "");

    EXPECT_LT(readAgain({3}).back().first, 0);
    EXPECT_EQ(last_.name, "shot.3");
    EXPECT_EQ(last_.reason, errorText(last_.code));

    EXPECT_EQ(readAgain({4}), (Results{{0, 14}}));
    EXPECT_EQ(last_.name, "shot.4");
    EXPECT_EQ(last_.reason, "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(FrameReader, AFrameThatIsNotThereLeavesTheOneBefore) {
    write("shot.1", imageForm(11));
    write("shot.3", "no frame at all, just words");
    setRange(1, 3, 1);
    EXPECT_EQ(open("shot"), 0);
    converterProgram = [](SourceReader) { return std::optional<std::string>(); };
    for (const int number : {2, 3}) {
        EXPECT_EQ(readFrame(state_, number, terms_, frame_).code, iffNotIff);
        EXPECT_EQ(red(), 11) << number;
    }
}

TEST_F(FrameReader, OneFileHoldsAllFrames) {
    write("all.iff", imageForm(11) + imageForm(12) + imageForm(13));
    setRange(1, 4, 1);
    state_.oneFile = 1;
    EXPECT_EQ(open("all.iff"), 0);
    EXPECT_EQ(red(), 11);
    EXPECT_EQ(readAgain({2, 3, 1, 4, 0}),
              (Results{{0, 12}, {0, 13}, {0, 11}, {iffNotIff, -1}, {iffNotIff, -1}}));
    EXPECT_EQ(readAgain({2}), (Results{{0, 12}}));
    EXPECT_TRUE(state_.oneFileStream);
}

TEST_F(FrameReader, AOneFileThatIsOpenIsReadThoughItsNameHasGone) {
    write("all.iff", imageForm(11) + imageForm(12));
    setRange(1, 2, 1);
    state_.oneFile = 1;
    EXPECT_EQ(open("all.iff"), 0);
    state_.openedName = "gone.iff";
    EXPECT_EQ(readAgain({2, 1}), (Results{{0, 12}, {0, 11}}));
    state_.oneFileStream = {};
    EXPECT_EQ(readAgain({2}), (Results{{iffNotIff, -1}}));
}

TEST_F(FrameReader, ACommandRunsOncePerFrameWithItsNumber) {
    for (int i = 1; i <= 3; ++i) write("shot." + std::to_string(i), imageForm(20 + i));
    const std::string program = childProgram(ChildRole::printFrameFile);
    setRange(1, 4, 1);
    EXPECT_EQ(open("pipe:" + platform::quotedCommand(program, path("shot"), "stdout")), 0);
    EXPECT_EQ(red(), 21);
    EXPECT_EQ(readAgain({2, 3, 4}), (Results{{0, 22}, {0, 23}, {iffNotIff, -1}}));
}

TEST_F(FrameReader, FramesAreReadAsTheTermsSay) {
    write("shot.1", imageForm(11));
    setRange(1, 1, 1);
    state_.openedName = "shot";
    terms_.fit.shrink = 2;
    ASSERT_EQ(readFrame(state_, 1, terms_, frame_).code, iffOk);
    EXPECT_EQ(frame_.width, 2);
    terms_.goOn = [] { return false; };
    EXPECT_EQ(readAgain({1}), (Results{{iffAborted, -1}}));
}

TEST(LoadRequest, IsAFullPassAsTheOptionsSay) {
    const ImageLoadRequest usual = loadRequest(LoadOptions{}, {}, stdin);
    EXPECT_EQ(usual.stream, stdin);
    EXPECT_EQ(usual.wantedForm, 0);
    EXPECT_TRUE(usual.loadPixels && usual.loadZ);
    EXPECT_FALSE(usual.verbose || usual.showAll || usual.waitForWriter);
    EXPECT_FALSE(usual.goOn || usual.formRead);

    LoadOptions options;
    options.verbose = options.showAll = options.synchro = 1;
    options.inter = options.loadZ = 0;
    options.maxLevel = 3;
    const DisplayFit fit{.shrink = 2, .magnify = 3, .maxWidth = 40, .maxHeight = 50};
    const ImageLoadRequest request = loadRequest(options, fit, nullptr);
    EXPECT_TRUE(request.verbose && request.showAll && request.waitForWriter);
    EXPECT_FALSE(request.loadPixels || request.loadZ);
    EXPECT_EQ(request.maxLevel, 3u);
    EXPECT_EQ(request.fit, fit);
}

TEST_F(FrameReader, OnlyAsManyFramesAreWantedAsThereIsRoomFor) {
    setRange(1, 9, 1);
    state_.openedName = "shot";
    for (int i = 1; i <= 9; ++i) {
        write("shot." + std::to_string(i), imageForm(10 + i));
        const fs::path file = folder_ / ("shot." + std::to_string(i));
        fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
    }
    ReadAhead ahead(1, state_.converted);
    terms_.ahead = &ahead;
    wantFrames(state_, {{1, 2, 3, 4, 5, 6, 7, 8, 9}}, terms_.fit, ahead);
    const int room = int(ahead.room());
    ASSERT_EQ(room, 3);
    for (int number = 1; number <= 9; ++number) {
        EXPECT_EQ(readAgain({number}), (Results{{0, 10 + number}}));
        EXPECT_EQ(ahead.taken(), size_t(std::min(number, room))) << number;
    }
}

}  // namespace
}  // namespace vistel
