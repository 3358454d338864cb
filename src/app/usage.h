// The texts that the command line can ask for.
#pragma once

#include "host/tstring.h"

namespace vistel {

// One aligned line per option.
Tstring optionList();

// The program's name, version and purpose, one line.
Tstring bannerText();

// Banner, usage and its continuation, as they are written.
Tstring usageText(const Tstring& programName);

// All six help texts, one behind the other.
Tstring helpText();

// Writes the usage to standard error, with the complaint (when there is one) as the last line.
void printUsage(const Tstring& programName, const Tstring& complaint);

// Writes the banner to standard output.
void printVersion();

// Shows the help through the pager, or writes it to standard output where there is none.
void printHelp();

}  // namespace vistel
