// The texts that the command line can ask for.
#pragma once

#include "host/tstring.h"

namespace vistel {

// One aligned line per option.
Tstring optionList();

// Banner, usage and its continuation, as they are written.
Tstring usageText(const Tstring& programName);

// All six help texts, one behind the other.
Tstring helpText();

// Writes the complaint (when there is one) and the usage to standard error.
void printUsage(const Tstring& programName, const Tstring& complaint);

// Shows the help through the pager, or writes it to standard output where there is none.
void printHelp();

}  // namespace vistel
