#include "sequence/frame_sequence.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "app/viewer_state.h"
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

std::vector<std::string> listStemFolder(const Tstring& searchDirectory, const Tstring& folder) {
    if (!searchDirectory.empty()) {
        return platform::listFolder(fromStartDirectory(searchDirectory), folder);
    }
    if (platform::isAbsolutePath(folder)) return platform::listFolder({}, folder);
    return platform::listFolder(viewerState.startDirectory, folder);
}

bool frameExists(const PickedName& picked, int number) {
    const Tstring name = picked.before + paddedNumber(number, viewerState.padWidth) + picked.after;
    return platform::fileExists(fromStartDirectory(name));
}

// The distance to the next file that exists, in the direction of the range.
int findStep(const PickedName& picked) {
    for (int k = 1; k <= widestStep; ++k) {
        const std::optional<int> number = frameNumberAt(viewerState.pendingRange, k);
        if (!number) return 1;
        if (frameExists(picked, *number)) return k;
    }
    return 1;
}

// The last frame of the unbroken run from the start.
int findEnd(const PickedName& picked) {
    int last = viewerState.pendingRange.start;
    for (int k = 1; k < longestRun; ++k) {
        const std::optional<int> number = frameNumberAt(viewerState.pendingRange, k);
        if (!number || !frameExists(picked, *number)) break;
        last = *number;
    }
    return last;
}

void tellTooManyFiles(const Tstring& stem) {
    const Tstring text =
        formatMessage(Message::rVTTooManyFiles, {stem, static_cast<int>(mostNumbers)});
    std::fprintf(stderr, "%s\n", text.c_str());
}

bool isOnlyDots(const Tstring& base) { return base.find_first_not_of('.') == Tstring::npos; }

// A file that is there but cannot be read tells the user more than one that is not there.
int moreTelling(int error, int later) {
    const bool telling = later == EACCES || later == EISDIR;
    return error == 0 || (error == ENOENT && telling) ? later : error;
}

}  // namespace

Tstring fromStartDirectory(const Tstring& name) {
    if (viewerState.startDirectory.empty() || platform::isAbsolutePath(name)) return name;
    return viewerState.startDirectory + "/" + name;
}

int listNumberedFiles(const Tstring& searchDirectory, const Tstring& stem,
                      std::vector<int>& numbers) {
    numbers.clear();
    const StemParts parts = splitStem(stem);
    for (const Tstring name : listStemFolder(searchDirectory, parts.folder)) {
        const std::optional<NumberedFile> file = readNumberedFile(name, parts.base);
        if (!file) continue;
        if (numbers.size() == mostNumbers) {
            tellTooManyFiles(stem);
            break;
        }
        numbers.push_back(file->number);
        if (viewerState.padWidth == 0) viewerState.padWidth = file->zeroWidth;
    }
    return static_cast<int>(numbers.size());
}

int discoverNumberedFiles(const Tstring& stem) {
    std::vector<int> numbers;
    viewerState.padWidth = 0;  // that of the sequence before tells nothing of this one
    const size_t directories = isOnlyDots(splitStem(stem).base) ? 0 : discoveryDirectories;
    for (size_t i = 0; i < directories && numbers.empty(); ++i) {
        listNumberedFiles(viewerState.searchDirs[i], stem, numbers);
    }
    viewerState.animation = numbers.empty() ? 0 : 1;
    if (numbers.empty()) return 0;
    std::sort(numbers.begin(), numbers.end());
    viewerState.firstFrame = numbers.front();
    viewerState.lastFrame = numbers.back();
    const int64_t gap = numbers.size() > 1 ? int64_t{numbers[1]} - numbers[0] : 1;
    viewerState.frameStep =
        static_cast<int32_t>(std::clamp<int64_t>(gap, 1, std::numeric_limits<int32_t>::max()));
    return 1;
}

void patternFromFirstFrame(Tstring& name) {
    FrameRange& range = viewerState.pendingRange;
    const std::optional<PickedName> picked = splitPickedName(name);
    if (!picked) {
        viewerState.padWidth = 1;
        range = {};
        return;
    }
    viewerState.padWidth = picked->padWidth;
    range.start = picked->number;
    range.step = 1;
    name = picked->before + "#" + picked->after;
    range.step = findStep(*picked);
    if (range.end == 0) range.end = findEnd(*picked);
}

Tstring frameName(const Tstring& pattern, int k) {
    const std::optional<int> number = frameNumberAt(viewerState.pendingRange, k);
    if (!number) return {};
    return hashReplaced(pattern, *number, viewerState.padWidth);
}

void takePadWidthFromAtSigns(const Tstring& name) {
    const Tstring base = name.substr(baseNameStart(name));
    const int width = base.find('#') == Tstring::npos ? atSignWidth(base) : 0;
    if (width > 0 && viewerState.padWidth < 1) viewerState.padWidth = width;
}

Tstring frameFilePath(const Tstring& directory, const Tstring& name) {
    return fromStartDirectory(Tstring(directory + name).replacingAll('\\', '/'));
}

FILE* locateFrameFile(const Tstring& name, Tstring& located) {
    int error = 0;
    for (Tstring& directory : viewerState.searchDirs) {
        Tstring candidate = frameFilePath(directory, name);
        if (FILE* file = platform::openFile(candidate, "r")) {
            std::swap(directory, viewerState.searchDirs.front());
            located = std::move(candidate);
            return file;
        }
        error = moreTelling(error, errno);
    }
    errno = error;
    return nullptr;
}

}  // namespace vistel
