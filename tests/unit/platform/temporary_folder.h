// A folder of its own for one test, gone with it. Names are UTF-8.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace vistel::test {

inline std::filesystem::path pathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

class TemporaryFolder {
 public:
    TemporaryFolder() {
        std::random_device random;
        do {
            folder_ = std::filesystem::temp_directory_path() /
                      ("vistel test " + std::to_string(random()));
        } while (!std::filesystem::create_directories(folder_));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // The folder, or what is in it under this name; forward slashes.
    std::string path() const { return text(folder_); }
    std::string path(const std::string& name) const { return text(folder_ / pathOf(name)); }

    void addFile(const std::string& name, const std::string& contents = "") const {
        std::ofstream(folder_ / pathOf(name), std::ios::binary) << contents;
    }
    void addFolder(const std::string& name) const {
        std::filesystem::create_directories(folder_ / pathOf(name));
    }

 private:
    static std::string text(const std::filesystem::path& path) {
        const std::u8string utf8 = path.generic_u8string();
        return std::string(utf8.begin(), utf8.end());
    }

    std::filesystem::path folder_;
};

}  // namespace vistel::test
