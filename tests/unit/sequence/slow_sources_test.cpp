// Commands and converters that take their time: whoever waits for them can leave at any moment.
#include <chrono>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "sequence/image_source.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

using Clock = std::chrono::steady_clock;

class SlowSources : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        setRange(1, 1, 1);
        state_.animation = 0;
        terms_.goOn = [this] { return ++asked_ <= patience_; };
        begin_ = Clock::now();
    }
    void TearDown() override {
        EXPECT_LT(Clock::now() - begin_, promptly);
        SequenceTest::TearDown();
    }
    Tstring commandThat(const char* task, int red = 5) {
        write("a.any", foreignFile(task, imageForm(red)));
        const std::string program = childProgram(ChildRole::convert);
        return "pipe:" + platform::quotedCommand(program, path("a.any"), "stdout");
    }
    // Opens and keeps what was printed.
    int open(const Tstring& name) {
        testing::internal::CaptureStderr();
        frame_ = FrameStore{};
        const int result = openImageSource(state_, name, terms_, false, frame_);
        errors_ = testing::internal::GetCapturedStderr();
        return result;
    }
    int asked_ = 0, patience_ = 500;
    std::string errors_;
    FrameStore frame_;
    Clock::time_point begin_;
};

TEST_F(SlowSources, ACommandThatStallsIsLeftWithoutAWord) {
    EXPECT_EQ(open(commandThat(convert::halfAndStall)), iffAborted);
    EXPECT_EQ(errors_, "");
    EXPECT_FALSE(frame_.hasPicture());
    EXPECT_EQ(asked_, patience_ + 1);
}

TEST_F(SlowSources, AConverterThatStallsIsLeftWithoutAWord) {
    (void)commandThat(convert::halfAndStall);
    converterProgram = [](SourceReader) {
        return std::optional<std::string>(childProgram(ChildRole::convert));
    };
    EXPECT_EQ(open("a.any"), iffAborted);
    EXPECT_EQ(errors_, "");
}

TEST_F(SlowSources, APictureOfACommandThatDoesNotEndIsShown) {
    patience_ = 20'000;
    EXPECT_EQ(open(commandThat(convert::andStay)), 0);
    EXPECT_TRUE(frame_.hasPicture());
    EXPECT_EQ(errors_, "");
}

// When many linger the user is asked whether to go on, and goes on.
TEST_F(SlowSources, AFrameOfACommandThatDoesNotEndIsRead) {
    state_.openedName = commandThat(convert::andStay);
    for (int frame = 1; frame <= 12; ++frame) {
        FrameStore store;
        asked_ = 0;
        terms_.goOn = [&] { return !store.hasPicture() || ++asked_ < patience_; };
        EXPECT_EQ(readFrame(state_, 1, terms_, store).code, iffOk);
        EXPECT_TRUE(store.hasPicture());
    }
}

TEST_F(SlowSources, AFrameOfACommandThatStallsIsAborted) {
    state_.openedName = commandThat(convert::halfAndStall);
    FrameStore store;
    EXPECT_EQ(readFrame(state_, 1, terms_, store).code, iffAborted);
    EXPECT_FALSE(store.hasPicture());
}

TEST_F(SlowSources, ACommandThatFailsBehindItsPictureHasBroughtIt) {
    patience_ = 20'000;
    EXPECT_EQ(open(commandThat(convert::andFail)), 0);
    EXPECT_TRUE(frame_.hasPicture());
}

TEST_F(SlowSources, ACommandThatWritesAnythingElseIsNoImage) {
    patience_ = 20'000;
    write("a.any", foreignFile(convert::well, "neither picture nor container, just words"));
    const std::string program = childProgram(ChildRole::convert);
    EXPECT_EQ(open("pipe:" + platform::quotedCommand(program, path("a.any"), "stdout")), iffNotIff);
    EXPECT_TRUE(contains(errors_, messageText(Message::rVTPipedCmd))) << errors_;
}

}  // namespace
}  // namespace vistel
