#include "sequence/frame_suggestion.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "host/messages.h"
#include "sequence/frame_listing.h"
#include "sequence/frame_name.h"
#include "sequence/frame_pattern.h"

namespace vistel {

namespace {

constexpr size_t mostSuggestions = 3;

// Numbered files whose names differ in the number alone.
struct Group {
    NameParts parts;
    int first = 0, last = 0, width = 1;
    size_t files = 0;

    void add(const PickedName& picked) {
        first = files ? std::min(first, picked.number) : picked.number;
        last = files ? std::max(last, picked.number) : picked.number;
        width = std::max(width, picked.padWidth);
        ++files;
    }
};

// The number of "shot.0001.jp2" is 1: that of an extension comes last.
std::optional<PickedName> splitBeforeExtension(const Tstring& name) {
    const size_t dot = name.rfind('.');
    if (dot == Tstring::npos || Tstring(name.substr(dot + 1)).isInt32())
        return splitPickedName(name);
    std::optional<PickedName> picked = splitPickedName(name.substr(0, dot));
    if (picked) picked->after += name.substr(dot);
    return picked;
}

// What the files that may be meant begin with.
Tstring beginningOf(const Tstring& base) {
    return base.substr(0, std::min(base.find_first_of("#@%0123456789"), base.rfind('.')));
}

bool isLetter(char c) {
    const char lower = lowerCase(c);
    return (lower >= 'a' && lower <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

bool beginsWith(const Tstring& name, const Tstring& beginning) {
    if (!name.starts_with(beginning)) return false;
    return beginning.empty() || name.size() == beginning.size() ||
           !isLetter(name[beginning.size()]);
}

// The groups in one folder, the largest first.
std::vector<Group> groupsIn(const FramePlaces& places, const Tstring& directory,
                            const Tstring& name) {
    const size_t base = baseNameStart(name);
    const Tstring folder = name.substr(0, base), beginning = beginningOf(name.substr(base));
    std::map<std::pair<Tstring, Tstring>, Group> found;
    for (const Tstring file : listFolderOf(places.startDirectory, directory, name)) {
        const auto picked = splitBeforeExtension(file);
        if (!picked || !beginsWith(picked->before, beginning)) continue;
        Group& group = found[{picked->before, picked->after}];
        group.parts = {folder + picked->before, picked->after};
        group.add(*picked);
    }
    std::vector<Group> groups;
    for (const auto& [key, group] : found)
        if (group.files > 1 || !beginning.empty()) groups.push_back(group);
    std::ranges::stable_sort(groups, std::greater{}, &Group::files);
    return groups;
}

void suggest(const Group& group) {
    const Tstring pattern = writtenPattern(group.parts, group.width);
    if (pattern.empty()) return;
    const bool one = group.first == group.last;
    printError(one ? formatMessage(Message::rVTFrameHint, {pattern, group.first})
                   : formatMessage(Message::rVTFramesHint, {pattern, group.first, group.last}));
}

}  // namespace

void suggestFrames(const FramePlaces& places, const Tstring& name) {
    for (const Tstring& directory : places.searchDirs) {
        const std::vector<Group> groups = groupsIn(places, directory, name);
        std::ranges::for_each(
            groups.begin(),
            groups.begin() + static_cast<std::ptrdiff_t>(std::min(groups.size(), mostSuggestions)),
            suggest);
        if (!groups.empty()) return;
    }
}

}  // namespace vistel
