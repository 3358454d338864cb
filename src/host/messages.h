// The message catalogue: every text that a user reads, by id ("s_VistelStrings.rVTNoZBuffer"). The
// texts lie in resources/messages.txt, which the build turns into a table of this program.
#pragma once

#include <initializer_list>
#include <span>
#include <string_view>

#include "host/tstring.h"

namespace vistel {

struct Message {
    const char* id;
    const char* text;
};

// All messages, sorted by id.
std::span<const Message> allMessages();

// The text of an id. An unknown id gives the id itself, so that a missing text is seen, not lost.
Tstring messageText(std::string_view id);

// The text with its "^1s" placeholders filled.
Tstring formatMessage(std::string_view id, std::initializer_list<FormatArgument> arguments);

// Prints a line on standard error.
void printError(const Tstring& line);

}  // namespace vistel
