#include "app/start_up.h"

#include <algorithm>
#include <utility>

#include "app/option_table.h"
#include "host/application.h"
#include "platform/file_address.h"
#include "platform/files.h"
#include "platform/process.h"
#include "settings/saved_settings.h"
#include "viewer/viewer_state.h"

namespace vistel {

namespace {

constexpr const char* locationVariable = "TAVO_LOCATION";
constexpr const char* helpFolder = "/docs/ext/VisTel/";

Tstring withoutLastPart(const Tstring& path) {
    const size_t slash = path.rfind('/');
    return slash == Tstring::npos ? path : Tstring(path.substr(0, slash));
}

// TAVO_LOCATION when the user set it, else where the program lies; children see it either way. An
// empty variable is no variable: not every system tells them apart.
Tstring locateInstallation() {
    Tstring location = platform::environmentVariable(locationVariable).value_or("");
    if (!location.empty()) return location;
    Tstring root = installRoot(platform::programPath());
    platform::setEnvironmentVariable(locationVariable, root);
    return root;
}

struct NamedRate {
    const char* name;
    int32_t rate;
};
constexpr NamedRate namedRates[] = {{"film", 24}, {"pal", 25}, {"ntsc", 30}};

int32_t chooseFrameRate(const Tstring& playFormat) {
    if (playFormat.empty()) return viewerState.savedFrameRate;
    for (const NamedRate& row : namedRates)
        if (playFormat == row.name) return row.rate;
    const int32_t read = playFormat.asInt32();
    const int32_t rate = read >= 1 ? read : viewerState.savedFrameRate;
    if (read < 1 || !playFormat.isInt32())
        tellOddWord("-r", playFormat, Message::rVTFrameRateWord, std::to_string(rate));
    return rate;
}

// The field as the options left it, else the variable, else the default.
void completeName(Tstring& field, const char* variable, const char* fallback) {
    if (field.empty()) field = platform::environmentVariable(variable).value_or("");
    if (field.empty()) field = fallback;
}

void setSearchDirectories() {
    constexpr const char* templates[] = {"",           "./",      "^1s/image/^2s/", "^1s/tex/^2s/",
                                         "^1s/image/", "^1s/tex/"};
    static_assert(std::size(templates) == std::tuple_size_v<decltype(viewerState.searchDirs)>);
    for (size_t i = 0; i < std::size(templates); ++i)
        viewerState.searchDirs[i] =
            formatPositional(templates[i], {viewerState.workDir, viewerState.projectName});
}

}  // namespace

Tstring installRoot(const Tstring& programPath) {
    return withoutLastPart(withoutLastPart(programPath.replacingAll('\\', '/')));
}

void prepareProcess(const StartUpServices& services) {
    ViewerState fresh;
    viewerState = std::move(fresh);
    callIfSet(services.joinViewer);
    platform::setNativeLocale();
    setApplicationName("VisTel");
    viewerState.helpBase = platform::fileAddress(locateInstallation() + helpFolder);
    callIfSet(services.loadPlugins);
    readSettings(viewerState);
    platform::setBinaryFileMode();
    viewerState.startDirectory = platform::currentDirectory();
}

void completeState(const CommandLine& line, const StartUpServices& services) {
    if (viewerState.defGamma != 1.0f) viewerState.lutActive = 1;
    viewerState.frameRate = viewerState.startFrameRate = chooseFrameRate(line.playFormat);
    completeName(viewerState.workDir, "GRAPH", "/usr/users/graph");
    completeName(viewerState.projectName, "PROJ", ".");
    setSearchDirectories();
    callIfSet(services.buildDisplayTable);
}

CommandLine startUp(int argc, const char* const* argv, const StartUpServices& services) {
    CommandLine line;
    line.words.assign(argv, argv + argc);
    if (line.words.empty()) line.words.emplace_back("vistel");  // a caller may pass no name at all
    prepareProcess(services);
    parseOptions(line, services);
    if (line.outcome == StartUpOutcome::goOn) completeState(line, services);
    return line;
}

}  // namespace vistel
