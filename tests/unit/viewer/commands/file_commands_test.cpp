// Opening and saving from the menu, and by dropping files.
#include "viewer/commands/file_commands.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

#include "audio/audio_files.h"
#include "host/application.h"
#include "host/image_plugins.h"
#include "resources/command_ids.h"
#include "viewer/commands/menu_commands.h"
#include "viewer/frame_folder.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;
using platform::FileChoice;
using platform::FileQuestion;
using platform::FileRequest;

class FileCommandsTest : public ViewerTest {
 protected:
    void SetUp() override {
        ViewerTest::SetUp();
        loadAllPXFPlugins();
    }
    static std::string here(const std::string& name) {
        return (std::filesystem::current_path() / name).generic_string();
    }
    // shot.FIRST to shot.LAST
    static void writeFrames(int first, int last, int step) {
        for (int number = first; number <= last; number += step)
            FrameFolder::write("shot." + std::to_string(number), number);
    }
    // The user chooses this in the next dialogs; what they asked is kept.
    void willChoose(std::optional<FileChoice> choice) {
        headless::chooseFiles([this, choice](const FileRequest& request) {
            asked.push_back(request);
            return choice;
        });
    }
    static bool quitQueued() {
        return windowContext().queue.any([](const InputEvent& e) { return e.code == EV_QUIT; });
    }
    static bool nothingPending() {
        return viewerState.pendingOpen.empty() && !viewerState.leaving && !quitQueued();
    }

    std::vector<FileRequest> asked;
};

// --- opening ------------------------------------------------------------------------------------

TEST_F(FileCommandsTest, AnImageThatIsChosenIsOpenedInPlaceOfWhatIsShown) {
    const FrameFolder folder;
    writeFrames(1, 3, 1);
    showImage(testFrame(1, 64, 48));
    viewerState.filterIndex = 2;
    viewerState.lastFolder = "/before";
    FileChoice choice;
    choice.name = here("shot.2");
    choice.folder = here("");
    choice.filter = 1;
    willChoose(choice);
    headless::choose(COMMAND_OPEN_IMAGE);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].question, FileQuestion::openImage);
    EXPECT_EQ(asked[0].folder, "/before");
    EXPECT_EQ(asked[0].filter, 2);
    ASSERT_EQ(asked[0].filters.size(), 2u);
    EXPECT_EQ(asked[0].filters[0].name, "Images");
    EXPECT_NE(asked[0].filters[0].patterns.find("*.iff;*.png;"), std::string::npos);
    EXPECT_TRUE(asked[0].filters[0].patterns.ends_with(";*.0;*.1"));
    EXPECT_EQ(asked[0].filters[1].patterns, "*.*");
    EXPECT_EQ(viewerState.pendingOpen, here("shot.2"));
    EXPECT_EQ(viewerState.pendingRangeSet, 1);
    EXPECT_EQ(viewerState.pendingRange.step, 0);
    EXPECT_EQ(viewerState.filterIndex, 1);
    EXPECT_EQ(viewerState.lastFolder, here(""));
    EXPECT_TRUE(viewerState.leaving);
    EXPECT_TRUE(quitQueued());
    EXPECT_TRUE(headless::messageBoxes().empty());
}

TEST_F(FileCommandsTest, AnAnimationIsOpenedByAnyOfItsFrames) {
    const FrameFolder folder;
    writeFrames(1, 9, 2);
    showImage(testFrame(1, 64, 48));
    FileChoice choice;
    choice.name = here("shot.3");
    choice.folder = here("");
    choice.animation = {0, 2, 3, true};
    willChoose(choice);
    headless::choose(COMMAND_OPEN_ANIMATION);
    EXPECT_EQ(asked.at(0).question, FileQuestion::openAnimation);
    EXPECT_EQ(asked[0].animation.zoom, 1);
    EXPECT_EQ(asked[0].animation.shrink, 1);
    EXPECT_EQ(viewerState.pendingOpen, here("shot.#"));
    EXPECT_EQ(viewerState.pendingRange.start, 3);
    EXPECT_EQ(viewerState.pendingRange.end, 9);
    EXPECT_EQ(viewerState.pendingRange.step, 2);
    EXPECT_EQ(viewerState.pendingZoom, 2);
    EXPECT_EQ(viewerState.pendingShrink, 3);
    EXPECT_EQ(viewerState.forceZ, 1);
    EXPECT_EQ(viewerState.padWidth, 1);
    EXPECT_TRUE(quitQueued());
}

TEST_F(FileCommandsTest, TheEndFrameOfTheDialogIsKept) {
    const FrameFolder folder;
    writeFrames(1, 9, 1);
    showImage(testFrame(1, 64, 48));
    FileChoice choice;
    choice.name = here("shot.1");
    choice.animation.end = 4;
    willChoose(choice);
    headless::choose(COMMAND_OPEN_ANIMATION);
    EXPECT_EQ(viewerState.pendingRange.end, 4);
}

TEST_F(FileCommandsTest, ACancelledDialogChangesNothingAndRepaints) {
    showImage(testFrame(1, 64, 48));
    viewerState.lastFolder = "/before";
    for (const int command : {COMMAND_OPEN_IMAGE, COMMAND_OPEN_ANIMATION}) {
        windowContext().queue.clear();
        willChoose(std::nullopt);
        headless::choose(command);
        EXPECT_TRUE(nothingPending());
        EXPECT_EQ(viewerState.lastFolder, "/before");
        EXPECT_EQ(peekEvent(), EV_REDRAW);
    }
}

TEST_F(FileCommandsTest, SomethingBrokenIsToldOfAndWhatIsShownStays) {
    const FrameFolder folder;
    std::ofstream("broken.iff") << "no picture";
    showImage(testFrame(1, 64, 48));
    const std::string before = std::filesystem::current_path().string();
    for (const char* name : {"broken.iff", "no such file", "broken.7"}) {
        FileChoice choice;
        choice.name = here(name);
        willChoose(choice);
        headless::choose(name[0] == 'b' && name[7] == '7' ? COMMAND_OPEN_ANIMATION
                                                          : COMMAND_OPEN_IMAGE);
        EXPECT_TRUE(nothingPending()) << name;
        ASSERT_FALSE(headless::messageBoxes().empty()) << name;
        EXPECT_NE(headless::messageBoxes().back().find(name), std::string::npos);
        EXPECT_NE(headless::messageBoxes().back().find("cannot be opened: "), std::string::npos);
    }
    EXPECT_EQ(headless::messageBoxes().size(), 3u);
    EXPECT_EQ(std::filesystem::current_path().string(), before);
    expectPicture([](int x, int y) { return testPixel(1, x, y); });
}

TEST_F(FileCommandsTest, AFileThatIsChosenEndsTheLoop) {
    const FrameFolder folder;
    writeFrames(1, 1, 1);
    showAnimation(1, 5);
    FileChoice choice;
    choice.name = here("shot.1");
    willChoose(choice);
    headless::script([] { headless::choose(COMMAND_OPEN_IMAGE); });
    headless::whenIdle([] { FAIL() << "the loop goes on"; });
    runViewerLoop(viewerState);
    EXPECT_TRUE(headless::windowOpen());
    EXPECT_EQ(viewerState.quitRequested, 0);
    EXPECT_EQ(viewerState.pendingOpen, here("shot.1"));
}

// --- dropping -----------------------------------------------------------------------------------

TEST_F(FileCommandsTest, WhatIsDroppedIsOpened) {
    const FrameFolder folder;
    writeFrames(8, 11, 1);
    std::filesystem::create_directory("empty");
    showImage(testFrame(1, 64, 48));
    struct Row {
        std::vector<std::string> names;
        std::string opened;
        int start, end, step;
    };
    const Row rows[] = {
        {{here("shot.9")}, here("shot.9"), 0, 0, 0},
        {{here("shot.10"), here("shot.9")}, here("shot.#"), 9, 11, 1},
        {{std::filesystem::current_path().generic_string()}, here("shot.#"), 8, 11, 1},
    };
    for (const Row& row : rows) {
        viewerState.pendingOpen.clear();
        viewerState.leaving = false;
        headless::drop(row.names);
        EXPECT_EQ(viewerState.pendingOpen, row.opened);
        EXPECT_EQ(viewerState.pendingRange.start, row.start);
        EXPECT_EQ(viewerState.pendingRange.end, row.end);
        EXPECT_EQ(viewerState.pendingRange.step, row.step);
    }
    viewerState.pendingOpen.clear();
    viewerState.leaving = false;
    headless::drop({here("empty")});
    EXPECT_TRUE(viewerState.pendingOpen.empty());
    EXPECT_EQ(headless::messageBoxes().size(), 1u);
}

// --- saving -------------------------------------------------------------------------------------

TEST_F(FileCommandsTest, SavingSetsTheNameAndTheTypeAndLeavesTheRestToTheKey) {
    const FrameFolder folder;
    showAnimation(1, 3);
    for (const int command : {COMMAND_SAVE_IMAGE, COMMAND_SAVE_ANIMATION}) {
        windowContext().queue.clear();
        FileChoice choice;
        choice.name = here("new.png");
        choice.folder = here("");
        choice.filter = 2;
        willChoose(choice);
        headless::choose(command);
        EXPECT_EQ(viewerState.saveName, here("new.png"));
        EXPECT_EQ(viewerState.nativeFileName, here("new.png"));
        EXPECT_EQ(viewerState.saveNameSet, 1);
        EXPECT_EQ(viewerState.saveAnimation, command == COMMAND_SAVE_ANIMATION);
        EXPECT_EQ(viewerState.saveFormatKey, "png");
        EXPECT_EQ(viewerState.lastFolder, here(""));
        ASSERT_EQ(windowContext().queue.count(), 1);
        const InputEvent event = windowContext().queue.take();
        EXPECT_EQ(event.code, 'W');
        EXPECT_EQ(event.value, 1);
    }
    const FileRequest& request = asked.at(0);
    EXPECT_EQ(request.question, FileQuestion::save);
    EXPECT_EQ(request.filters[request.filter - 1].patterns, "*.iff");  // the program's own
    EXPECT_EQ(request.filters.back().name, "All Files");
    for (const auto& filter : request.filters) EXPECT_NE(filter.patterns, "*.gif");
}

TEST_F(FileCommandsTest, AllFilesMeansTheProgramsOwnType) {
    const FrameFolder folder;
    showImage(testFrame(1, 64, 48));
    viewerState.saveFormatKey = "png";
    headless::chooseFiles([](const FileRequest& request) {
        FileChoice choice;
        choice.name = here("new");
        choice.filter = static_cast<int>(request.filters.size());
        return choice;
    });
    headless::choose(COMMAND_SAVE_IMAGE);
    EXPECT_EQ(viewerState.saveFormatKey, "");
}

TEST_F(FileCommandsTest, SavingAnImageAsksBeforeItReplacesAFile) {
    const FrameFolder folder;
    writeFrames(1, 1, 1);
    showAnimation(1, 3);
    FileChoice choice;
    choice.name = here("shot.1");
    choice.filter = 1;
    willChoose(choice);
    for (const bool yes : {false, true}) {
        windowContext().queue.clear();
        headless::answerQuestions(yes);
        headless::choose(COMMAND_SAVE_IMAGE);
        ASSERT_FALSE(headless::messageBoxes().empty());
        EXPECT_TRUE(headless::messageBoxes().back().starts_with("Save As: "));
        EXPECT_NE(headless::messageBoxes().back().find("shot.1"), std::string::npos);
        EXPECT_EQ(viewerState.saveNameSet, yes);
        EXPECT_EQ(windowContext().queue.count(), yes);
    }
    const size_t boxes = headless::messageBoxes().size();
    headless::choose(COMMAND_SAVE_ANIMATION);  // asks nothing
    EXPECT_EQ(headless::messageBoxes().size(), boxes);
}

// --- the others ---------------------------------------------------------------------------------

TEST_F(FileCommandsTest, ASoundIsTakenWithItsOffset) {
    headless::resetWaves({.playsAtOnce = false});
    const test::TemporaryFile sound(
        test::wave(test::waveFormat(1, 8).add(test::waveChunk("data", test::Bytes().fill(44100)))));
    showAnimation(1, 3);
    viewerState.currentFrame = 3;
    showMenuState(viewerState);
    FileChoice choice;
    choice.name = sound.name();
    choice.folder = "/sounds/";
    choice.audioOffset = -12;
    willChoose(choice);
    headless::choose(COMMAND_IMPORT_SOUND);
    EXPECT_EQ(asked.at(0).question, FileQuestion::openSound);
    EXPECT_EQ(asked[0].filters[0].name, "Audio");
    EXPECT_EQ(viewerState.audioOffset, -12);
    EXPECT_EQ(viewerState.audioFile, sound.name());
    EXPECT_EQ(viewerState.lastFolder, "/sounds/");
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_TRUE(viewerState.soundOn && viewerState.soundLoaded);
    EXPECT_FALSE(headless::menuChecked(COMMAND_TOGGLE_SOUND));

    viewerState.currentFrame = 2;
    headless::choose(COMMAND_TOGGLE_SOUND);
    EXPECT_FALSE(viewerState.soundOn);
    EXPECT_EQ(viewerState.currentFrame, 2);
    EXPECT_TRUE(headless::menuChecked(COMMAND_TOGGLE_SOUND));  // muted
    headless::choose(COMMAND_TOGGLE_SOUND);
    EXPECT_TRUE(viewerState.soundOn);
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_FALSE(headless::menuChecked(COMMAND_TOGGLE_SOUND));
}

TEST_F(FileCommandsTest, AboutTellsTheVersionAndTheLicences) {
    showImage(testFrame(1, 64, 48));
    headless::choose(COMMAND_ABOUT);
    ASSERT_EQ(headless::messageBoxes().size(), 1u);
    for (const char* part : {applicationVersion(), __VERSION__, "Qt 6 (LGPL 3)", "OpenEXR"})
        EXPECT_NE(headless::messageBoxes()[0].find(part), std::string::npos) << part;
}

}  // namespace vistel
