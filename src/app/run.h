// The program.
#pragma once

namespace vistel {

// Runs the viewer on a command line (UTF-8, the program's name first) and returns the exit status.
int runVistel(int argc, char** argv);

}  // namespace vistel
