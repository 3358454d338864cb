#include "settings/saved_settings.h"

#include <gtest/gtest.h>

#include "platform/settings_store.h"
#include "settings/own_settings.h"

namespace vistel {
namespace {

class StoredSettings : public OwnSettings {
 protected:
    SavedSettings settings_;
};

TEST_F(StoredSettings, ValuesThatWereNeverStoredLeaveTheDefaults) {
    if (hadSettings()) GTEST_SKIP() << "this user's settings are there already";
    readSettings(settings_);
    EXPECT_EQ(settings_.savedFrameRate, 24);
    EXPECT_EQ(settings_.filterIndex, 0);
    EXPECT_EQ(settings_.lastFolder, "");
}

TEST_F(StoredSettings, AllThreeValuesComeBack) {
    settings_.filterIndex = 3;
    settings_.savedFrameRate = 48;
    settings_.lastFolder = "/shows/a b";
    writeSettings(settings_);
    SavedSettings again;
    readSettings(again);
    EXPECT_EQ(again.filterIndex, 3);
    EXPECT_EQ(again.savedFrameRate, 48);
    EXPECT_EQ(again.lastFolder, "/shows/a b");
}

TEST_F(StoredSettings, NumbersAreStoredAsDecimalText) {
    settings_.filterIndex = -1;
    settings_.savedFrameRate = 25;
    writeSettings(settings_);
    EXPECT_EQ(platform::readSetting("FilterIndex"), "-1");
    EXPECT_EQ(platform::readSetting("FPS"), "25");
}

TEST_F(StoredSettings, ATextThatIsNoNumberReadsAsZero) {
    platform::writeSetting("FPS", "fast");
    platform::writeSetting("FilterIndex", "2nd");
    readSettings(settings_);
    EXPECT_EQ(settings_.savedFrameRate, 0);
    EXPECT_EQ(settings_.filterIndex, 2);
}

TEST_F(StoredSettings, AStoredFolderIsCutToTheLongestThatIsKept) {
    platform::writeSetting("LastFolder", std::string(maxFolderLength + 9, 'd'));
    readSettings(settings_);
    EXPECT_EQ(settings_.lastFolder, std::string(maxFolderLength, 'd'));
}

TEST_F(StoredSettings, AFolderIsRemembered) {
    rememberFolder(settings_, "/shows/a b");
    EXPECT_EQ(settings_.lastFolder, "/shows/a b");
    rememberFolder(settings_, std::string(maxFolderLength, 'd'));
    EXPECT_EQ(settings_.lastFolder, std::string(maxFolderLength, 'd'));
}

TEST_F(StoredSettings, AFolderWithoutANameOrTooLongToBeKeptChangesNothing) {
    settings_.lastFolder = "/before";
    for (const size_t length : {size_t{0}, size_t{maxFolderLength + 1}}) {
        rememberFolder(settings_, std::string(length, 'd'));
        EXPECT_EQ(settings_.lastFolder, "/before") << length;
    }
}

}  // namespace
}  // namespace vistel
