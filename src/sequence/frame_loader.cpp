#include "sequence/frame_loader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "sequence/source_choice.h"

namespace vistel {

namespace {

Tstring currentSource;

struct FrameOutcome {
    Tstring name, reason;
} lastFrame;

// Marks the state for the time of a re-read: what is reported once per source is not reported
// again.
class RereadMark {
 public:
    RereadMark() : before_(std::exchange(viewerState.rereading, 1)) {}
    ~RereadMark() { viewerState.rereading = before_; }
    RereadMark(const RereadMark&) = delete;
    RereadMark& operator=(const RereadMark&) = delete;

 private:
    int32_t before_;
};

bool keepGoing(void*) { return !loaderHooks.keepGoing || loaderHooks.keepGoing(); }

DisplayFit fitFromState() {
    if (loaderHooks.displayFit) return loaderHooks.displayFit();
    DisplayFit fit;
    fit.shrink = static_cast<uint32_t>(std::max(viewerState.rfact, 1));
    fit.magnify = static_cast<uint32_t>(std::max(viewerState.magnify, 1));
    return fit;
}

// What a re-read brought.
struct WantedForm {
    FrameStore frame;
    bool found = false;
};

int takeForm(void* owner, FrameStore& frame, int error) {
    auto& wanted = *static_cast<WantedForm*>(owner);
    if (error == iffAborted) return error;
    wanted.frame = std::move(frame);
    wanted.found = true;
    return error ? error : iffParsingComplete;
}

int failed(int code, const Tstring& reason) {
    lastFrame.reason = reason;
    return code;
}

int nothingOpened(const ChosenSource& source) {
    const OpenedSource& opened = source.opened;
    return failed(iffNotIff, opened.complaint.empty() ? Tstring(std::strerror(opened.systemError))
                                                      : opened.complaint);
}

int noSuchForm() {
    return failed(iffNotIff, formatMessage("s_VistelStrings.rVTNoImage", {lastFrame.name}));
}

int readForm(ChosenSource& source, int number, FrameStore& frame) {
    ImageLoadRequest request = loadRequest(source.file);
    request.wantedForm = number;
    request.formRead = takeForm;
    WantedForm wanted;
    request.owner = &wanted;
    FrameStore working;
    const int result = loadImages(request, working);
    const int exitStatus = source.close();
    if (wanted.found) frame = std::move(wanted.frame);
    if (!wanted.found && result == iffBrokenPipe && exitStatus != 0) return noSuchForm();
    if (result != iffOk && result != iffParsingComplete) return failed(result, errorText(result));
    return wanted.found ? iffOk : noSuchForm();
}

}  // namespace

ImageLoadRequest loadRequest(FILE* stream) {
    ImageLoadRequest request;
    request.stream = stream;
    request.verbose = viewerState.verbose != 0;
    request.loadPixels = viewerState.inter != 0;
    request.showAll = viewerState.showAll != 0;
    request.loadZ = viewerState.loadZ != 0;
    request.maxLevel = viewerState.maxLevel;
    request.waitForWriter = viewerState.synchro != 0;
    request.fit = fitFromState();
    request.keepGoing = keepGoing;
    return request;
}

int readFrameAgain(FrameStore& frame) {
    const RereadMark mark;
    ChosenSource source = chooseSource(currentSource);
    lastFrame = {source.name, {}};
    if (!source.file) return nothingOpened(source);
    if (!source.oneFile) return readForm(source, 1, frame);
    if (viewerState.currentFrame < 1) {  // forms are counted from 1
        source.close();
        return noSuchForm();
    }
    return readForm(source, viewerState.currentFrame, frame);
}

Tstring lastFrameName() { return lastFrame.name; }
Tstring lastFrameReason() { return lastFrame.reason; }

void setCurrentSource(const Tstring& name) { currentSource = name; }

}  // namespace vistel
