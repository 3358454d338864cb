#include "platform/settings_store.h"

#include <gtest/gtest.h>

#include "platform/process.h"
#include "platform/temporary_folder.h"

using namespace vistel::platform;

namespace {

// The store of a test is a folder of its own where the system keeps settings in files; elsewhere
// the test's names keep out of the viewer's way.
class SettingsStore : public testing::Test {
 protected:
    SettingsStore() : before_(environmentVariable("XDG_CONFIG_HOME")) {
        setEnvironmentVariable("XDG_CONFIG_HOME", folder_.path());
    }
    ~SettingsStore() override { setEnvironmentVariable("XDG_CONFIG_HOME", before_.value_or("")); }

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
