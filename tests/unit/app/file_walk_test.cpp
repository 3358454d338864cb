#include "app/file_walk.h"

#include <gtest/gtest.h>

#include <fstream>

#include "app/recorded_services.h"
#include "app/start_up.h"
#include "host/messages.h"
#include "settings/own_settings.h"

namespace vistel {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<const char*>;

class FileWalk : public OwnSettings {
 protected:
    void SetUp() override {
        OwnSettings::SetUp();
        ASSERT_TRUE(platform::setCurrentDirectory(folder().string()));
        start_ = platform::currentDirectory();
        services_ = recordedServices();
        recorder.opening = [this](const Tstring&) {
            seen_.push_back(viewerState);
            return 0;
        };
    }

    // Parses the words and walks the files; what the openers saw is in `seen_`.
    FileCounts walk(Words words) {
        words.insert(words.begin(), "vistel");
        seen_.clear();
        recorder.calls.clear();
        line_ = startUp(static_cast<int>(words.size()), words.data(), services_);
        return walkFiles(line_, services_);
    }

    // "open" calls only, one word each.
    static std::string opened() {
        std::string names;
        const std::string& calls = recorder.calls;
        for (size_t at = 0; at < calls.size();) {
            const size_t end = calls.find('\n', at);
            const std::string call = calls.substr(at, end - at);
            if (call.starts_with("open ")) names += "[" + call.substr(5) + "]";
            at = end + 1;
        }
        return names;
    }

    static std::string range(const ViewerState& s) {
        return formatPrintf("%d..%d step %d at %d, play %d..%d%s", s.firstFrame, s.lastFrame,
                            s.frameStep, s.currentFrame, s.playFirst, s.playLast,
                            s.animation ? "" : ", single");
    }
    static constexpr const char* singleFrame = "1..1 step 1 at 1, play 1..1, single";

    StartUpServices services_;
    CommandLine line_;
    std::vector<ViewerState> seen_;
    std::string start_;
};

TEST_F(FileWalk, EachFileIsOpenedInItsTurn) {
    const FileCounts counts = walk({"a.iff", "b.iff"});
    EXPECT_EQ(opened(), "[a.iff][b.iff]");
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 0);
    EXPECT_EQ(callsAfterStartUp(),
              "start source\nclear image state\nopen a.iff\n"
              "start source\nclear image state\nopen b.iff\n");
    for (const ViewerState& s : seen_) {
        EXPECT_EQ(range(s), singleFrame);
        EXPECT_EQ(s.animationShown, 0);
        EXPECT_EQ(s.loadZ, 1);
        EXPECT_EQ(s.windowId, -1);
        EXPECT_EQ(s.sourceName, "");
        EXPECT_EQ(s.oneFileStream, nullptr);
    }
}

TEST_F(FileWalk, AFileThatFailsIsCountedAndTheNextFollows) {
    recorder.opening = [](const Tstring& name) { return name == "bad" ? -4 : 0; };
    const FileCounts counts = walk({"bad", "good", "bad"});
    EXPECT_EQ(opened(), "[bad][good][bad]");
    EXPECT_EQ(counts.processed, 3);
    EXPECT_EQ(counts.failed, 2);
}

TEST_F(FileWalk, TheRangeOptionAppliesToEveryFile) {
    walk({"-n", "1", "9", "2", "a", "b"});
    ASSERT_EQ(seen_.size(), 2u);
    for (const ViewerState& s : seen_) EXPECT_EQ(range(s), "1..9 step 2 at 1, play 1..9");

    // Also when the first file left other bounds behind.
    recorder.opening = [this](const Tstring&) {
        seen_.push_back(viewerState);
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 5;
        viewerState.animation = 0;
        return 0;
    };
    walk({"-n", "1", "9", "2", "a", "b"});
    EXPECT_EQ(range(seen_[1]), "1..9 step 2 at 1, play 1..9");
}

TEST_F(FileWalk, ARangeIsOrderedAndItsStepMadePositive) {
    struct Row {
        const char *start, *end, *step;
        const char* expected;
    };
    constexpr Row rows[] = {
        {"1", "10", "1", "1..10 step 1 at 1, play 1..10"},
        {"10", "1", "-2", "1..10 step 2 at 1, play 1..10"},
        {"10", "1", "2", "1..10 step 2 at 1, play 1..10"},
        {"1", "10", "0", "1..10 step 1 at 1, play 1..10"},
        {"-5", "-9", "1", "-9..-5 step 1 at -9, play -9..-5"},
        {"7", "7", "1", "7..7 step 1 at 7, play 7..7"},
        {"1", "2", "-2147483648", "1..2 step 2147483647 at 1, play 1..2"},
        {"x", "2", "1", "0..2 step 1 at 0, play 0..2"},
    };
    for (const Row& row : rows) {
        walk({"-n", row.start, row.end, row.step, "name"});
        ASSERT_EQ(seen_.size(), 1u);
        EXPECT_EQ(range(seen_[0]), row.expected);
        EXPECT_EQ(seen_[0].animationShown, 1);
        walk({"-n", row.start, row.end, row.step, "name"});
    }
}

TEST_F(FileWalk, ARangeMayStandBeforeAFile) {
    struct Row {
        Words words;
        int oneFile;
    };
    const Row rows[] = {
        {{"x", "-n5", "9", "1", "name"}, 0},       {{"x", "-n", "5", "9", "1", "name"}, 0},
        {{"x", "-N5", "9", "1", "name"}, 1},       {{"x", "-N", "5", "9", "1", "name"}, 1},
        {{"x", "-n5z", "9q", "1", "name"}, 0},     {{"-N", "x", "-n5", "9", "1", "name"}, 0},
        {{"-c", "x", "-n5", "9", "1", "name"}, 0},
    };
    for (const Row& row : rows) {
        const FileCounts counts = walk(row.words);
        EXPECT_EQ(opened(), "[x][name]");
        EXPECT_EQ(counts.processed, 2);
        ASSERT_EQ(seen_.size(), 2u);
        EXPECT_EQ(range(seen_[1]), "5..9 step 1 at 5, play 5..9");
        EXPECT_EQ(seen_[1].oneFile, row.oneFile);
        EXPECT_EQ(seen_[1].inter, 1);
    }
}

TEST_F(FileWalk, ARangeBeforeAFileIsOrderedToo) {
    walk({"x", "-n9", "5", "-2", "name"});
    EXPECT_EQ(range(seen_[1]), "5..9 step 2 at 5, play 5..9");
}

TEST_F(FileWalk, ARangeBeforeAFileWinsOverTheOption) {
    walk({"-n", "1", "3", "1", "a", "-n5", "9", "1", "b", "c"});
    ASSERT_EQ(seen_.size(), 3u);
    EXPECT_EQ(range(seen_[0]), "1..3 step 1 at 1, play 1..3");
    EXPECT_EQ(range(seen_[1]), "5..9 step 1 at 5, play 5..9");
    EXPECT_EQ(range(seen_[2]), "1..3 step 1 at 1, play 1..3");
}

TEST_F(FileWalk, ARangeBeforeAFileIsThatFilesOnly) {
    walk({"-c", "x", "-N5", "9", "1", "one", "after"});
    ASSERT_EQ(seen_.size(), 3u);
    EXPECT_EQ(seen_[1].oneFile, 1);
    EXPECT_EQ(seen_[1].inter, 1);
    EXPECT_EQ(range(seen_[2]), singleFrame);
    EXPECT_EQ(seen_[2].oneFile, 0);
    EXPECT_EQ(seen_[2].inter, 0);

    walk({"-N", "x", "-n5", "9", "1", "numbered", "after"});
    ASSERT_EQ(seen_.size(), 3u);
    EXPECT_EQ(seen_[1].oneFile, 0);
    EXPECT_EQ(seen_[2].oneFile, 1);
}

TEST_F(FileWalk, AnIncompleteRangeAsksForTheUsage) {
    for (const Words& words :
         {Words{"x", "-n5"}, Words{"x", "-n5", "9"}, Words{"x", "-n5", "9", "1"}, Words{"x", "-n"},
          Words{"x", "-n", "5", "9", "1"}, Words{"-S", "x", "-N5"}}) {
        walk(words);
        EXPECT_EQ(opened(), "[x]");
        EXPECT_EQ(line_.outcome, StartUpOutcome::usageWanted);
        EXPECT_NE(line_.complaint, "");
    }
}

TEST_F(FileWalk, ADotAtTheEndStandsForTheNumberedFilesWhenThereAreSome) {
    recorder.discovering = [](const Tstring& stem) {
        if (stem != "shot.") {
            viewerState.animation = 0;
            return 0;
        }
        viewerState.animation = 1;
        viewerState.firstFrame = 3;
        viewerState.lastFrame = 9;
        viewerState.frameStep = 2;
        return 1;
    };
    walk({"shot."});
    EXPECT_EQ(opened(), "[shot]");
    EXPECT_EQ(viewerState.fileName, "shot");
    EXPECT_EQ(range(seen_[0]), "3..9 step 2 at 3, play 3..9");

    walk({"none."});
    EXPECT_EQ(opened(), "[none.]");
    EXPECT_EQ(viewerState.fileName, "none.");
    EXPECT_EQ(range(seen_[0]), singleFrame);

    walk({"picture.iff"});
    EXPECT_EQ(recorder.calls.find("discover"), std::string::npos);
}

TEST_F(FileWalk, AnimationsLoadNoDepthUnlessForcedTo) {
    walk({"-n", "1", "2", "1", "a"});
    EXPECT_EQ(seen_[0].loadZ, 0);
    EXPECT_EQ(viewerState.loadZ, 1);
    walk({"-Z", "-n", "1", "2", "1", "a"});
    EXPECT_EQ(seen_[0].loadZ, 1);
    walk({"-z", "-Z", "-n", "1", "2", "1", "a"});
    EXPECT_EQ(seen_[0].loadZ, 0);
}

TEST_F(FileWalk, ASingleImageIsOpenedWithItsOwnMemoryFactor) {
    recorder.opening = [this](const Tstring&) {
        seen_.push_back(viewerState);
        return 0;
    };
    walk({"-k", "100", "a", "-n1", "2", "1", "b"});
    EXPECT_EQ(seen_[0].kmem, 0.9f);
    EXPECT_EQ(seen_[1].kmem, 90.0f);
    EXPECT_EQ(viewerState.kmem, 90.0f);
    walk({"-k", "0", "-n", "1", "2", "1", "b"});
    EXPECT_EQ(seen_[0].kmem, 0.0f);
}

TEST_F(FileWalk, OneFilesAdjustmentsDoNotReachTheNext) {
    recorder.opening = [this](const Tstring&) {
        seen_.push_back(viewerState);
        viewerState.magnify = viewerState.rfact = viewerState.loadZ = 7;
        viewerState.kmem = -1;
        viewerState.animationShown = 7;
        viewerState.sourceName = "left over";
        viewerState.sourceOpened = 1;
        viewerState.windowId = 5;
        return 0;
    };
    walk({"-m", "3", "-s", "2", "a", "b"});
    ASSERT_EQ(seen_.size(), 2u);
    for (const ViewerState& s : seen_) {
        EXPECT_EQ(s.magnify, 3);
        EXPECT_EQ(s.currentZoom, 3);
        EXPECT_EQ(s.rfact, 2);
        EXPECT_EQ(s.loadZ, 1);
        EXPECT_EQ(s.kmem, 0.9f);
        EXPECT_EQ(s.animationShown, 0);
        EXPECT_EQ(s.sourceName, "");
        EXPECT_EQ(s.sourceOpened, 0);
        EXPECT_EQ(s.windowId, -1);
    }
    EXPECT_EQ(viewerState.magnify, 3);
    EXPECT_EQ(viewerState.kmem, 0.9f);
}

TEST_F(FileWalk, TheNativeNameHasBackslashes) {
    walk({"a/b/c.iff"});
    EXPECT_EQ(viewerState.fileName, "a/b/c.iff");
    EXPECT_EQ(viewerState.nativeFileName, "a\\b\\c.iff");
}

TEST_F(FileWalk, TheFoldersOfTheFilesBecomeTheCurrentDirectory) {
    fs::create_directories(folder() / "one" / "deep");
    fs::create_directories(folder() / "two");
    std::vector<std::string> directories;
    recorder.opening = [&](const Tstring&) {
        directories.push_back(fs::path(platform::currentDirectory()).filename().string());
        EXPECT_EQ(viewerState.startDirectory, start_);
        return 0;
    };
    const std::string absolute = (folder() / "two" / "d").string();
    walk({"one/deep/a", "two/b", "c", "nowhere/x", absolute.c_str(), "one/e"});
    // A name without a folder, and a folder that is not there, leave the directory as it is.
    EXPECT_EQ(directories, (std::vector<std::string>{"deep", "two", "two", "two", "two", "one"}));
    EXPECT_TRUE(opened().starts_with("[one/deep/a][two/b][c][nowhere/x]"));
}

TEST_F(FileWalk, ALongNameIsNotCut) {
    for (const std::string& name : {std::string(5000, 'n'), "pipe:" + std::string(5000, 'n')}) {
        walk({name.c_str()});
        EXPECT_EQ(viewerState.fileName, name);
        EXPECT_EQ(opened(), "[" + name + "]");
    }
}

TEST_F(FileWalk, AnEmptyArgumentIsAFailureAndNotStandardInput) {
    const struct {
        Words words;
        const char* opened;
    } rows[] = {{{"", "b"}, "[b]"}, {{"x", "-n5", "9", "1", "", "b"}, "[x][b]"}, {{"-S", ""}, ""}};
    for (const auto& row : rows) {
        testing::internal::CaptureStderr();
        const FileCounts counts = walk(row.words);
        const std::string errors = testing::internal::GetCapturedStderr();
        EXPECT_EQ(errors, messageText(Message::rVTEmptyName));
        EXPECT_TRUE(errors.starts_with("\"\": ")) << errors;
        EXPECT_EQ(opened(), row.opened);
        EXPECT_EQ(counts.processed - counts.failed, static_cast<int>(seen_.size()));
        EXPECT_EQ(counts.failed, 1);
    }
}

TEST_F(FileWalk, ACommandsTextIsNoFolderAndNoStem) {
    fs::create_directories(folder() / "one");
    std::vector<std::string> directories;
    recorder.opening = [&](const Tstring&) {
        directories.push_back(platform::currentDirectory());
        return 0;
    };
    recorder.discovering = [](const Tstring&) { return 1; };
    walk({"one/a", "pipe:cat one/a", "pipe:cat one/a."});
    ASSERT_EQ(directories.size(), 3u);
    EXPECT_NE(directories[0], start_);
    EXPECT_EQ(directories[1], start_);
    EXPECT_EQ(directories[2], start_);
    EXPECT_EQ(opened(), "[one/a][pipe:cat one/a][pipe:cat one/a.]");
}

TEST_F(FileWalk, StdinIsStandardInputInAnyCase) {
    walk({"stdin", "STDIN", "Stdin", "./stdin"});
    EXPECT_EQ(opened(), "[][][][./stdin]");
}

TEST_F(FileWalk, StandardInputCarriesOneImageOnly) {
    testing::internal::CaptureStderr();
    walk({"-n", "1", "9", "1", "stdin"});
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(errors, messageText(Message::rVTNoAnimPipeMode));
    EXPECT_EQ(opened(), "[]");
    EXPECT_EQ(range(seen_[0]), singleFrame);
    EXPECT_EQ(seen_[0].animationShown, 0);
}

TEST_F(FileWalk, StandardInputWithARangeIsLoadedAsASingleImage) {
    for (const Words& words : {Words{"-k", "5", "-n", "1", "9", "1", "stdin"},
                               Words{"-k", "5", "x", "-n1", "9", "1", "STDIN"}}) {
        testing::internal::CaptureStderr();
        walk(words);
        testing::internal::GetCapturedStderr();
        ASSERT_FALSE(seen_.empty());
        EXPECT_EQ(seen_.back().loadZ, 1);
        EXPECT_EQ(seen_.back().kmem, 0.9f);
        EXPECT_EQ(seen_.back().animation, 0);
        EXPECT_TRUE(recorder.calls.ends_with("clear image state\nopen \n")) << recorder.calls;
    }
}

TEST_F(FileWalk, VerboseNamesEachFileAsItWasGiven) {
    recorder.discovering = [](const Tstring&) { return 1; };
    testing::internal::CaptureStdout();
    walk({"-v", "a/b", "shot."});
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              formatMessage(Message::rVTFileName, {"a/b"}) +
                  formatMessage(Message::rVTFileName, {"shot."}));
    testing::internal::CaptureStdout();
    walk({"a"});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(FileWalk, WithoutFilesTheEmptyWindowOpens) {
    const FileCounts counts = walk({"-v"});
    EXPECT_EQ(callsAfterStartUp(), "empty window\n");
    EXPECT_EQ(counts.processed, 0);
}

TEST_F(FileWalk, WithoutFilesInputThatIsNoConsoleIsAnImage) {
    recorder.inputIsConsole = false;
    const FileCounts counts = walk({"-S", "-k", "5", "-n", "1", "9", "1"});
    EXPECT_EQ(callsAfterStartUp(), "start source\nclear image state\nopen \n");
    EXPECT_EQ(counts.processed, 1);
    EXPECT_EQ(range(seen_[0]), singleFrame);
    EXPECT_EQ(seen_[0].sequenceMode, 0);
    EXPECT_EQ(seen_[0].kmem, 0.9f);
}

TEST_F(FileWalk, InputThatIsNoConsoleIsLeftAloneWhenThereAreFiles) {
    recorder.inputIsConsole = false;
    walk({"a"});
    EXPECT_EQ(opened(), "[a]");
}

TEST_F(FileWalk, TestModeShowsTheConvertersImageAndNoFile) {
    const FileCounts counts = walk({"-t", "a", "b"});
    EXPECT_EQ(opened(), "[Pipe]");
    EXPECT_EQ(counts.processed, 1);
    EXPECT_EQ(range(seen_[0]), singleFrame);
}

TEST_F(FileWalk, TestModeShowsNoAnimation) {
    testing::internal::CaptureStderr();
    walk({"-t", "-n", "1", "9", "1"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), messageText(Message::rVTNoAnimTestMode));
    EXPECT_EQ(range(seen_[0]), singleFrame);
}

TEST_F(FileWalk, SequenceModeRepeatsTheListUntilTheUserQuits) {
    int left = 5;
    recorder.opening = [&](const Tstring&) {
        EXPECT_EQ(viewerState.quitRequested, 0);
        if (viewerState.windowId < 1) viewerState.windowId = 3;
        if (--left == 0) viewerState.quitRequested = 1;
        seen_.push_back(viewerState);
        return 0;
    };
    const FileCounts counts = walk({"-S", "-k", "5", "a", "b"});
    EXPECT_EQ(opened(), "[a][b][a][b][a]");
    EXPECT_EQ(counts.processed, 5);
    EXPECT_EQ(seen_[0].kmem, 4.5f);   // images keep what the command line says
    EXPECT_EQ(seen_[1].windowId, 3);  // and their window
    EXPECT_EQ(recorder.calls.find("clear image state"), std::string::npos);
}

TEST_F(FileWalk, SequenceModeEndsWhenAnotherFileIsWanted) {
    recorder.opening = [&](const Tstring& name) {
        if (name == "b") viewerState.pendingOpen = "c";
        return 0;
    };
    walk({"-S", "a", "b"});
    EXPECT_EQ(opened(), "[a][b]");
}

TEST_F(FileWalk, ARoundInWhichNothingOpensIsTheLast) {
    recorder.opening = [&](const Tstring&) { return -4; };
    const FileCounts counts = walk({"-S", "a", "b"});
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 2);
}

TEST_F(FileWalk, ARoundInWhichNothingIsShownIsTheLast) {
    recorder.opening = [&](const Tstring&) { return 0; };  // read, but without a picture
    const FileCounts counts = walk({"-S", "-c", "a", "b"});
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 0);
}

TEST_F(FileWalk, ClosingTheWindowLeavesOnlyTheFile) {
    recorder.opening = [&](const Tstring&) {
        EXPECT_EQ(viewerState.quitRequested, 0);
        EXPECT_EQ(viewerState.windowId, -1);
        viewerState.windowId = 1;
        viewerState.quitRequested = 1;
        return 0;
    };
    walk({"a", "b"});
    EXPECT_EQ(opened(), "[a][b]");
}

TEST_F(FileWalk, AnInterruptEndsTheWalk) {
    recorder.opening = [](const Tstring&) {
        recorder.interrupted = true;
        return 0;
    };
    const FileCounts counts = walk({"-S", "a", "b"});
    EXPECT_EQ(opened(), "[a]");
    EXPECT_EQ(counts.processed, 1);
    viewerState.pendingOpen = "c";
    recorder.calls.clear();
    servePendingOpens(services_);
    EXPECT_EQ(recorder.calls, "");
}

TEST_F(FileWalk, RequestedFilesAreServedUntilNoneIsLeft) {
    viewerState.pendingOpen = "a";
    viewerState.pendingRange = {1, 9, 2};
    viewerState.pendingRangeSet = 1;
    int left = 2;
    recorder.reopening = [&] {
        EXPECT_EQ(viewerState.pendingOpen, "");
        EXPECT_EQ(viewerState.pendingRangeSet, 0);
        if (--left > 0) {
            viewerState.pendingOpen = "b";
            viewerState.pendingRange = {};
            viewerState.pendingRangeSet = 1;
        }
        return -4;
    };
    servePendingOpens(services_);
    EXPECT_EQ(recorder.calls, "reopen a 1 9 2\nreopen b 0 0 0\n");
}

TEST_F(FileWalk, ARequestWithoutARangeTakesTheRangeOfTheAnimation) {
    viewerState.animation = 1;
    viewerState.firstFrame = 3;
    viewerState.lastFrame = 7;
    viewerState.frameStep = 2;
    viewerState.pendingOpen = "a";
    servePendingOpens(services_);
    EXPECT_EQ(recorder.calls, "reopen a 3 7 2\n");
}

TEST_F(FileWalk, AFileChosenInTheEmptyWindowIsOpened) {
    recorder.emptyWindow = [] {
        viewerState.pendingOpen = "chosen.iff";
        viewerState.pendingRangeSet = 1;
    };
    walk({});
    servePendingOpens(services_);
    EXPECT_EQ(callsAfterStartUp(), "empty window\nreopen chosen.iff 0 0 0\n");
}

}  // namespace
}  // namespace vistel
