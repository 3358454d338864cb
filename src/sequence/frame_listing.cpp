#include "sequence/frame_listing.h"

#include <algorithm>

#include "host/messages.h"
#include "platform/files.h"

namespace vistel {

namespace {

constexpr size_t mostNumbers = 4095;

bool startsWithIgnoringCase(const Tstring& text, const Tstring& start) {
    return Tstring(text.substr(0, start.size())).equalsIgnoringCase(start);
}

}  // namespace

Tstring fromStartDirectory(const Tstring& startDirectory, const Tstring& name) {
    if (startDirectory.empty() || platform::isAbsolutePath(name)) return name;
    return startDirectory + "/" + name;
}

Tstring frameFilePath(const Tstring& startDirectory, const Tstring& searchDirectory,
                      const Tstring& name) {
    return fromStartDirectory(startDirectory,
                              Tstring(searchDirectory + name).replacingAll('\\', '/'));
}

std::vector<std::string> listFolderOf(const Tstring& startDirectory, const Tstring& searchDirectory,
                                      const Tstring& name) {
    const Tstring folder = splitStem(name).folder;
    if (!searchDirectory.empty())
        return platform::listFolder(fromStartDirectory(startDirectory, searchDirectory), folder);
    if (platform::isAbsolutePath(folder)) return platform::listFolder({}, folder);
    return platform::listFolder(startDirectory, folder);
}

std::vector<NumberedFile> listNumberedFiles(const Tstring& startDirectory,
                                            const Tstring& searchDirectory, const Tstring& stem) {
    std::vector<NumberedFile> files;
    const Tstring base = splitStem(stem).base;
    for (const Tstring name : listFolderOf(startDirectory, searchDirectory, stem)) {
        std::optional<NumberedFile> file = readNumberedFile(name, base);
        if (!file) continue;
        if (files.size() == mostNumbers) {
            printError(
                formatMessage(Message::rVTTooManyFiles, {stem, static_cast<int>(mostNumbers)}));
            break;
        }
        files.push_back(std::move(*file));
    }
    return files;
}

std::vector<int> numbersBetween(const FramePlaces& places, const NameParts& parts) {
    std::vector<int> numbers;
    const Tstring base = splitStem(parts.before).base;
    // What the folder that lists the frames' names shows of them behind their number: the rest of
    // the name, or up to the separator where the number is that of a folder.
    const Tstring after = parts.after.substr(0, parts.after.find_first_of("/\\"));
    for (const Tstring& directory : places.searchDirs) {
        for (const Tstring name : listFolderOf(places.startDirectory, directory, parts.before)) {
            if (!startsWithIgnoringCase(name, base)) continue;
            const auto file = readNumberedFile(name, name.substr(0, base.size()));
            if (!file->written.empty() && file->after.equalsIgnoringCase(after))
                numbers.push_back(file->number);
        }
    }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

bool existsInPlaces(const FramePlaces& places, const Tstring& name) {
    return std::ranges::any_of(places.searchDirs, [&](const Tstring& directory) {
        return platform::fileExists(frameFilePath(places.startDirectory, directory, name));
    });
}

}  // namespace vistel
