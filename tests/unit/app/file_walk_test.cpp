#include "app/file_walk.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "app/walk_fixture.h"
#include "host/messages.h"

namespace vistel {
namespace {

namespace fs = std::filesystem;

using FileWalk = WalkTest;

TEST_F(FileWalk, EachFileIsOpenedInItsTurn) {
    const FileCounts counts = walk({"a.iff", "b.iff"});
    EXPECT_EQ(opened(), "[a.iff][b.iff]");
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 0);
    EXPECT_EQ(callsAfterStartUp(),
              "start source\nclear image state\nopen a.iff\nshow a.iff\n"
              "start source\nclear image state\nopen b.iff\nshow b.iff\n");
    for (const SeenState& s : seen_) {
        EXPECT_EQ(range(s), singleFrame);
        EXPECT_EQ(s.animationShown, 0);
        EXPECT_EQ(s.loadZ, 1);
        EXPECT_EQ(s.windowId, -1);
        EXPECT_EQ(s.sourceName, "");
        EXPECT_FALSE(s.streamKept);
    }
}

TEST_F(FileWalk, EachFileKnowsItsPlaceAmongThem) {
    std::string places;
    recorder.opening = [&](const Tstring& name) {
        places += name + " " + std::to_string(viewerState.fileNumber) + "/" +
                  std::to_string(viewerState.fileCount) + " ";
        return 0;
    };
    walk({"a", "-n5", "9", "2", "b", "-N", "1", "4", "1", "c"});
    EXPECT_EQ(places, "a 1/3 b 2/3 c 3/3 ");
    places.clear();
    walk({"a"});
    EXPECT_EQ(places, "a 1/1 ");
}

TEST_F(FileWalk, AFileThatFailsIsCountedAndTheNextFollows) {
    recorder.opening = [](const Tstring& name) { return name == "bad" ? -4 : 0; };
    const FileCounts counts = walk({"bad", "good", "bad"});
    EXPECT_EQ(opened(), "[bad][good][bad]");
    EXPECT_EQ(counts.processed, 3);
    EXPECT_EQ(counts.failed, 2);
    EXPECT_EQ(callsAfterStartUp().find("show bad"), std::string::npos);
}

TEST_F(FileWalk, APictureThatIsNotWholeIsShownAndCountsAsAFailure) {
    recorder.opening = [](const Tstring&) { return -4; };
    recorder.pictures = Recorder::Pictures::ofFailedOnesToo;
    const FileCounts counts = walk({"damaged", "b"});
    EXPECT_EQ(callsAfterStartUp(),
              "start source\nclear image state\nopen damaged\nshow damaged\n"
              "start source\nclear image state\nopen b\nshow b\n");
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 2);
}

TEST_F(FileWalk, ASourceWithoutAPictureIsNotShownAndNoFailure) {
    recorder.pictures = Recorder::Pictures::none;
    const FileCounts counts = walk({"-c", "a"});
    EXPECT_EQ(callsAfterStartUp(), "start source\nclear image state\nopen a\n");
    EXPECT_EQ(counts.processed, 1);
    EXPECT_EQ(counts.failed, 0);
}

TEST_F(FileWalk, OneFilesAdjustmentsDoNotReachTheNext) {
    const std::string kept = (folder() / "kept").string();
    recorder.opening = [&](const Tstring&) {
        see();
        viewerState.sourceName = "left over";
        viewerState.sourceOpened = 1;
        viewerState.oneFileStream = {platform::openFile(kept, "wb"), false};
        EXPECT_TRUE(viewerState.oneFileStream);
        return 0;
    };
    recorder.showing = [] {
        EXPECT_EQ(viewerState.sourceName, "left over");
        EXPECT_TRUE(viewerState.oneFileStream);
        viewerState.magnify = viewerState.rfact = viewerState.loadZ = 7;
        viewerState.kmem = -1;
        viewerState.animationShown = 7;
        viewerState.windowId = 5;
    };
    walk({"-m", "3", "-s", "2", "a", "b"});
    ASSERT_EQ(seen_.size(), 2u);
    for (const SeenState& s : seen_) {
        EXPECT_EQ(s.magnify, 3);
        EXPECT_EQ(s.currentZoom, 3);
        EXPECT_EQ(s.rfact, 2);
        EXPECT_EQ(s.loadZ, 1);
        EXPECT_EQ(s.kmem, 0.9f);
        EXPECT_EQ(s.animationShown, 0);
        EXPECT_EQ(s.sourceName, "");
        EXPECT_EQ(s.sourceOpened, 0);
        EXPECT_FALSE(s.streamKept);
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
    EXPECT_EQ(callsAfterStartUp(), "start source\nclear image state\nopen \nshow \n");
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

TEST_F(FileWalk, SequenceModeRepeatsTheListUntilTheUserQuits) {
    int left = 5;
    recorder.opening = [this](const Tstring&) {
        EXPECT_EQ(viewerState.quitRequested, 0);
        see();
        return 0;
    };
    recorder.showing = [&] {
        if (viewerState.windowId < 1) viewerState.windowId = 3;
        if (--left == 0) viewerState.quitRequested = 1;
    };
    const FileCounts counts = walk({"-S", "-k", "5", "a", "b"});
    EXPECT_EQ(opened(), "[a][b][a][b][a]");
    EXPECT_EQ(counts.processed, 5);
    EXPECT_EQ(seen_[0].kmem, 4.5f);   // images keep what the command line says
    EXPECT_EQ(seen_[1].windowId, 3);  // and their window
    EXPECT_EQ(recorder.calls.find("clear image state"), std::string::npos);
}

TEST_F(FileWalk, SequenceModeEndsWhenAnotherFileIsWanted) {
    int shown = 0;
    recorder.showing = [&] {
        viewerState.windowId = 1;
        if (++shown == 2) viewerState.pendingOpen = "c";
    };
    walk({"-S", "a", "b"});
    EXPECT_EQ(opened(), "[a][b]");
    EXPECT_EQ(viewerState.pendingOpen, "c");
}

TEST_F(FileWalk, ARoundInWhichNothingOpensIsTheLast) {
    int left = 4;  // a second round is ended by force
    recorder.opening = [&](const Tstring&) {
        viewerState.windowId = 1;  // of a round before
        recorder.interrupted = --left == 0;
        return -4;
    };
    const FileCounts counts = walk({"-S", "a", "b"});
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 2);
}

TEST_F(FileWalk, ARoundInWhichNothingIsShownIsTheLast) {
    int left = 4;  // a second round is ended by force
    recorder.opening = [&](const Tstring&) {
        recorder.interrupted = --left == 0;
        return 0;
    };
    recorder.pictures = Recorder::Pictures::none;
    const FileCounts counts = walk({"-S", "-c", "a", "b"});
    EXPECT_EQ(counts.processed, 2);
    EXPECT_EQ(counts.failed, 0);
}

TEST_F(FileWalk, ClosingTheWindowLeavesOnlyTheFile) {
    recorder.opening = [&](const Tstring&) {
        EXPECT_EQ(viewerState.quitRequested, 0);
        EXPECT_EQ(viewerState.windowId, -1);
        return 0;
    };
    recorder.showing = [] {
        viewerState.windowId = 1;
        viewerState.quitRequested = 1;
    };
    walk({"a", "b"});
    EXPECT_EQ(opened(), "[a][b]");
}

TEST_F(FileWalk, AnInterruptEndsTheWalk) {
    recorder.showing = [] { recorder.interrupted = true; };
    const FileCounts counts = walk({"-S", "a", "b"});
    EXPECT_EQ(opened(), "[a]");
    EXPECT_EQ(counts.processed, 1);
    viewerState.pendingOpen = "c";
    recorder.calls.clear();
    servePendingOpens(services_);
    EXPECT_EQ(recorder.calls, "");
}

}  // namespace
}  // namespace vistel
