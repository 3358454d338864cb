#include "platform/settings_store.h"

#include <gtest/gtest.h>

#include "platform/process.h"
#include "platform/temporary_folder.h"

using namespace vistel::platform;
using vistel::test::pathOf;

namespace {

// The store of a test is a folder of its own where the system keeps settings in files; elsewhere
// the test's names keep out of the viewer's way.
class SettingsStore : public testing::Test {
 protected:
    SettingsStore() : before_(environmentVariable("XDG_CONFIG_HOME")) {
        setEnvironmentVariable("XDG_CONFIG_HOME", folder_.path());
    }
    ~SettingsStore() override { setEnvironmentVariable("XDG_CONFIG_HOME", before_.value_or("")); }

    std::string path(const std::string& name) const { return folder_.path(name); }
    void addFolder(const std::string& name) const { folder_.addFolder(name); }

 private:
    vistel::test::TemporaryFolder folder_;
    std::optional<std::string> before_;
};

}  // namespace

TEST_F(SettingsStore, HasNothingThatWasNeverWritten) {
    EXPECT_EQ(readSetting("UnitTestNeverWritten"), std::nullopt);
}

TEST_F(SettingsStore, KeepsWhatWasWrittenLast) {
    const std::string longest(259, 'x');
    for (const std::string& value :
         {std::string("24"), std::string("C:\\two words\\caf\xC3\xA9 \xE6\x97\xA5"),
          std::string("a=b # c ; d"), std::string(" blanks around "), longest, std::string()}) {
        writeSetting("UnitTest", value);
        EXPECT_EQ(readSetting("UnitTest"), value);
    }
}

TEST_F(SettingsStore, KeepsSettingsApart) {
    writeSetting("UnitTest", "1");
    writeSetting("UnitTestOther", "2");
    writeSetting("UnitTest", "3");
    EXPECT_EQ(readSetting("UnitTest"), "3");
    EXPECT_EQ(readSetting("UnitTestOther"), "2");
}

TEST_F(SettingsStore, ReadsAtMost259Bytes) {
    writeSetting("UnitTest", std::string(400, 'y'));
    const std::optional<std::string> value = readSetting("UnitTest");
    EXPECT_LE(value.value_or("").size(), 259u);
}

TEST_F(SettingsStore, KeepsALinkToSettingsElsewhere) {
    writeSetting("UnitTest", "1");
    const auto file = pathOf(path("vistel/vistel.conf")), elsewhere = pathOf(path("elsewhere"));
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "settings are no file here";
    using std::filesystem::perms;
    std::filesystem::rename(file, elsewhere);
    std::filesystem::permissions(elsewhere, perms::owner_read | perms::owner_write);
    std::filesystem::create_symlink(elsewhere, file);
    writeSetting("UnitTest", "2");
    EXPECT_EQ(readSetting("UnitTest"), "2");
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_FALSE(std::filesystem::is_symlink(elsewhere));
    EXPECT_EQ(std::filesystem::status(elsewhere).permissions(),
              perms::owner_read | perms::owner_write);
}

TEST_F(SettingsStore, SaysWhereALinkLeadsNowhere) {
    writeSetting("UnitTest", "1");
    const auto file = pathOf(path("vistel/vistel.conf"));
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "settings are no file here";
    struct Row {
        const char *target, *told;
    };
    for (const Row& row : {Row{"missing", "nowhere"}, Row{"vistel.conf", "in a circle"}}) {
        std::filesystem::remove(file);
        std::filesystem::create_symlink(row.target, file);
        testing::internal::CaptureStderr();
        writeSetting("UnitTest", "2");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "vistel: " + path("vistel/vistel.conf") +
                      ": settings are not saved: a symbolic link that leads " + row.told + "\n");
        EXPECT_TRUE(std::filesystem::is_symlink(file));
        EXPECT_FALSE(std::filesystem::exists(pathOf(path("vistel/missing"))));
    }
}

TEST_F(SettingsStore, ProgramsThatStoreAtTheSameTimeLoseNothing) {
    const std::string partner = findProgram("pipe_partner").value_or("(no pipe_partner)");
    const int settings = 20;
    const char* const names[] = {"UnitTestLeft", "UnitTestRight", "UnitTestMiddle"};
    writeSetting("UnitTest", "before");
    std::vector<FILE*> programs;
    for (const char* name : names)
        programs.push_back(openPipe(
            quotedCommand(partner, "settings", name + (" " + std::to_string(settings))), "r"));
    for (FILE* program : programs) EXPECT_EQ(closePipe(program), 0);
    for (const char* name : names)
        for (int i = 0; i < settings; ++i)
            EXPECT_EQ(readSetting(name + std::to_string(i)), std::to_string(i)) << name << i;
    EXPECT_EQ(readSetting("UnitTest"), "before");
}

TEST_F(SettingsStore, WhatCannotBeReadIsNotReplaced) {
    writeSetting("UnitTest", "1");
    const auto file = pathOf(path("vistel/vistel.conf"));
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "settings are no file here";
    std::filesystem::remove(file);
    addFolder("vistel/vistel.conf");
    writeSetting("UnitTest", "2");
    EXPECT_EQ(readSetting("UnitTest"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path("vistel")), {}), 1);
}

// A device that never ends is no settings, nor is it read for ever.
TEST_F(SettingsStore, ALinkToADeviceHoldsNothing) {
    writeSetting("UnitTest", "1");
    const auto file = pathOf(path("vistel/vistel.conf"));
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "settings are no file here";
    std::filesystem::remove(file);
    std::filesystem::create_symlink("/dev/zero", file);
    writeSetting("UnitTest", "2");
    EXPECT_EQ(readSetting("UnitTest"), std::nullopt);
    EXPECT_TRUE(std::filesystem::is_symlink(file));
}

TEST_F(SettingsStore, AStoreThatCannotBeMadeIsNoTrouble) {
    writeSetting("UnitTest", "1");
    if (!std::filesystem::exists(pathOf(path("vistel/vistel.conf"))))
        GTEST_SKIP() << "settings are no file here";
    std::filesystem::remove_all(pathOf(path("vistel")));
    std::ofstream(pathOf(path("vistel"))) << "in the way";
    testing::internal::CaptureStderr();
    writeSetting("UnitTest", "2");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(readSetting("UnitTest"), std::nullopt);
}

// Lines of which one is a setting.
TEST_F(SettingsStore, DamageAroundASettingLeavesIt) {
    writeSetting("UnitTest", "1");
    const auto file = pathOf(path("vistel/vistel.conf"));
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "settings are no file here";
    const std::string zeros("\0\0=\0\n", 5);
    const std::string damage = "=\n\n[x]\n\xFF\xFE" + zeros + std::string(100000, 'x');
    std::ofstream(file, std::ios::binary) << damage << "\nUnitTest=4\\n2\\";
    EXPECT_EQ(readSetting("UnitTest"), "4\n2\\");
    writeSetting("UnitTestOther", "5");
    EXPECT_EQ(readSetting("UnitTest"), "4\n2\\");
    EXPECT_EQ(readSetting("UnitTestOther"), "5");
    std::ifstream stream(file, std::ios::binary);
    const std::string stored{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_TRUE(stored.starts_with(damage));
}
