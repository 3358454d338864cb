// A test fixture with a folder and saved settings of its own. Where the system keeps settings in
// one place per user, the values that were there are put back afterwards.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/settings_store.h"

namespace vistel {

class OwnSettings : public testing::Test {
 protected:
    void SetUp() override {
        home_ = platform::currentDirectory();
        const std::string name = "vistel_test_" + std::to_string(std::random_device{}());
        folder_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(folder_);
        platform::setEnvironmentVariable("XDG_CONFIG_HOME", (folder_ / "config").string());
        for (const char* setting : settings_) before_.push_back(platform::readSetting(setting));
    }
    void TearDown() override {
        for (size_t i = 0; i < std::size(settings_); ++i)
            if (before_[i]) platform::writeSetting(settings_[i], *before_[i]);
        EXPECT_TRUE(platform::setCurrentDirectory(home_));
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    // Whether this user had settings before the test.
    bool hadSettings() const {
        for (const auto& value : before_)
            if (value) return true;
        return false;
    }
    const std::filesystem::path& folder() const { return folder_; }

 private:
    static constexpr const char* settings_[] = {"FilterIndex", "FPS", "LastFolder"};
    std::string home_;
    std::filesystem::path folder_;
    std::vector<std::optional<std::string>> before_;
};

}  // namespace vistel
