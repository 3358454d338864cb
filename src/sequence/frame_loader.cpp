#include "sequence/frame_loader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "app/viewer_state.h"
#include "host/messages.h"
#include "iff/result_codes.h"
#include "iff/with_memory.h"
#include "platform/clock.h"
#include "sequence/converted_files.h"
#include "sequence/form_reader.h"
#include "sequence/read_ahead.h"
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

bool keepGoing(void*) { return mayGoOn(); }

DisplayFit fitFromState() {
    if (loaderHooks.displayFit) return loaderHooks.displayFit();
    DisplayFit fit;
    fit.shrink = static_cast<uint32_t>(std::max(viewerState.rfact, 1));
    fit.magnify = static_cast<uint32_t>(std::max(viewerState.magnify, 1));
    return fit;
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

int noSuchForm() { return failed(iffNotIff, messageText(Message::rVTNoImage)); }

// A command that has closed its output has as good as ended.
class LastMoments {
 public:
    bool operator()() const { return platform::tickMilliseconds() - begin_ < longest && mayGoOn(); }

 private:
    static constexpr uint32_t longest = 2000;  // milliseconds
    uint32_t begin_ = platform::tickMilliseconds();
};

int readOpened(ChosenSource& source, int number, FrameStore& frame, bool& found) {
    const int result = readForm(loadRequest(source.file), number, frame, found);
    int exitStatus = 0;
    if (result == iffAborted)
        source.abandon();
    else if (found || result != iffBrokenPipe)
        source.release(mayGoOn);
    else
        exitStatus = source.close(LastMoments());
    if (!found && result == iffBrokenPipe && exitStatus != 0) return noSuchForm();
    if (result != iffOk) return failed(result, errorText(result));
    return found ? iffOk : noSuchForm();
}

// A file that its converter cannot read is told of once and not converted again before it changes:
// playing comes by it over and over.
std::optional<FailedReading> knownFailure(const ChosenSource& source) {
    if (source.opened.reader == SourceReader::direct || source.oneFile) return std::nullopt;
    const auto stamp = platform::fileStamp(source.file);
    return stamp ? convertedFiles().failure(source.opened.located, *stamp) : std::nullopt;
}

void rememberFailure(const ChosenSource& source, int code) {
    const auto& stamp = source.opened.convertedAs;
    if (!stamp || source.oneFile || code == iffAborted || code == iffNoMemory) return;
    convertedFiles().remember(source.opened.located, *stamp, FailedReading{code, lastFrame.reason});
}

int readStream(ChosenSource& source, int number, FrameStore& frame) {
    if (const auto failure = knownFailure(source)) return failed(failure->code, failure->reason);
    source.connect();
    if (!source.file) return nothingOpened(source);
    bool found = false;
    const int code = readOpened(source, number, frame, found);
    if (!found) rememberFailure(source, code);
    return code;
}

// --- read ahead ----------------------------------------------------------------------------------

std::unique_ptr<ReadAhead> readers;

// The frame whose file has just been opened, if it was read ahead.
ReadAhead::Taken takeReadAhead(const ChosenSource& source, FrameStore& frame) {
    const Tstring& path = source.opened.located;
    if (!readers || path.empty()) return ReadAhead::Taken::nothing;
    const auto stamp = platform::fileStamp(source.file);
    if (!stamp) return ReadAhead::Taken::nothing;
    return readers->take(path, loadRequest(nullptr), *stamp, loaderHooks.keepGoing, frame);
}

// A frame that has a file of its own.
int readFrameFile(ChosenSource& source, FrameStore& frame) {
    const ReadAhead::Taken taken = takeReadAhead(source, frame);
    if (taken == ReadAhead::Taken::nothing) return readStream(source, 1, frame);
    source.release();
    if (taken == ReadAhead::Taken::frame) return iffOk;
    return failed(iffAborted, errorText(iffAborted));
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

static int readAgain(FrameStore& frame, Retry retry) {
    ChosenSource source = chooseSource(currentSource);
    if (retry == Retry::asked) convertedFiles().forget(source.opened.located);
    lastFrame = {source.name, {}};
    if (!source.file) return nothingOpened(source);
    if (!source.oneFile) return readFrameFile(source, frame);
    if (viewerState.currentFrame < 1) {  // forms are counted from 1
        source.release();
        return noSuchForm();
    }
    return readStream(source, viewerState.currentFrame, frame);
}

int readFrameAgain(FrameStore& frame, Retry retry) {
    const RereadMark mark;
    lastFrame.reason.clear();
    const int code = withMemory([&] { return readAgain(frame, retry); });
    if (code != iffNoMemory || !lastFrame.reason.empty()) return code;
    return withMemory([] { return failed(iffNoMemory, errorText(iffNoMemory)); });
}

FramesAhead::FramesAhead() { readers = std::make_unique<ReadAhead>(decodingThreads()); }
FramesAhead::~FramesAhead() { readers.reset(); }
size_t FramesAhead::room() const { return readers->room(); }

size_t FramesAhead::taken() const { return readers->taken(); }

// Without memory for it a frame is simply not read ahead.
void FramesAhead::expect(std::span<const int> frames) try {
    for (const int frame : frames.first(std::min(frames.size(), room()))) {
        const Tstring path = likelyFramePath(currentSource, frame);
        if (!path.empty()) readers->want(path, loadRequest(nullptr));
    }
} catch (const std::bad_alloc&) {
}

Tstring lastFrameName() { return lastFrame.name; }
Tstring lastFrameReason() { return lastFrame.reason; }

void setCurrentSource(const Tstring& name) {
    currentSource = name;
    convertedFiles().forget();
}

}  // namespace vistel
