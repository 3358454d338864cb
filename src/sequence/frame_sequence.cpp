#include "sequence/frame_sequence.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "host/messages.h"
#include "platform/files.h"
#include "sequence/frame_listing.h"
#include "sequence/frame_name.h"
#include "sequence/frame_pattern.h"

namespace vistel {

namespace {

constexpr size_t discoveryDirectories = 5;  // the sixth is for single frames only
constexpr int widestStep = 9;
// No run of frames is longer than this, whatever a file system claims to hold.
constexpr int longestRun = 10'000'000;

// A frame that the user has picked, and where its neighbours are looked for.
struct PickedFrame {
    PickedName name;
    FrameRange range;
    Tstring startDirectory;

    bool exists(int number) const {
        const Tstring file = name.before + paddedNumber(number, name.padWidth) + name.after;
        return platform::fileExists(fromStartDirectory(startDirectory, file));
    }
};

// The distance to the next file that exists, in the direction of the range.
int findStep(const PickedFrame& picked) {
    for (int k = 1; k <= widestStep; ++k) {
        const std::optional<int> number = frameNumberAt(picked.range, k);
        if (!number) return 1;
        if (picked.exists(*number)) return k;
    }
    return 1;
}

// The last frame of the unbroken run from the start.
int findEnd(const PickedFrame& picked) {
    int last = picked.range.start;
    for (int k = 1; k < longestRun; ++k) {
        const std::optional<int> number = frameNumberAt(picked.range, k);
        if (!number || !picked.exists(*number)) break;
        last = *number;
    }
    return last;
}

// The files of the first search directory that has some.
std::vector<NumberedFile> firstListing(const FramePlaces& places, const Tstring& stem) {
    std::vector<NumberedFile> files;
    for (size_t i = 0; i < discoveryDirectories && files.empty(); ++i)
        files = listNumberedFiles(places.startDirectory, places.searchDirs[i], stem);
    return files;
}

// The range from the smallest to the largest, in steps of the two smallest.
void takeNumbers(std::vector<int> numbers, FramePosition& position) {
    std::ranges::sort(numbers);
    position.animation = 1;
    position.firstFrame = numbers.front();
    position.lastFrame = numbers.back();
    const int64_t gap = numbers.size() > 1 ? int64_t{numbers[1]} - numbers[0] : 1;
    position.frameStep =
        static_cast<int32_t>(std::clamp<int64_t>(gap, 1, std::numeric_limits<int32_t>::max()));
}

// What follows the numbers of a stem: nothing, or what follows each of them.
Tstring suffixOf(const std::vector<NumberedFile>& files) {
    const Tstring& suffix = files.front().after;
    const bool common = std::ranges::all_of(files, [&](const NumberedFile& file) {
        return !file.written.empty() && file.after == suffix;
    });
    return common ? suffix : Tstring();
}

// The first frame is not there when a file without a number counts as it; files with a suffix are
// left out where others have none.
void tellOtherFiles(const Tstring& stem, const std::vector<NumberedFile>& files,
                    const NameParts& taken) {
    const NumberedFile *stray = nullptr, *suffixed = nullptr;
    bool zero = false, plain = false;
    for (const NumberedFile& file : files) {
        const bool numbered = !file.written.empty();
        if (!numbered) stray = &file;
        if (numbered && file.number == 0) zero = true;
        if (numbered && file.after.empty()) plain = true;
        if (numbered && !file.after.empty()) suffixed = &file;
    }
    if (stray && !zero)
        printError(formatMessage(Message::rVTStrayFile, {stem + stray->after, stem}));
    if (!plain || !suffixed) return;
    const Tstring other = writtenPattern({taken.before, suffixed->after}, suffixed->zeroWidth);
    if (!other.empty()) printError(formatMessage(Message::rVTSuffixLeftOut, {stem, other}));
}

// The digits with which most of the files fit the pattern.
int widthOf(const FramePattern& pattern, const std::vector<NumberedFile>& files) {
    std::vector<int> widths = {pattern.width};
    if (pattern.anyWidth) {
        widths.push_back(1);
        for (const NumberedFile& file : files)
            if (std::ranges::find(widths, file.zeroWidth) == widths.end())
                widths.push_back(file.zeroWidth);
    }
    const auto fitting = [&](int width) {
        return std::ranges::count_if(files, [&](const NumberedFile& file) {
            return file.written == paddedNumber(file.number, width);
        });
    };
    return *std::ranges::max_element(widths, {}, fitting);
}

// The files that the pattern stands for.
int discoverPattern(const FramePlaces& places, const Tstring& name, const FramePattern& pattern,
                    FramePosition& position) {
    std::vector<NumberedFile> files = firstListing(places, pattern.parts.before);
    std::erase_if(files, [&](const NumberedFile& file) {
        return file.written.empty() || file.after != pattern.parts.after ||
               file.number < pattern.first || file.number > pattern.last;
    });
    const int width = widthOf(pattern, files);
    std::vector<int> numbers;
    for (const NumberedFile& file : files)
        if (file.written == paddedNumber(file.number, width)) numbers.push_back(file.number);
    if (numbers.empty()) return 0;
    FramePosition frames;
    takeNumbers(std::move(numbers), frames);
    if (existsInPlaces(places, name)) {
        const Tstring unmistakable = writtenPattern(pattern.parts, width);
        printError(formatMessage(Message::rVTFileTaken,
                                 {name, frames.firstFrame, frames.lastFrame, frames.frameStep,
                                  unmistakable.empty() ? name : unmistakable}));
        return 0;
    }
    if (pattern.rangeWritten &&
        (frames.firstFrame != pattern.first || frames.lastFrame != pattern.last))
        printError(
            formatMessage(Message::rVTRangeFound, {name, frames.firstFrame, frames.lastFrame}));
    position = std::move(frames);
    position.padWidth = width;
    position.nameParts = pattern.parts;
    return 1;
}

// A range was given: the name stands for itself with a number behind it, unless there is no such
// file and "%04d" in it finds one.
int takePrintfPattern(const FramePlaces& places, const Tstring& name, const FramePattern& pattern,
                      FramePosition& position) {
    const NumberStyle style{pattern.width, false};
    if (!pattern.printfStyle || existsInPlaces(places, numberedName(name, position.firstFrame, {})))
        return 0;
    if (!existsInPlaces(places, nameOfParts(pattern.parts, position.firstFrame, style))) return 0;
    position.padWidth = pattern.width;
    position.nameParts = pattern.parts;
    return 1;
}

// A file that is there but cannot be read tells the user more than one that is not there.
int moreTelling(int error, int later) {
    const bool telling = later == EACCES || later == EISDIR;
    return error == 0 || (error == ENOENT && telling) ? later : error;
}

}  // namespace

int discoverNumberedFiles(const FramePlaces& places, const Tstring& stem, FramePosition& position) {
    position.padWidth = 0;  // that of the sequence before tells nothing of this one
    position.nameParts.reset();
    const bool folder = splitStem(stem).base.find_first_not_of('.') == Tstring::npos;  // ".."
    const std::vector<NumberedFile> files =
        folder ? std::vector<NumberedFile>{} : firstListing(places, stem);
    position.animation = files.empty() ? 0 : 1;
    if (files.empty()) return 0;
    std::vector<int> numbers;
    for (const NumberedFile& file : files) {
        numbers.push_back(file.number);
        if (position.padWidth == 0) position.padWidth = file.zeroWidth;
    }
    takeNumbers(std::move(numbers), position);
    position.nameParts = NameParts{stem, suffixOf(files)};
    tellOtherFiles(stem, files, *position.nameParts);
    return 1;
}

int discoverFrames(const FramePlaces& places, const Tstring& name, FramePosition& position) {
    const bool rangeGiven = position.animation != 0;
    if (name.ends_with('.') && discoverNumberedFiles(places, name, position)) return 1;
    const std::optional<FramePattern> pattern = readFramePattern(name);
    if (!pattern) return 0;
    return rangeGiven ? takePrintfPattern(places, name, *pattern, position)
                      : discoverPattern(places, name, *pattern, position);
}

void patternFromFirstFrame(const Tstring& startDirectory, Tstring& name, FrameRange& range,
                           int32_t& padWidth) {
    const std::optional<PickedName> split = splitPickedName(name);
    if (!split) {
        padWidth = 1;
        range = {};
        return;
    }
    padWidth = split->padWidth;
    range.start = split->number;
    range.step = 1;
    PickedFrame picked{*split, range, startDirectory};
    name = split->before + "#" + split->after;
    picked.range.step = range.step = findStep(picked);
    if (range.end == 0) range.end = findEnd(picked);
}

Tstring frameName(const Tstring& pattern, const FrameRange& range, int k, int padWidth) {
    const std::optional<int> number = frameNumberAt(range, k);
    if (!number) return {};
    return hashReplaced(pattern, *number, padWidth);
}

void takePadWidthFromAtSigns(const Tstring& name, int32_t& padWidth) {
    const Tstring base = name.substr(baseNameStart(name));
    const int width = base.find('#') == Tstring::npos ? atSignWidth(base) : 0;
    if (width > 0 && padWidth < 1) padWidth = width;
}

FILE* locateFrameFile(FramePlaces& places, const Tstring& name, Tstring& located) {
    int error = 0;
    for (Tstring& directory : places.searchDirs) {
        Tstring candidate = frameFilePath(places.startDirectory, directory, name);
        if (FILE* file = platform::openFile(candidate, "r")) {
            std::swap(directory, places.searchDirs.front());
            located = std::move(candidate);
            return file;
        }
        error = moreTelling(error, errno);
    }
    errno = error;
    return nullptr;
}

}  // namespace vistel
