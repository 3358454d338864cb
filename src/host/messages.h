// The message catalogue: every text that a user reads. The texts lie in resources/messages.txt by
// id ("s_VistelStrings.rVTNoZBuffer"), which the build turns into an enumerator each
// (Message::rVTNoZBuffer) and a table of this program.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

#include "host/tstring.h"

namespace vistel {

enum class Message : uint16_t {
    none,  // no message: its id and its text are empty
#include "message_ids.inc"
};

struct CatalogueEntry {
    Message message;
    const char* id;
    const char* text;
};

// All messages but `none`, in the order of their enumerators, which is that of their ids. Tests
// look at each by it.
std::span<const CatalogueEntry> messageCatalogue();

// The text, with its placeholders.
Tstring messageText(Message message);

// How a switch stands.
Tstring onOrOff(bool on);

// The text with its "^1s" placeholders filled.
Tstring formatMessage(Message message, std::initializer_list<FormatArgument> arguments);

// Prints a line on standard error, control characters as escapes.
void printError(const Tstring& line);

}  // namespace vistel
