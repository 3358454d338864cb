// Services that write down how they were called, in one text, a line per call. Members can be
// replaced by a test before it starts the session.
#pragma once

#include <functional>
#include <string>

#include "app/start_up_services.h"
#include "app/viewer_state.h"
#include "sequence/frame_loader.h"

namespace vistel {

struct Recorder {
    std::string calls;                               // one line per call
    std::function<int(const Tstring&)> opening;      // called at each open; its result is returned
    std::function<int(const Tstring&)> discovering;  // likewise
    std::function<int()> reopening;
    std::function<void()> emptyWindow;
    bool interrupted = false;
    bool inputIsConsole = true;
};

inline Recorder recorder;

inline void note(const std::string& line) { recorder.calls += line + "\n"; }

inline StartUpServices recordedServices() {
    recorder = Recorder{};
    StartUpServices services;
    services.openSource = [](const Tstring& name) {
        note("open " + name);
        return recorder.opening ? recorder.opening(name) : 0;
    };
    services.reopenSource = [](const Tstring& name, int start, int end, int step) {
        note(formatPrintf("reopen %s %d %d %d", name.c_str(), start, end, step));
        return recorder.reopening ? recorder.reopening() : 0;
    };
    services.discover = [](const Tstring& stem) {
        note("discover " + stem);
        return recorder.discovering ? recorder.discovering(stem) : 0;
    };
    loaderHooks.sourceBegins = [] { note("start source"); };
    loaderHooks.clearImageState = [] { note("clear image state"); };
    services.runEmptyWindow = [] {
        note("empty window");
        if (recorder.emptyWindow) recorder.emptyWindow();
    };
    services.buildDisplayTable = [] { note("display table"); };
    services.checkMenuItem = [](int command, bool checked) {
        note(formatPrintf("check %d %d", command, checked ? 1 : 0));
    };
    services.showMessageBox = [](const std::string& caption, const std::string& text) {
        note("box " + caption + ": " + text);
    };
    services.loadPlugins = [] { note("plug-ins"); };
    services.openSoundTrack = [] { note("sound " + viewerState.audioFile); };
    services.interrupted = [] { return recorder.interrupted; };
    services.standardInputIsConsole = [] { return recorder.inputIsConsole; };
    return services;
}

// Without the calls that every run makes.
inline std::string callsAfterStartUp() {
    const std::string last = "display table\n";
    const size_t at = recorder.calls.find(last);
    return at == std::string::npos ? recorder.calls : recorder.calls.substr(at + last.size());
}

}  // namespace vistel
