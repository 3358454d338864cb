// From the process as the system started it to a state that is ready for the first file: install
// location, saved settings, defaults, options, and what follows from them.
#pragma once

#include "app/command_line.h"
#include "app/start_up_services.h"

namespace vistel {

// Everything before the options: locale, install location and help base, plug-ins, saved settings,
// defaults. The state starts anew.
void prepareProcess(const StartUpServices& services);

// Fields that depend on options and environment together: frame rates, search
// directories, display look-up table.
void completeState(const CommandLine& line, const StartUpServices& services);

// All of the above with the options between. A line whose outcome is not goOn ends the program.
CommandLine startUp(int argc, const char* const* argv, const StartUpServices& services);

// The install root of a program path: forward slashes, without file name and its folder.
Tstring installRoot(const Tstring& programPath);

}  // namespace vistel
