#include "sequence/frame_reader.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "iff/with_memory.h"
#include "sequence/form_reader.h"
#include "sequence/source_choice.h"

namespace vistel {

namespace {

// One reading on its way: the parts that it works on, and what it comes to.
struct FrameReading {
    SequenceState& state;
    const ReadTerms& terms;
    FrameStore& frame;
    FrameRead& result;
    bool partly = false;  // `frame` is a part of a damaged one

    int failed(int code, const Tstring& reason) {
        result.reason = reason;
        return code;
    }
    int noSuchForm() { return failed(iffNotIff, messageText(Message::rVTNoImage)); }
    int nothingOpened(const OpenedSource& source);
    int readOpened(OpenedSource& source, int form, bool& found);
    int readStream(OpenedSource& source, int form);
    int readFrameFile(OpenedSource& source);
    int read(int number);
};

int FrameReading::nothingOpened(const OpenedSource& source) {
    return failed(iffNotIff, source.complaint.empty() ? Tstring(std::strerror(source.systemError))
                                                      : source.complaint);
}

int FrameReading::readOpened(OpenedSource& source, int form, bool& found) {
    ImageLoadRequest request = loadRequest(state, terms.fit, source.stream.file());
    request.goOn = terms.goOn;
    const int code = readForm(request, form, frame, found);
    partly = found && code != iffOk && frame.hasPicture();
    int exitStatus = 0;
    if (code != iffAborted) keepOneFileStream(state, source);
    if (code == iffAborted) {
        source.stream.abandon();
    } else if (partly) {
        result.told = converterHasTold(source, terms.goOn);
        source.stream.release(terms.goOn);
    } else if (found || code != iffBrokenPipe) {
        source.stream.release(terms.goOn);
    } else {
        exitStatus = lastStatus(source.stream, terms.goOn);
    }
    if (!found && code == iffBrokenPipe && exitStatus != 0) return noSuchForm();
    if (code != iffOk) return failed(code, errorText(code));
    return found ? int{iffOk} : noSuchForm();
}

// A file that its converter cannot read is told of once and not converted again before it changes:
// playing comes by it over and over.
int FrameReading::readStream(OpenedSource& source, int form) {
    if (source.reader != SourceReader::direct && !source.oneFile) {
        const auto stamp = platform::fileStamp(source.stream.file());
        const auto known = stamp ? state.converted->failure(source.located, *stamp) : std::nullopt;
        if (known) return failed(known->code, known->reason);
    }
    source.connect(*state.converted);
    if (!source.stream) return nothingOpened(source);
    bool found = false;
    const int code = readOpened(source, form, found);
    if (source.convertedAs && code != iffAborted)
        state.converted->setWrong(source.located, code != iffOk);
    const bool final = !found && code != iffAborted && code != iffNoMemory;
    if (final && source.convertedAs && !source.oneFile)
        state.converted->remember(source.located, *source.convertedAs,
                                  FailedReading{code, result.reason});
    return code;
}

// A frame that has a file of its own, which has just been opened: it may have been read ahead.
int FrameReading::readFrameFile(OpenedSource& source) {
    using Taken = ReadAhead::Taken;
    Taken taken = Taken::nothing;
    if (terms.ahead && !source.located.empty()) {
        if (const auto stamp = platform::fileStamp(source.stream.file()))
            taken = terms.ahead->take(source.located, loadRequest(state, terms.fit, nullptr),
                                      *stamp, terms.goOn, frame);
    }
    if (taken == Taken::nothing) return readStream(source, 1);
    return taken == Taken::frame ? int{iffOk} : failed(iffAborted, errorText(iffAborted));
}

int FrameReading::read(int number) {
    OpenedSource source = chooseSource(state, state.openedName, number, Reading::again);
    if (terms.retry == Retry::asked) state.converted->forget(source.located);
    result.name = source.name;
    if (!source.stream) return nothingOpened(source);
    const auto stamp = locatedStamp(source);
    int code = iffOk;
    if (!source.oneFile)
        code = readFrameFile(source);
    else  // forms are counted from 1
        code = number < 1 ? noSuchForm() : readStream(source, number);
    if (code == iffOk)
        state.incomplete.forget(number);
    else if (partly && stamp)
        state.incomplete.note(number, source.located, *stamp);
    return code;
}

}  // namespace

ImageLoadRequest loadRequest(const LoadOptions& options, const DisplayFit& fit, FILE* stream) {
    ImageLoadRequest request;
    request.stream = stream;
    request.verbose = options.verbose != 0;
    request.loadPixels = options.inter != 0;
    request.decodeColour = options.histogram == 0;
    request.showAll = options.showAll != 0;
    request.loadZ = options.loadZ != 0;
    request.maxLevel = options.maxLevel;
    request.waitForWriter = options.synchro != 0;
    request.fit = fit;
    return request;
}

FrameRead readFrame(SequenceState& state, int number, const ReadTerms& terms, FrameStore& frame) {
    FrameRead result;
    FrameReading reading{state, terms, frame, result};
    result.code = withMemory([&] { return reading.read(number); });
    if (result.code == iffNoMemory && result.reason.empty())
        (void)withMemory([&] { return reading.failed(iffNoMemory, errorText(iffNoMemory)); });
    return result;
}

void tellBadFrame(SequenceState& state, int number, const FrameRead& read) {
    if (!read.told && state.told.add(read.name, read.reason))
        printError(formatMessage(Message::rVTFrameUnreadable, {read.name, read.reason, number}));
}

// Without memory for it a frame is simply not read ahead.
void wantFrames(const SequenceState& state, std::span<const int> numbers, const DisplayFit& fit,
                ReadAhead& ahead) try {
    for (const int number : numbers.first(std::min(numbers.size(), ahead.room()))) {
        const Tstring path = likelyFramePath(state, number);
        if (!path.empty()) ahead.want(path, loadRequest(state, fit, nullptr));
    }
} catch (const std::bad_alloc&) {
}

}  // namespace vistel
