// Services that write down how they were called, in one text, a line per call. Members can be
// replaced by a test before it starts the session.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "app/start_up_services.h"
#include "viewer/viewer_state.h"

namespace vistel {

struct Recorder {
    // Of which sources there is a picture to show.
    enum class Pictures { ofWholeOnes, ofFailedOnesToo, none };

    std::string calls;                               // one line per call
    std::function<int(const Tstring&)> opening;      // called at each open; its result is returned
    std::function<int(const Tstring&)> discovering;  // likewise
    std::function<void()> showing;                   // what the user does with a source on screen
    std::function<void()> emptyWindow;
    Pictures pictures = Pictures::ofWholeOnes;
    bool interrupted = false;
    bool inputIsConsole = true;

    bool hasPicture(int code) const {
        return pictures == Pictures::ofFailedOnesToo ||
               (pictures == Pictures::ofWholeOnes && code == 0);
    }
};

inline Recorder recorder;

inline void note(const std::string& line) { recorder.calls += line + "\n"; }

inline StartUpServices recordedServices() {
    recorder = Recorder{};
    StartUpServices services;
    // A picture bears the name of its source.
    services.openSource = [](const Tstring& name, FrameStore& frame) {
        note("open " + name);
        const int code = recorder.opening ? recorder.opening(name) : 0;
        frame.imageName = name;
        if (recorder.hasPicture(code) && !frame.colour.allocate(1, 1)) note("no memory");
        return code;
    };
    services.discover = [](const Tstring& name) {
        return recorder.discovering ? recorder.discovering(name) : 0;
    };
    services.sourceBegins = [] { note("start source"); };
    services.clearImageState = [] { note("clear image state"); };
    services.showSource = [](FrameStore&& frame) {
        const FrameStore shown = std::move(frame);
        note("show " + shown.imageName);
        if (recorder.showing) recorder.showing();
    };
    services.runEmptyWindow = [] {
        note("empty window");
        if (recorder.emptyWindow) recorder.emptyWindow();
    };
    services.joinViewer = [] { note("join viewer"); };
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

// What every run calls before its options.
inline const std::string callsBeforeOptions = "join viewer\nplug-ins\n";

// Without the calls that every run makes.
inline std::string callsAfterStartUp() {
    const std::string last = "display table\n";
    const size_t at = recorder.calls.find(last);
    return at == std::string::npos ? recorder.calls : recorder.calls.substr(at + last.size());
}

}  // namespace vistel
