#include "host/messages.h"

#include <algorithm>
#include <cstdio>

namespace vistel {

namespace {

constexpr Message table[] = {
#include "messages_table.inc"
};

constexpr bool comesBefore(const Message& a, const Message& b) {
    return std::string_view(a.id) < std::string_view(b.id);
}
static_assert(std::is_sorted(std::begin(table), std::end(table), comesBefore));

}  // namespace

std::span<const Message> allMessages() { return table; }

Tstring messageText(std::string_view id) {
    const Message* found = std::lower_bound(
        std::begin(table), std::end(table), id,
        [](const Message& message, std::string_view wanted) { return message.id < wanted; });
    if (found == std::end(table) || found->id != id) return Tstring(id);
    return found->text;
}

Tstring formatMessage(std::string_view id, std::initializer_list<FormatArgument> arguments) {
    return formatPositional(messageText(id), arguments);
}

void printError(const Tstring& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

}  // namespace vistel
