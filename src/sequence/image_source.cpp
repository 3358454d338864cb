#include "sequence/image_source.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "iff/with_memory.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "sequence/foreign_input.h"
#include "sequence/frame_name.h"
#include "sequence/frame_suggestion.h"
#include "sequence/source_choice.h"

namespace vistel {

namespace {

int reportNothingOpened(SequenceState& state, const OpenedSource& source) {
    const Tstring reason =
        source.complaint.empty() ? Tstring(std::strerror(source.systemError)) : source.complaint;
    if (!state.failuresTold.insert(source.name + ": " + reason).second || source.notFoundTold)
        return iffNotIff;
    if (!source.complaint.empty()) {
        const Tstring file = source.located.empty() ? Tstring() : source.located + ": ";
        printError(file + source.complaint);
        return iffNotIff;
    }
    const Tstring base = source.name.substr(baseNameStart(source.name));
    const Tstring prefix = base.empty() ? source.name : base;  // "folder/" has no base name
    errno = source.systemError;
    std::perror(printable(prefix).c_str());
    if (source.systemError == EISDIR) suggestFrames(state, source.name + (base.empty() ? "" : "/"));
    if (source.systemError == ENOENT) suggestFrames(state, source.name);
    return iffNotIff;
}

// Waits until a command has something to say. False when the user does not want to wait.
bool awaitCommand(FILE* stream, const Tstring& name, const platform::GoOn& goOn, bool windowOpen) {
    constexpr uint32_t patience = 2000;  // milliseconds
    const uint32_t begin = platform::tickMilliseconds();
    bool told = windowOpen || !platform::isTerminal(2);
    while (platform::awaitBytes(stream, 1) == 0) {
        if (!platform::mayGoOn(goOn)) return false;
        if (told) continue;
        told = platform::tickMilliseconds() - begin >= patience;
        if (told) printError(formatMessage(Message::rVTWaiting, {name}));
    }
    return true;
}

// The pass over a source up to its first picture.
struct FirstPass {
    FrameStore& frame;      // receives the picture
    int forms = 0;          // image forms met
    bool toTheEnd = false;  // tiles are counted: the forms behind the picture have some, too
};

// The first form with a picture ends the walk unless it goes to the end, a damaged one with its
// error.
int takeForm(void* owner, FrameStore& frame, int error) {
    auto& pass = *static_cast<FirstPass*>(owner);
    ++pass.forms;
    if (error == iffAborted || !frame.hasPicture()) return error;
    if (!pass.frame.hasPicture()) pass.frame = std::move(frame);
    if (error != iffOk) return error;
    return pass.toTheEnd ? int{iffOk} : int{iffParsingComplete};
}

int readFirst(const SequenceState& state, const OpenedSource& source, const ReadTerms& terms,
              FirstPass& pass) {
    ImageLoadRequest request = loadRequest(state, terms.fit, source.stream.file());
    // Forms before the first frame of a one-file animation are passed over.
    if (source.oneFile && state.currentFrame > 1) request.wantedForm = state.currentFrame;
    request.owner = &pass;
    request.formRead = takeForm;
    request.goOn = terms.goOn;
    request.countTile = terms.countTile;
    pass.toTheEnd = bool(terms.countTile);
    FrameStore working;
    const int code = loadImages(request, working);
    if (code == iffAborted) pass.frame.clear();
    return code == iffParsingComplete ? int{iffOk} : code;
}

bool isRegularFile(const OpenedSource& source, const Tstring& name) {
    if (name.empty() || source.throughPipe()) return false;
    return platform::streamStatus(source.stream.file()).kind == platform::StreamKind::regular;
}

bool isInputPipe(const SequenceState& state, const OpenedSource& source, const Tstring& name) {
    return name.empty() && !state.testMode && source.stream &&
           platform::streamStatus(source.stream.file()).kind == platform::StreamKind::fifo;
}

void reportEnd(SequenceState& state, const Tstring& name, int code, bool told,
               const platform::GoOn& goOn) {
    if (state.verbose) platform::writeReport("\n", goOn);
    if (code == iffOk || code == iffAborted || told) return;
    const Tstring reason = errorText(code);
    if (state.told.add(name, reason)) printError(name + ": " + reason);
}

int openSource(SequenceState& state, const Tstring& name, const ReadTerms& terms, bool windowOpen,
               FrameStore& frame) {
    state.openedName = name;
    state.converted->forget();
    state.incomplete.forget();
    OpenedSource source = chooseSource(state, name, state.currentFrame, Reading::first);
    if (isInputPipe(state, source, name)) {
        const InputTaken taken = takeForeignInput(source.stream.file(), terms.goOn);
        if (taken == InputTaken::notWanted) return iffAborted;
        if (taken == InputTaken::failed) {
            std::perror(messageText(Message::rVTStdin).c_str());
            return iffNotIff;
        }
        if (taken == InputTaken::intoFile)
            source = chooseSource(state, name, state.currentFrame, Reading::first);
    }
    const auto stamp = locatedStamp(source);
    source.connect(*state.converted);
    if (!source.stream) return reportNothingOpened(state, source);
    state.sourceOpened = 1;
    // A command is named as the user wrote it.
    const Tstring shownName = namesCommand(name) ? name : source.name;
    const bool regular = isRegularFile(source, name);
    const bool waited = !source.throughPipe() ||
                        awaitCommand(source.stream.file(), shownName, terms.goOn, windowOpen);
    FirstPass pass{frame};
    const int code = waited ? readFirst(state, source, terms, pass) : int{iffAborted};
    const bool partly = code != iffOk && code != iffAborted && frame.hasPicture();
    if (partly && stamp) state.incomplete.note(state.currentFrame, source.located, *stamp);
    if (source.convertedAs && code != iffAborted)
        state.converted->setWrong(source.located, code != iffOk);
    if (code != iffAborted) keepOneFileStream(state, source);
    // A command that the user stopped waiting for is ended; one that wrote its picture may go on.
    const bool told = partly && converterHasTold(source, terms.goOn);
    code == iffAborted ? source.stream.abandon() : source.stream.release(terms.goOn);
    // The early end of what is no file says no more than that no image came: a command that failed
    // writes nothing.
    const bool empty = code == iffOk || (code == iffBrokenPipe && !regular);
    if (pass.forms == 0 && empty) {
        printError(shownName + ": " + messageText(Message::rVTNoImage));
        return iffNotIff;
    }
    reportEnd(state, source.name, code, told, terms.goOn);
    return code;
}

}  // namespace

int openImageSource(SequenceState& state, const Tstring& name, const ReadTerms& terms,
                    bool windowOpen, FrameStore& frame) {
    bool returned = false;
    const int code = withMemory([&] {
        const int result = openSource(state, name, terms, windowOpen, frame);
        returned = true;
        return result;
    });
    if (!returned) {
        std::fprintf(stderr, "%s: ", printable(name).c_str());
        reportError(code);
    }
    return code;
}

}  // namespace vistel
