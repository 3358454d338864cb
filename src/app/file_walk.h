// The walk over the file arguments: each is prepared (range, folder, per-file values), opened, and
// left behind as if it had not been there; then come the files that the user asked for in the
// window.
#pragma once

#include "app/command_line.h"
#include "app/start_up_services.h"

namespace vistel {

struct FileCounts {
    int processed = 0;
    int failed = 0;
};

// Shows everything the command line names: the files, standard input, the converter's test image,
// or the empty window. When line.outcome is usageWanted afterwards, an argument was incomplete and
// the walk ended there.
FileCounts walkFiles(CommandLine& line, const StartUpServices& services);

// Opens what the window's menus left in viewerState.pendingOpen, until nothing is left.
void servePendingOpens(const StartUpServices& services);

}  // namespace vistel
