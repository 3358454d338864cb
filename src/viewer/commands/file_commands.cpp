#include "viewer/commands/file_commands.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "host/application.h"
#include "host/image_plugins.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "sequence/frame_name.h"
#include "sequence/frame_range.h"
#include "sequence/frame_reader.h"
#include "sequence/frame_sequence.h"
#include "viewer/commands/sound_commands.h"
#include "viewer/picture/display_setup.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"

namespace vistel {

namespace {

using platform::FileChoice;
using platform::FileFilter;
using platform::FileQuestion;

FileFilter allFiles() { return {messageText(Message::rVTAllFiles), "*.*"}; }

// Where no folder is remembered, the one of what is on screen.
std::optional<FileChoice> ask(platform::FileRequest request) {
    if (request.folder.empty()) request.folder = platform::currentDirectory();
    return platform::askForFile(windowContext().window, request);
}

void tell(const Tstring& text) {
    platform::showMessageBox(windowContext().window, applicationName(), text);
}

// --- opening ------------------------------------------------------------------------------------

// What is to be opened, and how.
struct Wanted {
    Tstring name;
    FrameRange range;  // step 0: a single image
    int32_t padWidth = 0;
    platform::AnimationFields fields;
};

// An animation by one of its frames, with which it begins. A name without a number is an image.
Wanted wantedAnimation(const Tstring& name, const platform::AnimationFields& fields) {
    Wanted wanted{name, {0, fields.end, 0}, 0, fields};
    patternFromFirstFrame({}, wanted.name, wanted.range, wanted.padWidth);
    return wanted;
}

// Reads its first frame, of which nothing is kept. What the reading comes to.
FrameRead tryReading(Viewer& viewer, const Wanted& wanted) {
    SequenceState trial;
    static_cast<LoadOptions&>(trial) = viewer;
    static_cast<FramePlaces&>(trial) = viewer;
    trial.verbose = trial.findFirst = trial.testMode = trial.oneFile = 0;
    trial.startDirectory.clear();
    trial.padWidth = wanted.padWidth;
    trial.openedName = wanted.name;
    forgetAnimation(trial);
    if (wanted.range.step != 0) takeRange(trial, wanted.range);
    const std::string folder = platform::currentDirectory();
    FrameStore frame;
    FrameRead read =
        readFrame(trial, trial.currentFrame,
                  {currentDisplayFit(viewer), viewer.goOn, nullptr, Retry::never}, frame);
    (void)platform::setCurrentDirectory(folder);
    if (frame.hasPicture()) read.code = iffOk;
    return read;
}

// Leaves what is shown for the file, when there is a picture in it.
void open(Viewer& viewer, const Wanted& wanted) {
    const FrameRead read = tryReading(viewer, wanted);
    if (windowContext().quit || read.code == iffAborted) return;
    if (read.code != iffOk) {
        const Tstring name = read.name.empty() ? wanted.name : read.name;
        return tell(formatMessage(Message::rVTCannotOpen, {name, read.reason}));
    }
    viewer.pendingOpen = wanted.name;
    viewer.pendingRange = wanted.range;
    viewer.pendingRangeSet = 1;
    viewer.pendingZoom = wanted.fields.zoom;
    viewer.pendingShrink = wanted.fields.shrink;
    viewer.padWidth = wanted.padWidth;
    if (wanted.range.step != 0) {
        viewer.forceZ = wanted.fields.depth;
        viewer.soundOn = viewer.soundLoaded;  // no longer muted
    }
    viewer.leaving = true;
    postEvent(EV_QUIT, 1);
}

// One file is chosen and tried at a time: while it is, the window still answers.
class Choosing {
 public:
    explicit Choosing(Viewer& viewer) : viewer_(viewer), mine_(!viewer.choosing) {
        viewer.choosing = true;
    }
    ~Choosing() {
        if (mine_) viewer_.choosing = false;
    }
    Choosing(const Choosing&) = delete;
    Choosing& operator=(const Choosing&) = delete;
    explicit operator bool() const { return mine_; }

 private:
    Viewer& viewer_;
    bool mine_;
};

// Frames of one animation lie together, in their order.
void sortByNumber(std::vector<std::string>& names) {
    const auto key = [](const std::string& name) {
        const auto parts = splitPickedName(name);
        return parts ? std::tuple{parts->before, parts->after, parts->number}
                     : std::tuple{Tstring(name), Tstring(), 0};
    };
    std::ranges::sort(names, {}, key);
}

Wanted wantedOf(const Viewer& viewer, std::vector<std::string> names) {
    sortByNumber(names);
    platform::AnimationFields fields;
    fields.depth = viewer.forceZ != 0;
    Wanted animation = wantedAnimation(names.front(), fields);
    const bool several = animation.range.step != 0 && animation.range.end > animation.range.start;
    return several ? animation : Wanted{names.front(), {}, 0, fields};
}

// The files in a folder, with its name; hidden ones are no pictures.
std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> files;
    const std::string beginning = folder + "/";
    for (const std::string& name : platform::listFolder(folder, "/")) {
        const std::string path = beginning + name;
        if (!name.starts_with('.') && platform::isRegularFile(path)) files.push_back(path);
    }
    return files;
}

// --- saving -------------------------------------------------------------------------------------

// The file types that can be written, and what the converter is told of each; the types of several
// frames in one file are none to save to.
struct SaveTypes {
    std::vector<FileFilter> filters;
    std::vector<Tstring> keys;
    int own = 1;  // the program's own type, counted from 1
};
SaveTypes saveTypes() {
    SaveTypes types;
    for (const Tstring& name : PXF_getPluginNames()) {
        const Tstring key = PXF_getKeyFromPluginName(name);
        if (PXF_isMultiFrameFormat(name) || !PXF_hasWriteSupport(name) || key == "gif") continue;
        types.filters.push_back({name, "*" + PXF_getExtFromPluginName(name)});
        types.keys.push_back(key);
        if (key == "tavo") types.own = static_cast<int>(types.keys.size());
    }
    types.filters.push_back(allFiles());
    return types;
}

bool mayReplace(const Tstring& name) {
    return !platform::fileExists(name) ||
           platform::confirm(windowContext().window, messageText(Message::rVTSaveAs),
                             formatMessage(Message::rVTOverwriteConfirm, {name}));
}

}  // namespace

bool openFile(Viewer& viewer, const Press&, int animation) {
    const Choosing mine(viewer);
    if (!mine) return false;
    platform::AnimationFields fields;
    fields.depth = viewer.forceZ != 0;
    const auto choice = ask({
        .question = animation ? FileQuestion::openAnimation : FileQuestion::openImage,
        .folder = viewer.lastFolder,
        .filters = {{messageText(Message::rVTImages), PXF_getOnlyExtensions() + "*.0;*.1"},
                    allFiles()},
        .filter = viewer.filterIndex,
        .animation = fields,
    });
    if (!choice) return true;
    rememberFolder(viewer, choice->folder);
    viewer.filterIndex = choice->filter;
    open(viewer, animation ? wantedAnimation(choice->name, choice->animation)
                           : Wanted{choice->name, {}, 0, fields});
    return true;
}

void openDropped(Viewer& viewer, const std::vector<std::string>& names) {
    const Choosing mine(viewer);
    if (!mine || names.empty()) return;
    if (names.size() > 1) return open(viewer, wantedOf(viewer, names));
    const Tstring& name = names.front();
    if (platform::isRegularFile(name)) return open(viewer, {name, {}, 0, {}});
    std::vector<std::string> files = filesIn(name);
    if (files.empty()) return tell(formatMessage(Message::rVTNoFileInFolder, {name}));
    open(viewer, wantedOf(viewer, std::move(files)));
}

bool saveFile(Viewer& viewer, const Press&, int animation) {
    const Choosing mine(viewer);
    if (!mine) return false;
    const SaveTypes types = saveTypes();
    const auto choice = ask({
        .question = FileQuestion::save,
        .folder = viewer.lastFolder,
        .filters = types.filters,
        .filter = types.own,
        .animation = {},
    });
    if (!choice || (!animation && !mayReplace(choice->name))) return false;
    rememberFolder(viewer, choice->folder);
    const auto type = static_cast<size_t>(choice->filter) - 1;
    viewer.saveFormatKey = type < types.keys.size() ? types.keys[type] : Tstring();
    viewer.saveName = viewer.nativeFileName = choice->name;
    viewer.saveNameSet = 1;
    viewer.saveAnimation = viewer.saveAll = animation;
    postEvent('W', 1);
    return false;
}

bool importSound(Viewer& viewer, const Press&, int) {
    const Choosing mine(viewer);
    if (!mine) return false;
    const auto choice = ask({
        .question = FileQuestion::openSound,
        .folder = viewer.lastFolder,
        .filters = {{messageText(Message::rVTAudio), "*.aif;*.aiff;*.aifc;*.wav"}, allFiles()},
        .filter = 1,
        .animation = {},
    });
    if (!choice) return false;
    rememberFolder(viewer, choice->folder);
    viewer.audioFile = choice->name;
    viewer.audioOffset = choice->audioOffset;
    return startWithSound(viewer);
}

bool showAbout(Viewer&, const Press&, int) {
    platform::showAbout(windowContext().window,
                        formatMessage(Message::rVTAbout, {applicationVersion(), __VERSION__}));
    return false;
}

}  // namespace vistel
