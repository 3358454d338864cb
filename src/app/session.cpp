#include "app/session.h"

#include <cstdio>

#include "app/file_walk.h"
#include "app/start_up.h"
#include "app/usage.h"
#include "host/messages.h"
#include "settings/saved_settings.h"
#include "viewer/viewer_state.h"

namespace vistel {

namespace {

constexpr int statusDone = 0;
constexpr int statusUsage = 1;

int endWithUsage(const CommandLine& line) {
    printUsage(line.words.front(), line.complaint);
    return statusUsage;
}

// The text is a printf format with two integers.
void printCounts(const FileCounts& counts) {
    const Tstring format = messageText(Message::rVTResult);
    std::fputs(formatPrintf(format.c_str(), counts.processed, counts.failed).c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace

int runSession(int argc, const char* const* argv, const StartUpServices& services) {
    CommandLine line = startUp(argc, argv, services);
    if (line.outcome == StartUpOutcome::helpWanted) {
        printHelp();
        return statusDone;
    }
    if (line.outcome == StartUpOutcome::versionWanted) {
        printVersion();
        return statusDone;
    }
    if (line.outcome == StartUpOutcome::usageWanted) return endWithUsage(line);

    const FileCounts counts = walkFiles(line, services);
    if (line.outcome == StartUpOutcome::usageWanted) return endWithUsage(line);
    servePendingOpens(services);

    if (viewerState.verbose) printCounts(counts);
    viewerState.savedFrameRate = viewerState.frameRate;
    writeSettings(viewerState);
    callIfSet(services.outlastWindows);
    return statusDone;
}

}  // namespace vistel
