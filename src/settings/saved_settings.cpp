#include "settings/saved_settings.h"

#include <cstdlib>
#include <string>

#include "app/viewer_state.h"
#include "platform/files.h"
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

void readSettings() {
    readNumber(filterIndexName, viewerState.filterIndex);
    readNumber(frameRateName, viewerState.savedFrameRate);
    if (const auto folder = platform::readSetting(lastFolderName))
        viewerState.lastFolder = folder->substr(0, maxFolderLength);
}

void writeSettings() {
    platform::writeSetting(filterIndexName, std::to_string(viewerState.filterIndex));
    platform::writeSetting(frameRateName, std::to_string(viewerState.savedFrameRate));
    platform::writeSetting(lastFolderName, viewerState.lastFolder);
}

void rememberFolder() {
    const std::string folder = platform::currentDirectory();
    if (!folder.empty() && folder.size() <= maxFolderLength) viewerState.lastFolder = folder;
}

void saveSettingsAndExit(int status) {
    viewerState.savedFrameRate = viewerState.frameRate;
    writeSettings();
    std::exit(status);
}

}  // namespace vistel
