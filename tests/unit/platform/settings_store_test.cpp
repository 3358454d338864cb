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
