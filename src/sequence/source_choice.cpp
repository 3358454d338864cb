#include "sequence/source_choice.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/messages.h"
#include "platform/files.h"
#include "platform/process.h"
#include "sequence/frame_listing.h"
#include "sequence/frame_name.h"
#include "sequence/frame_sequence.h"
#include "sequence/frame_suggestion.h"

namespace vistel {

namespace {

OpenedSource openFile(SequenceState& state, const Tstring& name) {
    return openFrameFile(state, name, state.synchro != 0);
}

NumberStyle numberStyle(const SequenceState& state) { return {state.padWidth, state.padNum != 0}; }

Tstring folderOf(const Tstring& name) {
    const size_t base = baseNameStart(name);
    if (base < 2) return {};
    const bool drive = name[base - 2] == ':';
    return name.substr(0, base - (drive ? 0 : 1));
}

// The numbered name; when no such file exists, the name in which marks of folders do not count. The
// source is named by the second when the folder is really called so.
OpenedSource openNumberedFile(SequenceState& state, const Tstring& pattern, int number) {
    if (state.nameParts)
        return openFile(state, nameOfParts(*state.nameParts, number, numberStyle(state)));
    takePadWidthFromAtSigns(pattern, state.padWidth);
    OpenedSource opened = openFile(state, numberedName(pattern, number, numberStyle(state)));
    if (opened.stream && state.padWidth < 1 && pattern.find('#') == Tstring::npos)
        state.padWidth = atSignWidth(pattern);  // a run that is told by the whole pattern
    if (!opened.missing()) return opened;
    const std::optional<Tstring> inFolder =
        numberedNameInFolder(pattern, number, numberStyle(state));
    if (!inFolder) return opened;
    OpenedSource second = openFile(state, *inFolder);
    const Tstring folder = fromStartDirectory(state.startDirectory, folderOf(pattern));
    return second.missing() && !platform::fileExists(folder) ? std::move(opened)
                                                             : std::move(second);
}

// The first of these numbers at which the steps of the range from a frame on arrive, the one past
// its end included.
std::optional<int> nextStep(const FramePosition& position, const std::vector<int>& numbers,
                            int64_t from) {
    const int64_t step = std::max(position.frameStep, 1);
    for (const int64_t number : numbers) {
        if (number - step > position.lastFrame) break;
        if (number > from && (number - from) % step == 0) return static_cast<int>(number);
    }
    return std::nullopt;
}

// The next frame behind the current one that exists under its unpadded name.
std::optional<int> nextUnpaddedFrame(const SequenceState& state, const Tstring& pattern) {
    std::vector<int> numbers = numbersBetween(state, {pattern + ".", {}});
    std::erase_if(
        numbers, [&](int number) { return !existsInPlaces(state, unpaddedName(pattern, number)); });
    return nextStep(state, numbers, state.currentFrame);
}

// Moves currentFrame on to the first frame that exists under its unpadded name; the one past the
// last counts, too.
OpenedSource openFirstThatExists(SequenceState& state, const Tstring& pattern,
                                 OpenedSource missing) {
    missing.name = pattern;
    if (const std::optional<int> found = nextUnpaddedFrame(state, pattern)) {
        state.currentFrame = *found;
        return openFile(state, unpaddedName(pattern, *found));
    }
    return missing;
}

// Names the pattern, the file that was looked for, and the system's reason, and what would work.
void tellAnimationNotFound(const SequenceState& state, const Tstring& pattern,
                           const OpenedSource& source) {
    const Tstring reason = std::strerror(source.systemError);
    if (state.failuresTold.contains(source.name + ": " + reason)) return;
    printError(formatMessage(Message::rVTAnimationNotFound, {pattern, source.name, reason}));
    if (state.oneFile) return;
    if (nextUnpaddedFrame(state, pattern)) printError(messageText(Message::rVTFindFirstHint));
    suggestFrames(state, pattern);
}

// A file that is open already is read from its start again. A pipe cannot be: it is opened once
// more.
OpenedSource openOneFile(SequenceState& state, const Tstring& name) {
    SourceStream kept = std::move(state.oneFileStream);
    OpenedSource source;
    if (kept && platform::seekStream(kept.file(), 0, SEEK_SET)) {
        source.stream = std::move(kept);
        source.name = name;
    } else {
        source = openFile(state, name);
    }
    source.oneFile = true;
    return source;
}

OpenedSource openAnimationFrame(SequenceState& state, const Tstring& pattern, int number,
                                Reading reading) {
    OpenedSource source =
        state.oneFile ? openOneFile(state, pattern) : openNumberedFile(state, pattern, number);
    const bool search = state.findFirst && !state.oneFile;
    if (!source.missing()) return source;
    if (reading == Reading::again)  // what was found by its unpadded name is read again by it
        return search ? openFile(state, unpaddedName(pattern, number)) : std::move(source);
    if (state.sourceOpened) return source;
    if (search) return openFirstThatExists(state, pattern, std::move(source));
    tellAnimationNotFound(state, pattern, source);
    source.notFoundTold = true;
    return source;
}

// The file's folder becomes the current one; a relative one counts from where the file argument was
// given, as its name does.
OpenedSource openSingleFile(SequenceState& state, const Tstring& name, Reading reading) {
    state.sourceName = name;
    OpenedSource source = openFile(state, name);
    if (!source.stream || reading == Reading::again) return source;
    const Tstring folder = folderOf(name);
    if (!folder.empty())
        (void)platform::setCurrentDirectory(fromStartDirectory(state.startDirectory, folder));
    state.sourceFolder = platform::currentDirectory();
    return source;
}

// A command runs in the folder in which the argument was given, whatever folders were entered
// since.
OpenedSource startCommand(SequenceState& state, const Tstring& name, int number) {
    const Tstring command = name.substr(commandPrefix.size());
    OpenedSource source;
    if (command.find_first_not_of(" \t") == Tstring::npos) {
        source.complaint = formatMessage(Message::rVTEmptyCommand, {name});
    } else {
        if (!state.startDirectory.empty())
            (void)platform::setCurrentDirectory(state.startDirectory);
        source = openFrameCommand(command, number);
    }
    state.sourceName = name;
    source.name = messageText(Message::rVTPipedCmd);
    return source;
}

bool rewindStandardInput() {
    const SourceStream input(platform::duplicateStandardStream(0, "r+"), false);
    return input && platform::seekStream(input.file(), 0, SEEK_SET);
}

OpenedSource takeStandardInput(SequenceState& state, Reading reading) {
    // What was read once is there a second time only when it comes from a file.
    const bool there = reading == Reading::first || rewindStandardInput();
    const int error = errno;
    OpenedSource source = openStandardInput();
    source.name = state.sourceName = messageText(Message::rVTStdin);
    if (there || !source.stream) return source;
    source.systemError = error;
    source.stream.release();
    return source;
}

OpenedSource startTest(SequenceState& state, const Tstring& name) {
    OpenedSource source = openTestOutput();
    source.name = name;
    state.sourceName = messageText(Message::rVTPipedCmd);
    return source;
}

OpenedSource openSingleStream(SequenceState& state, const Tstring& name, int number,
                              Reading reading) {
    if (state.testMode) return startTest(state, name);
    if (name.empty()) return takeStandardInput(state, reading);
    if (namesCommand(name)) return startCommand(state, name, number);
    return openSingleFile(state, name, reading);
}

bool namesFrames(const SequenceState& state, const Tstring& name) {
    return state.animation && name.find(commandPrefix) == Tstring::npos;
}

}  // namespace

OpenedSource chooseSource(SequenceState& state, const Tstring& name, int number, Reading reading) {
    const bool frames = namesFrames(state, name);
    if (reading == Reading::first) state.sourceIsPipe = 0;
    OpenedSource source = frames ? openAnimationFrame(state, name, number, reading)
                                 : openSingleStream(state, name, number, reading);
    if (source.stream || !frames) state.sourceIsPipe = source.stream && source.throughPipe();
    return source;
}

void keepOneFileStream(SequenceState& state, OpenedSource& source) {
    if (source.oneFile && !source.throughPipe()) state.oneFileStream = std::move(source.stream);
}

Tstring likelyFrameName(const SequenceState& state, int frame) {
    if (!namesFrames(state, state.openedName) || state.oneFile || state.testMode) return {};
    if (state.nameParts) return nameOfParts(*state.nameParts, frame, numberStyle(state));
    return numberedName(state.openedName, frame, numberStyle(state));
}

Tstring likelyFramePath(const SequenceState& state, int frame) {
    const Tstring name = likelyFrameName(state, frame);
    if (name.empty()) return {};
    return frameFilePath(state.startDirectory, state.searchDirs.front(), name);
}

std::optional<int> nextListedFrame(const SequenceState& state, int after) {
    std::vector<NameParts> names = partsOfPattern(state.openedName);
    if (state.nameParts) names = {*state.nameParts};
    if (state.findFirst) names.push_back({state.openedName + ".", {}});
    std::vector<int> numbers;
    for (const NameParts& parts : names)
        std::ranges::copy(numbersBetween(state, parts), std::back_inserter(numbers));
    std::ranges::sort(numbers);
    return nextStep(state, numbers, after);
}

}  // namespace vistel
