#include "sequence/frame_sequence.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "host/messages.h"
#include "platform/files.h"
#include "sequence/frame_name.h"

namespace vistel {

namespace {

constexpr size_t mostNumbers = 4095;
constexpr size_t discoveryDirectories = 5;  // the sixth is for single frames only
constexpr int widestStep = 9;
// No run of frames is longer than this, whatever a file system claims to hold.
constexpr int longestRun = 10'000'000;

std::vector<std::string> listStemFolder(const Tstring& startDirectory,
                                        const Tstring& searchDirectory, const Tstring& folder) {
    if (!searchDirectory.empty())
        return platform::listFolder(fromStartDirectory(startDirectory, searchDirectory), folder);
    if (platform::isAbsolutePath(folder)) return platform::listFolder({}, folder);
    return platform::listFolder(startDirectory, folder);
}

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

bool isOnlyDots(const Tstring& base) { return base.find_first_not_of('.') == Tstring::npos; }

// A file that is there but cannot be read tells the user more than one that is not there.
int moreTelling(int error, int later) {
    const bool telling = later == EACCES || later == EISDIR;
    return error == 0 || (error == ENOENT && telling) ? later : error;
}

}  // namespace

Tstring fromStartDirectory(const Tstring& startDirectory, const Tstring& name) {
    if (startDirectory.empty() || platform::isAbsolutePath(name)) return name;
    return startDirectory + "/" + name;
}

int listNumberedFiles(const Tstring& startDirectory, const Tstring& searchDirectory,
                      const Tstring& stem, std::vector<int>& numbers, int32_t& padWidth) {
    numbers.clear();
    const StemParts parts = splitStem(stem);
    for (const Tstring name : listStemFolder(startDirectory, searchDirectory, parts.folder)) {
        const std::optional<NumberedFile> file = readNumberedFile(name, parts.base);
        if (!file) continue;
        if (numbers.size() == mostNumbers) {
            printError(
                formatMessage(Message::rVTTooManyFiles, {stem, static_cast<int>(mostNumbers)}));
            break;
        }
        numbers.push_back(file->number);
        if (padWidth == 0) padWidth = file->zeroWidth;
    }
    return static_cast<int>(numbers.size());
}

int discoverNumberedFiles(const FramePlaces& places, const Tstring& stem, FramePosition& position) {
    std::vector<int> numbers;
    position.padWidth = 0;  // that of the sequence before tells nothing of this one
    const size_t directories = isOnlyDots(splitStem(stem).base) ? 0 : discoveryDirectories;
    for (size_t i = 0; i < directories && numbers.empty(); ++i)
        listNumberedFiles(places.startDirectory, places.searchDirs[i], stem, numbers,
                          position.padWidth);
    position.animation = numbers.empty() ? 0 : 1;
    if (numbers.empty()) return 0;
    std::sort(numbers.begin(), numbers.end());
    position.firstFrame = numbers.front();
    position.lastFrame = numbers.back();
    const int64_t gap = numbers.size() > 1 ? int64_t{numbers[1]} - numbers[0] : 1;
    position.frameStep =
        static_cast<int32_t>(std::clamp<int64_t>(gap, 1, std::numeric_limits<int32_t>::max()));
    return 1;
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

Tstring frameFilePath(const Tstring& startDirectory, const Tstring& searchDirectory,
                      const Tstring& name) {
    return fromStartDirectory(startDirectory,
                              Tstring(searchDirectory + name).replacingAll('\\', '/'));
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
