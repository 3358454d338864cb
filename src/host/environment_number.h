// Numbers that a user sets as environment variables.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/messages.h"

namespace vistel {

struct NumberVariable {
    const char* name;
    uint64_t least, most;
    Message unit;  // what is counted ("threads")
};

// The number whose decimal digits, and nothing else, the text holds; none outside the range.
std::optional<uint64_t> wholeNumberBetween(uint64_t least, uint64_t most, std::string_view text);

// What the variable says, or `otherwise` when it is not there or empty. A text that is no number of
// its range counts for nothing, too: a line on standard error then tells the variable, the text and
// what is used instead, once per run.
uint64_t environmentNumber(const NumberVariable& variable, uint64_t otherwise);

}  // namespace vistel
