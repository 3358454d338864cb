#include "sequence/frame_pattern.h"

#include <algorithm>

namespace vistel {

namespace {

constexpr std::string_view digits = "0123456789";
constexpr int usualWidth = 4;  // of a "#"

// "%d" and "%04d", the last one of the name.
std::optional<FramePattern> readPrintfMark(const Tstring& name, size_t base) {
    const size_t percent = name.rfind('%');
    if (percent == Tstring::npos || percent < base) return std::nullopt;
    const size_t end = std::min(name.find_first_not_of(digits, percent + 1), name.size());
    const Tstring width = name.substr(percent + 1, end - percent - 1);
    if (end == name.size() || name[end] != 'd') return std::nullopt;
    if (!width.empty() && width[0] != '0') return std::nullopt;
    FramePattern pattern;
    pattern.parts = {name.substr(0, percent), name.substr(end + 1)};
    pattern.width = std::min(width.asInt32(), widestNumber);
    pattern.printfStyle = true;
    return pattern;
}

// "0001-0100", the last such pair of the name.
std::optional<FramePattern> readWrittenRange(const Tstring& name, size_t base) {
    for (size_t dash = name.rfind('-'); dash != Tstring::npos && dash > base;
         dash = name.rfind('-', dash - 1)) {
        const size_t end = std::min(name.find_first_not_of(digits, dash + 1), name.size());
        const size_t before = name.find_last_not_of(digits, dash - 1);
        const size_t begin = before == Tstring::npos ? base : std::max(before + 1, base);
        const Tstring first = name.substr(begin, dash - begin);
        const Tstring last = name.substr(dash + 1, end - dash - 1);
        if (!first.isInt32() || !last.isInt32()) continue;
        FramePattern pattern;
        pattern.parts = {name.substr(0, begin), name.substr(end)};
        pattern.width = first[0] == '0' ? static_cast<int>(first.size()) : 1;
        pattern.anyWidth = pattern.rangeWritten = true;
        pattern.first = std::min(first.asInt32(), last.asInt32());
        pattern.last = std::max(first.asInt32(), last.asInt32());
        return pattern;
    }
    return std::nullopt;
}

}  // namespace

std::optional<FramePattern> readFramePattern(const Tstring& name) {
    const size_t base = baseNameStart(name);
    const size_t mark = name.find_first_of("#@", base);
    if (mark == Tstring::npos) {
        const std::optional<FramePattern> pattern = readPrintfMark(name, base);
        return pattern ? pattern : readWrittenRange(name, base);
    }
    FramePattern pattern;
    pattern.parts = partsOfPattern(name).back();
    pattern.anyWidth = name.find('#', base) != Tstring::npos;
    pattern.width = pattern.anyWidth ? usualWidth : atSignWidth(name.substr(base));
    return pattern;
}

Tstring writtenPattern(const NameParts& parts, int width) {
    const size_t base = baseNameStart(parts.before);
    if ((parts.before.substr(base) + parts.after).find_first_of("#@") != std::string::npos)
        return {};
    const Tstring mark =
        width == usualWidth ? Tstring("#") : Tstring(static_cast<size_t>(std::max(width, 1)), '@');
    return parts.before + mark + parts.after;
}

}  // namespace vistel
