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

// Tells of a word that is not what the option needs, and what is used in its place.
void tellOddWord(const Tstring& option, const Tstring& word, Message needed, const Tstring& used);

// The word as a number, as far as it is one; a word that is none is told.
int32_t wholeNumber(const Tstring& option, const Tstring& word);

// One option as it was found.
struct OptionUse {
    char shortName;
    qdOS::GetOpt::Result result;
    CommandLine& line;
    const StartUpServices& services;

    // Argument n, empty when it is absent.
    Tstring argument(int n) const { return qdOS::GetOpt::getResultArg(result, n); }

    Tstring option() const { return Tstring("-") + shortName; }

    // Argument n as a number; a word that is none is told, with the number that is read of it.
    int32_t wholeNumber(int n) const { return vistel::wholeNumber(option(), argument(n)); }
    float real(int n) const;
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
