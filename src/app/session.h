// One run of the program from the command line to the exit status, with the rest of the program
// behind a record of services.
#pragma once

#include "app/start_up_services.h"

namespace vistel {

// Exit status: 0 normal end and after the help and the version, 1 after the usage.
int runSession(int argc, const char* const* argv, const StartUpServices& services);

}  // namespace vistel
