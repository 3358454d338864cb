#include "settings/saved_settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/viewer_state.h"
#include "platform/files.h"
#include "platform/settings_store.h"
#include "settings/own_settings.h"

namespace vistel {
namespace {

namespace fs = std::filesystem;

class SavedSettings : public OwnSettings {};

TEST_F(SavedSettings, ValuesThatWereNeverStoredLeaveTheDefaults) {
    if (hadSettings()) GTEST_SKIP() << "this user's settings are there already";
    readSettings();
    EXPECT_EQ(viewerState.savedFrameRate, 24);
    EXPECT_EQ(viewerState.filterIndex, 0);
    EXPECT_EQ(viewerState.lastFolder, "");
}

TEST_F(SavedSettings, AllThreeValuesComeBack) {
    viewerState.filterIndex = 3;
    viewerState.savedFrameRate = 48;
    viewerState.lastFolder = "/shows/a b";
    writeSettings();
    viewerState = ViewerState{};
    readSettings();
    EXPECT_EQ(viewerState.filterIndex, 3);
    EXPECT_EQ(viewerState.savedFrameRate, 48);
    EXPECT_EQ(viewerState.lastFolder, "/shows/a b");
}

TEST_F(SavedSettings, NumbersAreStoredAsDecimalText) {
    viewerState.filterIndex = -1;
    viewerState.savedFrameRate = 25;
    writeSettings();
    EXPECT_EQ(platform::readSetting("FilterIndex"), "-1");
    EXPECT_EQ(platform::readSetting("FPS"), "25");
}

TEST_F(SavedSettings, ATextThatIsNoNumberReadsAsZero) {
    platform::writeSetting("FPS", "fast");
    platform::writeSetting("FilterIndex", "2nd");
    readSettings();
    EXPECT_EQ(viewerState.savedFrameRate, 0);
    EXPECT_EQ(viewerState.filterIndex, 2);
}

TEST_F(SavedSettings, TheCurrentDirectoryIsRemembered) {
    ASSERT_TRUE(platform::setCurrentDirectory(folder().string()));
    rememberFolder();
    EXPECT_EQ(viewerState.lastFolder, platform::currentDirectory());
}

TEST_F(SavedSettings, AFolderTooLongToBeKeptChangesNothing) {
    fs::path deep = folder();
    while (deep.string().size() <= maxFolderLength) deep /= std::string(60, 'd');
    std::error_code error;
    fs::create_directories(deep, error);
    if (error || !platform::setCurrentDirectory(deep.string()))
        GTEST_SKIP() << "this system has no folder names of that length";
    viewerState.lastFolder = "/before";
    rememberFolder();
    EXPECT_EQ(viewerState.lastFolder, "/before");
}

TEST_F(SavedSettings, TheWayOutOfTheWindowStoresTheFrameRateInForce) {
    viewerState.frameRate = 60;
    viewerState.savedFrameRate = 24;
    EXPECT_EXIT(saveSettingsAndExit(1), testing::ExitedWithCode(1), "");
    EXPECT_EQ(platform::readSetting("FPS"), "60");
}

}  // namespace
}  // namespace vistel
