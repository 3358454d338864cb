#include "app/file_walk.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "app/option_table.h"
#include "app/source_opening.h"
#include "host/messages.h"
#include "platform/files.h"
#include "sequence/frame_listing.h"
#include "sequence/frame_name.h"
#include "sequence/frame_range.h"

namespace vistel {

namespace {

constexpr const char* testModeSource = "Pipe";

bool interrupted(const StartUpServices& services) {
    return services.interrupted && services.interrupted();
}

void printComplaint(const Tstring& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

// Opens and shows the source, and counts it.
void open(const Tstring& name, const StartUpServices& services, FileCounts& counts) {
    const int code = openAndShow(name, services);
    ++counts.processed;
    if (code != 0) ++counts.failed;
}

// The words of the command line, taken one by one.
class WordReader {
 public:
    WordReader(const std::vector<Tstring>& words, size_t first) : words_(words), next_(first) {}
    bool atEnd() const { return next_ >= words_.size(); }
    // The next word; null when there is none.
    const Tstring* take() { return atEnd() ? nullptr : &words_[next_++]; }

 private:
    const std::vector<Tstring>& words_;
    size_t next_;
};

bool opensInlineRange(const Tstring& word) {
    return word.size() >= 2 && word[0] == '-' && (word[1] == 'n' || word[1] == 'N');
}

// How many files the words name, each with its range.
int32_t countFiles(WordReader words) {
    int32_t files = 0;
    while (const Tstring* word = words.take()) {
        const bool range = opensInlineRange(*word);
        const int before = !range ? 0 : word->size() > 2 ? 2 : 3;  // numbers before the name
        for (int i = 0; i < before; ++i) (void)words.take();
        if (!range || words.take()) ++files;
    }
    return files;
}

// "-n5 9 1 name" or "-n 5 9 1 name", the first word taken already. Gives the name; null when words
// are missing.
const Tstring* takeInlineRange(const Tstring& opener, WordReader& words) {
    viewerState.oneFile = opener[1] == 'N' ? 1 : 0;
    viewerState.inter = 1;
    viewerState.animation = 1;
    const Tstring attached = opener.substr(2);
    const Tstring* start = attached.empty() ? words.take() : &attached;
    const Tstring* end = words.take();
    const Tstring* step = words.take();
    const Tstring* name = words.take();
    if (!name) return nullptr;
    const Tstring option = opener.substr(0, 2);
    viewerState.firstFrame = viewerState.currentFrame = wholeNumber(option, *start);
    viewerState.lastFrame = wholeNumber(option, *end);
    viewerState.frameStep = wholeNumber(option, *step);
    return name;
}

// Sets the file name and makes its folder the current one. A relative folder counts from where the
// program was started, so that an earlier file's folder does not matter. A command runs where the
// program was started.
void takeFileName(const Tstring& name) {
    viewerState.fileName = name;
    viewerState.nativeFileName = name.replacingAll('/', '\\');
    if (namesCommand(name)) {
        (void)platform::setCurrentDirectory(viewerState.startDirectory);
        return;
    }
    const size_t lastSeparator = viewerState.nativeFileName.rfind('\\');
    if (lastSeparator == Tstring::npos || lastSeparator == 0) return;
    // A folder that is not there is left to the opener to report.
    const Tstring folder = name.substr(0, lastSeparator);
    (void)platform::setCurrentDirectory(fromStartDirectory(viewerState.startDirectory, folder));
}

// Standard input carries one image only: a range for it is forgotten before anything follows it.
void refuseAnimationFromInput() {
    if (!viewerState.animation) return;
    printComplaint(messageText(Message::rVTNoAnimPipeMode));
    forgetAnimation(viewerState);
}

// The empty name stands for standard input elsewhere; as an argument it names nothing.
void refuseEmptyName(FileCounts& counts) {
    printComplaint(messageText(Message::rVTEmptyName));
    ++counts.processed;
    ++counts.failed;
}

// Opens the file that an argument names, after its range is known.
void showArgument(const Tstring& argument, const StartUpServices& services, FileCounts& counts) {
    const bool standardInput = argument == "-" || argument.equalsIgnoringCase("stdin");
    if (standardInput) refuseAnimationFromInput();
    const Tstring name = standardInput ? argument : discoverSequence(argument, services);
    takeFileName(name);
    normaliseRange(services);
    if (viewerState.verbose)
        platform::writeReport(formatMessage(Message::rVTFileName, {printable(argument)}),
                              viewerState.goOn);
    open(standardInput ? Tstring() : name, services, counts);
}

// One file argument from its first word to the values it leaves behind. False when an inline range
// is incomplete.
bool showNextFile(WordReader& words, CommandLine& line, const StartUpServices& services,
                  FileCounts& counts) {
    viewerState.animation = 0;  // an earlier file's range and padding are its own
    viewerState.padWidth = 0;
    viewerState.nameParts.reset();
    if (!viewerState.sequenceMode) viewerState.failuresTold.clear();
    if (line.rangeGiven) takeRange(viewerState, line.range);
    const PerFileValues values;
    beginSource(services);

    const Tstring* argument = words.take();
    if (opensInlineRange(*argument)) {
        const Tstring& opener = *argument;
        argument = takeInlineRange(opener, words);
        if (!argument) {
            line.outcome = StartUpOutcome::usageWanted;
            line.complaint = formatMessage(Message::rVTMissingArgument, {opener});
            return false;
        }
    }
    if (argument->empty())
        refuseEmptyName(counts);
    else
        showArgument(*argument, services, counts);
    return true;
}

bool walkEnded(const StartUpServices& services) {
    return interrupted(services) || (viewerState.sequenceMode && viewerState.quitRequested);
}

void showFileList(CommandLine& line, const StartUpServices& services, FileCounts& counts) {
    WordReader words(line.words, line.firstFile);
    viewerState.fileCount = countFiles(words);
    viewerState.fileNumber = 0;
    while (!words.atEnd() && !walkEnded(services)) {
        ++viewerState.fileNumber;
        if (!showNextFile(words, line, services, counts)) return;
    }
}

// In sequence mode the list is shown until the user quits or asks for another file. A round in
// which no file opened, or nothing was shown and so no window was made, would be followed by the
// same round without end and without a window to quit from.
void showFilesRepeatedly(CommandLine& line, const StartUpServices& services, FileCounts& counts) {
    while (true) {
        const FileCounts before = counts;
        showFileList(line, services, counts);
        if (line.outcome != StartUpOutcome::goOn || !viewerState.sequenceMode) return;
        if (walkEnded(services) || !viewerState.pendingOpen.empty()) return;
        if (viewerState.windowId < 1) return;
        if (counts.failed - before.failed == counts.processed - before.processed) return;
    }
}

void showTestImage(const StartUpServices& services, FileCounts& counts) {
    if (viewerState.animation) printComplaint(messageText(Message::rVTNoAnimTestMode));
    forgetAnimation(viewerState);
    beginSource(services);
    open(testModeSource, services, counts);
}

void showStandardInput(const StartUpServices& services, FileCounts& counts) {
    viewerState.sequenceMode = 0;
    forgetAnimation(viewerState);
    beginSource(services);
    normaliseRange(services);
    open("", services, counts);
}

}  // namespace

FileCounts walkFiles(CommandLine& line, const StartUpServices& services) {
    FileCounts counts;
    if (viewerState.testMode)
        showTestImage(services, counts);
    else if (line.firstFile < line.words.size())
        showFilesRepeatedly(line, services, counts);
    else if (services.standardInputIsConsole && !services.standardInputIsConsole())
        showStandardInput(services, counts);
    else
        callIfSet(services.runEmptyWindow);
    return counts;
}

void servePendingOpens(const StartUpServices& services) {
    while (!viewerState.pendingOpen.empty() && !interrupted(services)) {
        if (!viewerState.pendingRangeSet && viewerState.animation)
            viewerState.pendingRange = {viewerState.firstFrame, viewerState.lastFrame,
                                        viewerState.frameStep};
        viewerState.pendingRangeSet = 0;
        viewerState.startDirectory = platform::currentDirectory();
        viewerState.quitRequested = 0;
        viewerState.fileNumber = viewerState.fileCount = 0;
        const Tstring name = std::exchange(viewerState.pendingOpen, {});
        const FrameRange range = viewerState.pendingRange;
        (void)reopenSource(name, range, services);
    }
}

}  // namespace vistel
