#include "sequence/image_source.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "iff/with_memory.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "sequence/frame_loader.h"
#include "sequence/frame_name.h"
#include "sequence/frame_sequence.h"
#include "sequence/source_choice.h"
#include "sequence/source_range.h"

namespace vistel {

namespace {

int reportNothingOpened(const ChosenSource& source) {
    const OpenedSource& opened = source.opened;
    if (source.notFoundTold || viewerState.sourceOpened || viewerState.rereading) return iffNotIff;
    if (!opened.complaint.empty()) {
        const Tstring file = opened.located.empty() ? Tstring() : opened.located + ": ";
        printError(file + opened.complaint);
        return iffNotIff;
    }
    const Tstring base = source.name.substr(baseNameStart(source.name));
    const Tstring prefix = base.empty() ? source.name : base;  // "folder/" has no base name
    errno = opened.systemError;
    std::perror(prefix.c_str());
    return iffNotIff;
}

// One full pass over a source.
struct FullPass {
    Tstring name;
    bool oneFile = false;
    bool isFile = true;     // read from a file, not from a command or standard input
    int forms = 0;          // image forms met
    bool reported = false;  // the end of the pass has been reported
};

void reportResult(FullPass& pass, int result) {
    if (viewerState.rereading || std::exchange(pass.reported, true)) return;
    if (viewerState.verbose) std::printf("\n");
    std::fflush(stdout);
    if (result == iffOk || result == iffAborted) return;
    std::fprintf(stderr, "%s: ", pass.name.c_str());
    reportError(result);
}

// A picture arrived. A damaged one is reported before the viewer runs on what there is of it.
int showForm(void* owner, FrameStore& frame, int error) {
    auto& pass = *static_cast<FullPass*>(owner);
    ++pass.forms;
    if (error == iffAborted) return error;
    if (error != iffOk) reportResult(pass, error);
    if (!frame.hasPicture() || !loaderHooks.frameLoaded) return error;
    const int result = loaderHooks.frameLoaded(frame);
    // Frames that the viewer read on its own have moved the position in the one file.
    return pass.oneFile ? int{iffParsingComplete} : result;
}

int readSource(const ChosenSource& source, FullPass& pass) {
    ImageLoadRequest request = loadRequest(source.file);
    // Forms before the first frame of a one-file animation are passed over.
    if (source.oneFile && viewerState.currentFrame > 1)
        request.wantedForm = viewerState.currentFrame;
    request.formRead = showForm;
    request.owner = &pass;
    FrameStore working;
    const int result = loadImages(request, working);
    return result == iffParsingComplete ? int{iffOk} : result;
}

bool isFile(const ChosenSource& source, const Tstring& name) {
    if (name.empty() || source.opened.throughPipe()) return false;
    return platform::streamStatus(source.file).kind == platform::StreamKind::regular;
}

// No image form came. The early end of what is no file says no more than that: a command that
// failed writes nothing.
bool holdsNoImage(const FullPass& pass, int result) {
    if (pass.forms > 0) return false;
    return result == iffOk || (result == iffBrokenPipe && !pass.isFile);
}

// A command is named as the user wrote it.
const Tstring& shownName(const ChosenSource& source, const Tstring& name) {
    return namesCommand(name) ? name : source.name;
}

int reportNoImage(const Tstring& name) {
    printError(name + ": " + messageText("s_VistelStrings.rVTNoImage"));
    return iffNotIff;
}

// Waits until a command has something to say. As long as there is no window a terminal tells what
// is waited for. False when the user does not want to wait.
bool awaitCommand(const ChosenSource& source, const Tstring& name) {
    constexpr uint32_t patience = 2000;  // milliseconds
    const uint32_t begin = platform::tickMilliseconds();
    bool told = !platform::isTerminal(2);
    while (platform::awaitBytes(source.file, 1) == 0) {
        if (!mayGoOn()) return false;
        if (told || (loaderHooks.hasWindow && loaderHooks.hasWindow())) continue;
        told = platform::tickMilliseconds() - begin >= patience;
        if (told) printError(formatMessage("s_VistelStrings.rVTWaiting", {name}));
    }
    return true;
}

}  // namespace

static int openSource(const Tstring& name) {
    viewerState.sourceIsPipe = 0;
    setCurrentSource(name);
    ChosenSource source = chooseSource(name);
    source.connect();
    if (!source.file) return reportNothingOpened(source);
    viewerState.sourceOpened = 1;
    FullPass pass{source.name, source.oneFile, isFile(source, name)};
    const bool waited =
        !source.opened.throughPipe() || awaitCommand(source, shownName(source, name));
    const int result = waited ? readSource(source, pass) : int{iffAborted};
    // A command that the user stopped waiting for is ended; one that wrote its picture may go on.
    result == iffAborted ? source.abandon() : source.release(mayGoOn);
    if (holdsNoImage(pass, result)) return reportNoImage(shownName(source, name));
    reportResult(pass, result);
    return result;
}

int openImageSource(const Tstring& givenName) {
    bool reported = false;
    const int code = withMemory([&] {
        const Tstring name = givenName;  // the menus may change the field it lies in
        const int result = openSource(name);
        reported = true;
        return result;
    });
    if (!reported) {
        std::fprintf(stderr, "%s: ", givenName.c_str());
        reportError(code);
    }
    return code;
}

int reopenSource(const Tstring& givenName, int start, int end, int step) {
    Tstring name = givenName;  // it may lie in the field that is emptied
    viewerState.animation = viewerState.rereading = 0;
    if (step != 0) takeRange({start, end, step});
    viewerState.magnify = std::max(viewerState.pendingZoom, 1);
    viewerState.rfact = std::max(viewerState.pendingShrink, 1);
    const PerFileValues values;
    beginSource();
    if (name.ends_with('.') && !namesCommand(name) && discoverNumberedFiles(name)) name.pop_back();
    viewerState.fileName = name;
    viewerState.nativeFileName = name.replacingAll('/', '\\');
    viewerState.pendingOpen.clear();
    normaliseRange();
    return openImageSource(name);
}

}  // namespace vistel
