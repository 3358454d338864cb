// The 32 options: one row each, in the order in which they are declared to the parser, listed in
// the usage, and documented.
#pragma once

#include <span>
#include <vector>

#include "app/command_line.h"
#include "app/start_up_services.h"
#include "host/get_opt.h"
#include "host/messages.h"

namespace vistel {

// One option as it was found.
struct OptionUse {
    qdOS::GetOpt::Result result;
    CommandLine& line;
    const StartUpServices& services;

    // Argument n, empty when it is absent.
    Tstring argument(int n) const { return qdOS::GetOpt::getResultArg(result, n); }
};

struct OptionRow {
    char shortName;
    const char* longName;
    const char* argumentTypes;  // as qdOS::GetOpt reads them
    const char* argumentNames;  // as the usage shows them
    void (*apply)(OptionUse& use);
    Message textId;  // what it does, in a few words
};

std::span<const OptionRow> optionTable();

// Parses the words of the line, applies each option as it is found, and sets the index of the first
// file. Stops at the first option that ends the program (see CommandLine::outcome).
void parseOptions(CommandLine& line, const StartUpServices& services);

}  // namespace vistel
