#include "sequence/frame_name.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

namespace vistel {

namespace {

constexpr int usualPadWidth = 4;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

size_t digitsFrom(const Tstring& text, size_t start) {
    size_t end = start;
    while (end < text.size() && isDigit(text[end])) ++end;
    return end - start;
}

// None when the number does not fit.
std::optional<int> wholeNumber(const Tstring& digits) {
    int number = 0;
    const auto end = digits.data() + digits.size();
    if (std::from_chars(digits.data(), end, number).ec != std::errc{}) return std::nullopt;
    return number;
}

bool holds(const Tstring& name, char mark, size_t from) {
    return name.find(mark, from) != Tstring::npos;
}

int markWidth(const Tstring& name, char mark, size_t from) {
    if (!holds(name, mark, from)) return 0;
    return static_cast<int>(
        std::min<size_t>(name.rfind(mark) - name.find(mark, from) + 1, widestNumber));
}

int stemWidth(const NumberStyle& style) {
    return style.padded && !style.padWidth ? usualPadWidth : style.padWidth;
}

// The rules of numberedName for the marks at or behind `from`.
int widthFrom(const Tstring& pattern, size_t from, const NumberStyle& style) {
    const int known = style.padWidth;
    if (holds(pattern, '#', from)) return known ? known : usualPadWidth;
    if (holds(pattern, '@', from)) return known < 1 ? markWidth(pattern, '@', from) : known;
    return stemWidth(style);
}

NameParts partsFrom(const Tstring& pattern, size_t from) {
    for (const char mark : {'#', '@'})
        if (holds(pattern, mark, from))
            return {pattern.substr(0, pattern.find(mark, from)),
                    pattern.substr(pattern.rfind(mark) + 1)};
    return {pattern + ".", {}};
}

Tstring joined(const NameParts& parts, int number, int width) {
    return parts.before + paddedNumber(number, width) + parts.after;
}

bool marksInFolder(const Tstring& pattern) {
    return pattern.find_first_of("#@") < baseNameStart(pattern);
}

}  // namespace

Tstring paddedNumber(int number, int width) {
    const std::string digits = std::to_string(std::llabs(number));
    const std::string sign = number < 0 ? "-" : "";
    const size_t wanted = static_cast<size_t>(std::clamp(width, 0, widestNumber));
    const size_t written = sign.size() + digits.size();
    return sign + std::string(wanted > written ? wanted - written : 0, '0') + digits;
}

int atSignWidth(const Tstring& name) { return markWidth(name, '@', 0); }

Tstring numberedName(const Tstring& pattern, int number, const NumberStyle& style) {
    return joined(partsFrom(pattern, 0), number, widthFrom(pattern, 0, style));
}

std::optional<Tstring> numberedNameInFolder(const Tstring& pattern, int number,
                                            const NumberStyle& style) {
    if (!marksInFolder(pattern)) return std::nullopt;
    const size_t base = baseNameStart(pattern);
    return joined(partsFrom(pattern, base), number, widthFrom(pattern, base, style));
}

Tstring nameOfParts(const NameParts& parts, int number, const NumberStyle& style) {
    return joined(parts, number, stemWidth(style));
}

std::vector<NameParts> partsOfPattern(const Tstring& pattern) {
    std::vector<NameParts> parts = {partsFrom(pattern, 0)};
    if (marksInFolder(pattern)) parts.push_back(partsFrom(pattern, baseNameStart(pattern)));
    return parts;
}

Tstring unpaddedName(const Tstring& stem, int number) {
    return stem + "." + paddedNumber(number, 0);
}

Tstring hashReplaced(const Tstring& pattern, int number, int padWidth) {
    const size_t last = pattern.rfind('#');
    if (last == Tstring::npos) return {};
    const size_t before = pattern.find_last_not_of('#', last);
    const size_t first = before == Tstring::npos ? 0 : before + 1;
    return pattern.substr(0, first) + paddedNumber(number, padWidth) + pattern.substr(last + 1);
}

bool namesCommand(const Tstring& name) { return name.starts_with(commandPrefix); }

std::optional<int> frameNumberAt(const FrameRange& range, int k) {
    const int64_t start = range.start, end = range.end, step = range.step;
    const bool descending = end >= 1 && end < start;
    const int64_t steps = k == -1 ? (step ? std::llabs((end - start) / step) : 0) : k;
    const int64_t number = descending ? start - step * steps : start + step * steps;
    if (end >= 1 && (number < std::min(start, end) || number > std::max(start, end))) {
        return std::nullopt;
    }
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

std::optional<PickedName> splitPickedName(const Tstring& name) {
    const size_t base = baseNameStart(name);
    const size_t lastDigit = name.find_last_of("0123456789");
    if (lastDigit == Tstring::npos || lastDigit < base) return std::nullopt;
    size_t firstDigit = lastDigit;
    while (firstDigit > base && isDigit(name[firstDigit - 1])) --firstDigit;
    const bool negative = firstDigit > base && name[firstDigit - 1] == '-';
    const size_t first = negative ? firstDigit - 1 : firstDigit;
    const Tstring number = name.substr(first, lastDigit + 1 - first);
    const std::optional<int> value = wholeNumber(number);
    if (!value) return std::nullopt;
    PickedName picked{name.substr(0, first), name.substr(lastDigit + 1), *value, 1};
    if (name[firstDigit] == '0') {
        picked.padWidth = static_cast<int>(std::min<size_t>(number.size(), widestNumber));
    }
    return picked;
}

size_t baseNameStart(const Tstring& name) {
    const size_t separator = name.find_last_of("/\\");
    return separator == Tstring::npos ? 0 : separator + 1;
}

StemParts splitStem(const Tstring& stem) {
    const size_t slash = stem.rfind('/');
    const size_t separator = slash != Tstring::npos ? slash : stem.rfind('\\');
    if (separator == Tstring::npos) return {{}, stem};
    const bool root = separator == 0 || stem[separator - 1] == ':';
    return {stem.substr(0, separator + (root ? 1 : 0)), stem.substr(separator + 1)};
}

std::optional<NumberedFile> readNumberedFile(const Tstring& fileName, const Tstring& base) {
    if (!fileName.starts_with(base)) return std::nullopt;
    const Tstring rest = fileName.substr(base.size());
    NumberedFile file{rest.asInt32(), 0, {}, rest};
    const size_t sign = rest.starts_with('-') ? 1 : 0, digits = digitsFrom(rest, sign);
    if (digits > 0) {
        file.written = rest.substr(0, sign + digits);
        file.after = rest.substr(sign + digits);
    }
    if (rest.starts_with('0'))
        file.zeroWidth = static_cast<int>(std::min<size_t>(digits, widestNumber));
    return file;
}

}  // namespace vistel
