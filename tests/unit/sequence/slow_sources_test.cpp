// Commands and converters that take their time: whoever waits for them can leave at any moment.
#include <chrono>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "sequence/image_source.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

// Far less than what the commands take that do not end.
constexpr seconds promptly{15};

int framesShown, asked, patience;

int frameLoaded(FrameStore&) {
    ++framesShown;
    return iffParsingComplete;
}

bool keepGoing() { return ++asked <= patience; }

class SlowSources : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        framesShown = asked = 0;
        patience = 500;
        loaderHooks.frameLoaded = frameLoaded;
        loaderHooks.keepGoing = keepGoing;
        viewerState.currentFrame = viewerState.firstFrame = viewerState.lastFrame = 1;
        viewerState.frameStep = 1;
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
        const int result = openImageSource(name);
        errors_ = testing::internal::GetCapturedStderr();
        return result;
    }
    std::string errors_;
    Clock::time_point begin_;
};

TEST_F(SlowSources, ACommandThatStallsIsLeftWithoutAWord) {
    EXPECT_EQ(open(commandThat(convert::halfAndStall)), iffAborted);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(framesShown, 0);
    EXPECT_EQ(asked, patience + 1);
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
    patience = 20'000;
    EXPECT_EQ(open(commandThat(convert::andStay)), 0);
    EXPECT_EQ(framesShown, 1);
    EXPECT_EQ(errors_, "");
}

// When many linger the user is asked whether to go on, and goes on.
TEST_F(SlowSources, AFrameOfACommandThatDoesNotEndIsRead) {
    setCurrentSource(commandThat(convert::andStay));
    for (int frame = 1; frame <= 12; ++frame) {
        asked = 0;
        patience = 3000;
        loaderHooks.keepGoing = frame < 9 ? keepGoing : [] { return keepGoing() && asked < 500; };
        FrameStore store;
        EXPECT_EQ(readFrameAgain(store), iffOk);
        EXPECT_TRUE(store.hasPicture());
    }
}

TEST_F(SlowSources, AFrameOfACommandThatStallsIsAborted) {
    setCurrentSource(commandThat(convert::halfAndStall));
    FrameStore store;
    EXPECT_EQ(readFrameAgain(store), iffAborted);
    EXPECT_FALSE(store.hasPicture());
}

TEST_F(SlowSources, ACommandThatFailsBehindItsPictureHasBroughtIt) {
    patience = 20'000;
    EXPECT_EQ(open(commandThat(convert::andFail)), 0);
    EXPECT_EQ(framesShown, 1);
}

TEST_F(SlowSources, ACommandThatWritesAnythingElseIsNoImage) {
    patience = 20'000;
    write("a.any", foreignFile(convert::well, "neither picture nor container, just words"));
    const std::string program = childProgram(ChildRole::convert);
    EXPECT_EQ(open("pipe:" + platform::quotedCommand(program, path("a.any"), "stdout")), iffNotIff);
    EXPECT_TRUE(contains(errors_, messageText(Message::rVTPipedCmd))) << errors_;
}

}  // namespace
}  // namespace vistel
