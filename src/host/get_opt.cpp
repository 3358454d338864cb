#include "host/get_opt.h"

#include <algorithm>
#include <utility>

namespace vistel::qdOS {

namespace {

struct Arguments {
    int needed = 0, optional = 0;
    std::vector<bool> integers;
};

// Reads the blank-separated type names of a declaration, those before and those after the "?".
Arguments readTypes(std::string_view types) {
    Arguments arguments;
    bool afterMark = false;
    for (size_t at = 0; at < types.size();) {
        const size_t end = std::min(types.find(' ', at), types.size());
        const std::string_view name = types.substr(at, end - at);
        if (name == "?")
            afterMark = true;
        else if (!name.empty()) {
            ++(afterMark ? arguments.optional : arguments.needed);
            arguments.integers.push_back(name == "int");
        }
        at = end + 1;
    }
    return arguments;
}

bool looksLikeOption(const Tstring& word) { return word.size() > 1 && word.front() == '-'; }

// The option at a position of a group: its letter, which may be of several bytes (UTF-8).
Tstring optionAt(const Tstring& word, size_t at) {
    size_t end = at + 1;
    while (end < word.size() && (word[end] & 0xC0) == 0x80) ++end;
    return "-" + word.substr(at, end - at);
}

}  // namespace

int GetOpt::addOption(std::string_view option, std::string_view argumentTypes) {
    const size_t bar = option.find('|');
    Arguments arguments = readTypes(argumentTypes);
    options_.push_back({option.empty() ? '\0' : option.front(),
                        bar == std::string_view::npos ? Tstring() : Tstring(option.substr(bar + 1)),
                        arguments.needed, arguments.optional, std::move(arguments.integers)});
    return static_cast<int>(options_.size()) - 1;
}

void GetOpt::initialize(int count, const char* const* words) {
    words_.assign(words, words + (count > 0 ? count : 0));
    word_ = letter_ = 0;
}

std::optional<GetOpt::Result> GetOpt::getOpt() {
    if (word_ >= words_.size()) return std::nullopt;
    const Tstring word = words_[word_];
    if (letter_ > 0) return takeShort(word);
    if (!looksLikeOption(word) || word == "--") return std::nullopt;
    return word[1] == '-' ? takeLong(word) : takeShort(word);
}

std::vector<Tstring> GetOpt::remaining() const {
    const size_t first = word_ < words_.size() && words_[word_] == "--" ? word_ + 1 : word_;
    return {words_.begin() + static_cast<std::ptrdiff_t>(first), words_.end()};
}

Tstring GetOpt::getResultArg(const Result& result, int n) {
    return n >= 0 && n < getNumArguments(result) ? result.arguments[static_cast<size_t>(n)]
                                                 : Tstring();
}

int GetOpt::getNumArguments(const Result& result) {
    return static_cast<int>(result.arguments.size());
}

int GetOpt::findShort(char name) const {
    for (size_t i = 0; i < options_.size(); ++i)
        if (options_[i].shortName == name) return static_cast<int>(i);
    return noOption;
}

int GetOpt::findLong(std::string_view name) const {
    for (size_t i = 0; i < options_.size(); ++i)
        if (!name.empty() && options_[i].longName == name) return static_cast<int>(i);
    return noOption;
}

void GetOpt::nextWord() {
    ++word_;
    letter_ = 0;
}

GetOpt::Result GetOpt::takeLong(const Tstring& word) {
    const size_t equals = word.find('=');
    const std::string_view all = word;
    Result result;
    result.word = result.option = word;
    result.index = findLong(all.substr(2, equals == Tstring::npos ? equals : equals - 2));
    nextWord();
    if (result.index == noOption) {
        result.problem = Problem::unknownOption;
        return result;
    }
    std::optional<Tstring> attached;
    if (equals != Tstring::npos) attached = Tstring(all.substr(equals + 1));
    takeArguments(result, attached);
    return result;
}

GetOpt::Result GetOpt::takeShort(const Tstring& word) {
    if (letter_ == 0) letter_ = 1;
    Result result;
    result.word = word;
    result.option = optionAt(word, letter_);
    result.index = findShort(word[letter_]);
    if (result.index == noOption) {
        result.problem = Problem::unknownOption;
        nextWord();
        return result;
    }
    const Option& option = options_[static_cast<size_t>(result.index)];
    ++letter_;
    const bool wordDone = letter_ >= word.size();
    if (option.needed + option.optional == 0) {
        if (wordDone) nextWord();
        return result;
    }
    std::optional<Tstring> attached;
    if (!wordDone) attached = Tstring(word.substr(letter_));
    nextWord();
    takeArguments(result, attached);
    return result;
}

bool GetOpt::isDeclared(std::string_view word) const {
    if (word.starts_with("--")) return findLong(word.substr(2)) != noOption;
    return word.size() == 2 && word.front() == '-' && findShort(word[1]) != noOption;
}

bool GetOpt::mayBeArgument(const Tstring& word, bool integer) const {
    if (integer) return !looksLikeOption(word) || word.isInt32();
    return !isDeclared(word);
}

// The words after the option's own are its arguments, after the one attached to it.
void GetOpt::takeArguments(Result& result, std::optional<Tstring> attached) {
    const Option& option = options_[static_cast<size_t>(result.index)];
    const size_t needed = static_cast<size_t>(option.needed);
    const size_t most = needed + static_cast<size_t>(option.optional);
    if (attached && most == 0) {
        result.index = noOption;
        result.problem = Problem::unexpectedArgument;
        return;
    }
    if (attached) result.arguments.push_back(*attached);
    while (result.arguments.size() < needed && word_ < words_.size() &&
           mayBeArgument(words_[word_], option.integers[result.arguments.size()]))
        result.arguments.push_back(words_[word_++]);
    if (result.arguments.size() < needed) {
        result.index = noOption;
        result.problem = Problem::missingArgument;
        result.arguments.clear();
        return;
    }
    while (result.arguments.size() < most && word_ < words_.size() &&
           (!looksLikeOption(words_[word_]) || words_[word_].isInt32()))
        result.arguments.push_back(words_[word_++]);
}

}  // namespace vistel::qdOS
