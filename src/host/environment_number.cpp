#include "host/environment_number.h"

#include <charconv>
#include <mutex>
#include <set>
#include <string>
#include <utility>

#include "host/messages.h"
#include "platform/process.h"

namespace vistel {

namespace {

// Whether this is the first time. Safe on every thread.
bool isNews(const NumberVariable& variable, const std::string& text) {
    static std::mutex mutex;
    static std::set<std::pair<std::string, std::string>> told;
    const std::lock_guard lock(mutex);
    return told.emplace(variable.name, text).second;
}

void complain(const NumberVariable& variable, const std::string& text, uint64_t instead) {
    printError(formatMessage(
        Message::rVTVariableNotANumber,
        {variable.name, text, messageText(variable.unit), std::to_string(variable.least),
         std::to_string(variable.most), std::to_string(instead)}));
}

}  // namespace

std::optional<uint64_t> wholeNumberBetween(uint64_t least, uint64_t most, std::string_view text) {
    const char* const end = text.data() + text.size();
    uint64_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stop != end || number < least || number > most) return {};
    return number;
}

uint64_t environmentNumber(const NumberVariable& variable, uint64_t otherwise) {
    const std::string text = platform::environmentVariable(variable.name).value_or("");
    if (text.empty()) return otherwise;
    if (const auto number = wholeNumberBetween(variable.least, variable.most, text)) return *number;
    if (isNews(variable, text)) complain(variable, text, otherwise);
    return otherwise;
}

}  // namespace vistel
