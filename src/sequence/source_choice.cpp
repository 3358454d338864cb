#include "sequence/source_choice.h"

#include <algorithm>
#include <cstring>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/process.h"
#include "sequence/frame_loader.h"
#include "sequence/frame_name.h"
#include "sequence/frame_sequence.h"
#include "settings/saved_settings.h"

namespace vistel {

namespace {

constexpr int namesBetweenChecks = 1000;

OpenedSource openFile(const Tstring& name) { return openFrameFile(name, viewerState.synchro != 0); }

NumberStyle numberStyle() { return {viewerState.padWidth, viewerState.padNum != 0}; }

// Relative folders count from where the file argument was given, as its name does.
Tstring folderOf(const Tstring& name) {
    const size_t base = baseNameStart(name);
    if (base < 2) return {};
    const bool drive = name[base - 2] == ':';
    return name.substr(0, base - (drive ? 0 : 1));
}

// The width of a run of at signs that is told by the whole pattern, folders too.
void takeWholeWidth(const Tstring& pattern) {
    if (viewerState.padWidth < 1 && pattern.find('#') == Tstring::npos)
        viewerState.padWidth = atSignWidth(pattern);
}

// The numbered name; when no such file exists, the name in which marks of folders do not count.
// `name` receives the one to speak of: the second when the folder is really called so.
OpenedSource openNumberedFile(const Tstring& pattern, Tstring& name) {
    takePadWidthFromAtSigns(pattern);
    name = numberedName(pattern, viewerState.currentFrame, numberStyle());
    OpenedSource opened = openFile(name);
    if (opened.stream) takeWholeWidth(pattern);
    if (opened.stream || !opened.complaint.empty()) return opened;
    const std::optional<Tstring> inFolder =
        numberedNameInFolder(pattern, viewerState.currentFrame, numberStyle());
    if (!inFolder) return opened;
    OpenedSource second = openFile(*inFolder);
    if (!second.stream && second.complaint.empty() &&
        !platform::fileExists(fromStartDirectory(folderOf(pattern)))) {
        return opened;
    }
    name = *inFolder;
    return second;
}

// Whether a search that has tried so many names may try one more.
bool mayTryOneMore(int64_t tried) {
    if (platform::interruptRequested()) return false;
    if (tried % namesBetweenChecks != 0) return true;
    return mayGoOn();
}

// A long search is told of on the console: there is no window yet.
class SearchProgress {
 public:
    explicit SearchProgress(const Tstring& pattern) : pattern_(pattern) {}
    ~SearchProgress() {
        if (told_) std::fprintf(stderr, "\n");
    }
    SearchProgress(const SearchProgress&) = delete;
    SearchProgress& operator=(const SearchProgress&) = delete;

    void tell(int frame) {
        const uint32_t now = platform::tickMilliseconds();
        if (now - last_ < interval || !platform::isTerminal(2)) return;
        last_ = now;
        told_ = true;
        const Tstring text = formatMessage(Message::rVTSearching, {pattern_, frame});
        std::fprintf(stderr, "\r%s", text.c_str());
    }

 private:
    static constexpr uint32_t interval = 1000;  // milliseconds
    const Tstring& pattern_;
    uint32_t last_ = platform::tickMilliseconds();
    bool told_ = false;
};

// Steps currentFrame on to the first frame that exists, under its unpadded name. The bound is
// tested before the step, so one name past the last frame is tried.
OpenedSource openFirstThatExists(const Tstring& pattern, OpenedSource missing) {
    const int64_t step = std::max(viewerState.frameStep, 1);
    SearchProgress progress(pattern);
    for (int64_t tried = 0;
         viewerState.currentFrame <= viewerState.lastFrame && mayTryOneMore(tried); ++tried) {
        const int64_t next = viewerState.currentFrame + step;
        if (next > INT32_MAX) break;
        viewerState.currentFrame = static_cast<int32_t>(next);
        if (tried % namesBetweenChecks == 0) progress.tell(viewerState.currentFrame);
        OpenedSource opened = openFile(unpaddedName(pattern, viewerState.currentFrame));
        if (opened.stream || !opened.complaint.empty()) return opened;
    }
    return missing;
}

// Names the pattern, the file that was looked for, and the system's reason.
void tellAnimationNotFound(const Tstring& pattern, const ChosenSource& source) {
    printError(formatMessage(Message::rVTAnimationNotFound,
                             {pattern, source.name, std::strerror(source.opened.systemError)}));
    if (!viewerState.oneFile) printError(messageText(Message::rVTFindFirstHint));
}

// A file of a one-file animation that is open already is read from its start again. A pipe cannot
// be: it is opened once more.
ChosenSource chooseOneFile(const Tstring& name) {
    ChosenSource source;
    source.name = name;
    source.oneFile = true;
    FILE* open = viewerState.oneFileStream;
    if (open && !viewerState.sourceIsPipe && platform::seekStream(open, 0, SEEK_SET)) {
        source.file = open;
        return source;
    }
    source.opened = openFile(name);
    source.file = source.opened.stream.file();
    if (!open) viewerState.oneFileStream = source.file;
    return source;
}

ChosenSource chooseNumberedFile(const Tstring& pattern) {
    ChosenSource source;
    viewerState.oneFileStream = nullptr;
    source.opened = openNumberedFile(pattern, source.name);
    // What was found by its unpadded name is read again by it.
    const bool missing = !source.opened.stream && source.opened.complaint.empty();
    if (missing && viewerState.rereading && viewerState.findFirst) {
        source.opened = openFile(unpaddedName(pattern, viewerState.currentFrame));
    }
    source.file = source.opened.stream.file();
    return source;
}

void handleMissingFirst(const Tstring& pattern, ChosenSource& source) {
    if (viewerState.findFirst && !viewerState.oneFile) {
        source.opened = openFirstThatExists(pattern, std::move(source.opened));
        source.file = source.opened.stream.file();
        source.name = source.file ? unpaddedName(pattern, viewerState.currentFrame) : pattern;
        return;
    }
    tellAnimationNotFound(pattern, source);
    source.notFoundTold = true;
}

ChosenSource chooseAnimationFrame(const Tstring& pattern) {
    ChosenSource source =
        viewerState.oneFile ? chooseOneFile(pattern) : chooseNumberedFile(pattern);
    const bool missing = !source.file && source.opened.complaint.empty();
    if (missing && !viewerState.sourceOpened && !viewerState.rereading) {
        handleMissingFirst(pattern, source);
    }
    return source;
}

void enterFolderOf(const Tstring& name) {
    const Tstring folder = folderOf(name);
    if (!folder.empty()) (void)platform::setCurrentDirectory(fromStartDirectory(folder));
    rememberFolder();
}

ChosenSource chooseFile(const Tstring& name) {
    ChosenSource source;
    source.name = viewerState.sourceName = name;
    source.opened = openFile(name);
    if (source.opened.stream && !viewerState.rereading) enterFolderOf(name);
    return source;
}

// A command runs in the folder in which the argument was given, whatever folders were entered
// since.
ChosenSource chooseCommand(const Tstring& name) {
    ChosenSource source;
    viewerState.sourceName = name;
    source.name = messageText(Message::rVTPipedCmd);
    const Tstring command = name.substr(commandPrefix.size());
    if (command.find_first_not_of(" \t") == Tstring::npos) {
        source.opened.complaint = formatMessage(Message::rVTEmptyCommand, {name});
        return source;
    }
    if (!viewerState.startDirectory.empty())
        (void)platform::setCurrentDirectory(viewerState.startDirectory);
    source.opened = openFrameCommand(command, viewerState.currentFrame);
    return source;
}

ChosenSource chooseStandardInput() {
    ChosenSource source;
    source.name = viewerState.sourceName = messageText(Message::rVTStdin);
    source.opened = openStandardInput();
    // What was read once is there a second time only when it comes from a file.
    if (viewerState.rereading && source.opened.stream &&
        !platform::seekStream(source.opened.stream.file(), 0, SEEK_SET)) {
        source.opened = OpenedSource{};
        source.opened.systemError = errno;
    }
    return source;
}

ChosenSource chooseTestOutput(const Tstring& name) {
    ChosenSource source;
    source.name = name;
    viewerState.sourceName = messageText(Message::rVTPipedCmd);
    source.opened = openTestOutput();
    return source;
}

ChosenSource chooseSingleStream(const Tstring& name) {
    if (viewerState.testMode) return chooseTestOutput(name);
    if (name.empty()) return chooseStandardInput();
    if (namesCommand(name)) return chooseCommand(name);
    return chooseFile(name);
}

bool namesFrames(const Tstring& name) {
    return viewerState.animation && name.find(commandPrefix) == Tstring::npos;
}

}  // namespace

Tstring likelyFramePath(const Tstring& name, int frame) {
    if (!namesFrames(name) || viewerState.oneFile || viewerState.testMode) return {};
    return frameFilePath(viewerState.searchDirs.front(), numberedName(name, frame, numberStyle()));
}

// A stream that goes is no one-file animation's any more.
static void forgetOneFileStream(const OpenedSource& opened) {
    if (opened.stream && viewerState.oneFileStream == opened.stream.file())
        viewerState.oneFileStream = nullptr;
}

void ChosenSource::connect() {
    if (!opened.stream) return;  // nothing was opened for it
    const bool remembered = viewerState.oneFileStream == file;
    opened.connect();
    file = opened.stream.file();
    if (remembered) viewerState.oneFileStream = file;
}

int ChosenSource::close(const std::function<bool()>& goOn) {
    forgetOneFileStream(opened);
    return opened.stream.close(goOn);
}

void ChosenSource::release(const std::function<bool()>& goOn) {
    forgetOneFileStream(opened);
    opened.stream.release(goOn);
}

void ChosenSource::abandon() {
    forgetOneFileStream(opened);
    opened.stream.abandon();
}

ChosenSource chooseSource(const Tstring& name) {
    if (namesFrames(name)) {
        ChosenSource source = chooseAnimationFrame(name);
        if (source.opened.stream) viewerState.sourceIsPipe = source.opened.throughPipe();
        return source;
    }
    ChosenSource source = chooseSingleStream(name);
    source.file = source.opened.stream.file();
    viewerState.sourceIsPipe = source.opened.stream && source.opened.throughPipe();
    return source;
}

}  // namespace vistel
