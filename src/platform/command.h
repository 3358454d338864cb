// What one system must do for command pipes, and nothing else includes: the commands themselves are
// kept in command_pipes.cpp, which is the same for all. win32 and linux
// implement all of this each.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "platform/process.h"

namespace vistel::platform {

// A process for good: identifiers are used again.
struct ProcessMark {
    intptr_t id = 0;
    uint64_t start = 0;  // in the system's own unit
    bool operator==(const ProcessMark&) const = default;
};

// A command that was started and has not been collected yet.
struct Command {
    FILE* stream = nullptr;         // our end of the pipe
    intptr_t process = 0;           // what the system knows it by; 0: it has ended; -1: not known
    bool reading = false;           // our end is the one that is read
    intptr_t family = 0;            // what all that it starts is known by; 0: nothing
    std::vector<ProcessMark> told;  // those that were told to end, where that takes them time
};

// Starts the command; false when that is not possible. Safe on every thread, one call at a time.
[[nodiscard]] bool startCommand(const std::string& text, bool reading, CommandErrors errors,
                                Command& command);

// Closes our end, so that whoever writes into it is told, and whoever reads finds the end. Once per
// command.
void hangUp(Command& command);

// The exit status (-1 when it did not end normally) of a command that ends within this time; with
// it everything the system kept for the command is given back. One that is not known is not waited
// for (-1). Only after hangUp.
std::optional<int> collect(Command& command, unsigned milliseconds);

// Tells the command and whatever it has started to end, also what lives on when the command itself
// has ended; `force` leaves them no choice. Only before it is collected.
void endFamily(Command& command, bool force);

// Whether the command and all that it has started have ended; never waits. To be asked after
// endFamily: those that were started since then are told to end, too.
bool familyHasEnded(Command& command);

}  // namespace vistel::platform
