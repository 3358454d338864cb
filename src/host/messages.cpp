#include "host/messages.h"

#include <cstdio>
#include <iterator>

namespace vistel {

namespace {

constexpr CatalogueEntry table[] = {
    {Message::none, "", ""},
#include "messages_table.inc"
};

constexpr bool rowsAreInPlace() {
    for (size_t i = 0; i < std::size(table); ++i)
        if (static_cast<size_t>(table[i].message) != i) return false;
    return true;
}
static_assert(rowsAreInPlace());

}  // namespace

std::span<const CatalogueEntry> messageCatalogue() { return std::span(table).subspan(1); }

Tstring messageText(Message message) { return table[static_cast<size_t>(message)].text; }

Tstring onOrOff(bool on) { return messageText(on ? Message::rVTOn : Message::rVTOff); }

Tstring formatMessage(Message message, std::initializer_list<FormatArgument> arguments) {
    return formatPositional(messageText(message), arguments);
}

void printError(const Tstring& line) { std::fprintf(stderr, "%s\n", printable(line).c_str()); }

}  // namespace vistel
