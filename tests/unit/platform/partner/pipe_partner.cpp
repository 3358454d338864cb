// The program at the other end of a pipe in tests: it does one small thing and ends.
//
//   pipe_partner bytes           writes the bytes 0 to 255, CR LF, 0 to 255
//   pipe_partner exit STATUS     ends with this status
//   pipe_partner sum             ends with the sum of its input, modulo 128
//   pipe_partner variable NAME   writes the environment variable's value
//   pipe_partner kind            writes what standard input is: regular, fifo, device or other
//   pipe_partner late GATE FILE  makes GATE.reached, waits until there is a file GATE, makes FILE
//   pipe_partner stubborn GATE FILE  the same, and does not end when it is asked to
//   pipe_partner leave TASK GATE FILE  starts itself with the other words as a command, releases that
//                                and ends when there is GATE.reached
//   pipe_partner unfinished MS FILE  creates an unfinished file for FILE, with a name, writes
//                                "ready", waits
//   pipe_partner complain WORD   writes the word to output and standard error, ends with 4
//   pipe_partner halves MS       writes "first", waits, writes "second"
//   pipe_partner settings NAME TIMES  stores the settings NAME0, NAME1 ... one after the other
//   pipe_partner WORD...         writes each word on a line of its own
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/files.h"
#include "platform/process.h"
#include "platform/settings_store.h"
#include "platform/unfinished_file.h"

using namespace vistel::platform;

namespace {

void writeAllBytes() {
    for (int byte = 0; byte < 256; ++byte) std::putchar(byte);
}

void rest(const char* milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(milliseconds)));
}

void makeBehindGate(const std::string& gate, const char* name) {
    FilePtr(openFile((gate + ".reached").c_str(), "w"));
    while (!fileExists(gate)) rest("20");
    FilePtr(openFile(name, "w"));
}

int leaveCommand(char** words) {
    const std::string gate = words[1], task = words[0];
    const std::string further = "\"" + gate + "\" \"" + words[2] + "\" || exit 1";
    FILE* pipe = openPipe(quotedCommand(programPath(), task, further), "r");
    if (!pipe) return 1;
    while (!fileExists(gate + ".reached")) rest("20");
    releasePipe(pipe);
    return 0;
}

int sumOfInput() {
    const FilePtr input(duplicateStandardStream(0, "r+"));
    if (!input) return 200;
    unsigned sum = 0;
    for (int byte; (byte = std::fgetc(input.get())) != EOF;) sum += static_cast<unsigned>(byte);
    return static_cast<int>(sum % 128);
}

int leaveUnfinished(const char* name, const char* milliseconds) {
    UnfinishedFile unfinished;
    const FilePtr file(unfinished.create(name, UnfinishedFile::Name::always));
    if (!file) return 1;
    std::fputs("half of it", file.get());
    std::fflush(file.get());
    std::fputs("ready\n", stdout);
    std::fflush(stdout);
    rest(milliseconds);
    return 0;
}

const char* inputKind() {
    switch (streamStatus(stdin).kind) {
        case StreamKind::regular:
            return "regular";
        case StreamKind::fifo:
            return "fifo";
        case StreamKind::characterDevice:
            return "device";
        case StreamKind::other:
            break;
    }
    return "other";
}

}  // namespace

int main(int count, char** arguments) {
    setBinaryFileMode();
    const std::string task = count > 1 ? arguments[1] : "";
    if (task == "bytes") {
        writeAllBytes();
        std::fputs("\r\n", stdout);
        writeAllBytes();
    } else if (task == "exit" && count > 2) {
        return std::atoi(arguments[2]);
    } else if (task == "sum") {
        return sumOfInput();
    } else if (task == "variable" && count > 2) {
        std::fputs(environmentVariable(arguments[2]).value_or("(none)").c_str(), stdout);
    } else if (task == "kind") {
        std::fputs(inputKind(), stdout);
    } else if (task == "late" && count > 3) {
        makeBehindGate(arguments[2], arguments[3]);
    } else if (task == "stubborn" && count > 3) {
        std::signal(SIGTERM, SIG_IGN);
        makeBehindGate(arguments[2], arguments[3]);
    } else if (task == "leave" && count > 4) {
        return leaveCommand(arguments + 2);
    } else if (task == "unfinished" && count > 3) {
        return leaveUnfinished(arguments[3], arguments[2]);
    } else if (task == "complain" && count > 2) {
        std::printf("%s\n", arguments[2]);
        std::fprintf(stderr, "%s\n", arguments[2]);
        return 4;
    } else if (task == "settings" && count > 3) {
        for (int i = 0; i < std::atoi(arguments[3]); ++i)
            writeSetting(arguments[2] + std::to_string(i), std::to_string(i));
    } else if (task == "halves" && count > 2) {
        std::fputs("first", stdout);
        std::fflush(stdout);
        rest(arguments[2]);
        std::fputs("second", stdout);
    } else {
        for (int i = 1; i < count; ++i) std::printf("%s\n", arguments[i]);
    }
    return 0;
}
