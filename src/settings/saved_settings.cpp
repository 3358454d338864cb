#include "settings/saved_settings.h"

#include "platform/settings_store.h"

namespace vistel {

namespace {

constexpr const char* filterIndexName = "FilterIndex";
constexpr const char* frameRateName = "FPS";
constexpr const char* lastFolderName = "LastFolder";

void readNumber(const char* name, int32_t& field) {
    if (const auto text = platform::readSetting(name)) field = Tstring(*text).asInt32();
}

}  // namespace

void readSettings(SavedSettings& settings) {
    readNumber(filterIndexName, settings.filterIndex);
    readNumber(frameRateName, settings.savedFrameRate);
    if (const auto folder = platform::readSetting(lastFolderName))
        settings.lastFolder = folder->substr(0, maxFolderLength);
}

void writeSettings(const SavedSettings& settings) {
    platform::writeSetting(filterIndexName, std::to_string(settings.filterIndex));
    platform::writeSetting(frameRateName, std::to_string(settings.savedFrameRate));
    platform::writeSetting(lastFolderName, settings.lastFolder);
}

void rememberFolder(SavedSettings& settings, const std::string& folder) {
    if (!folder.empty() && folder.size() <= maxFolderLength) settings.lastFolder = folder;
}

}  // namespace vistel
