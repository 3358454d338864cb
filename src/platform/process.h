// Other programs and the environment. The pipes (openPipe, closePipe, releasePipe, abandonPipe, endCommand)
// are shared: command_pipes.cpp, over what each system does for platform/command.h. All else win32 and
// linux implement each; there is no headless one.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

#include "platform/go_on.h"

namespace vistel::platform {

// What a command prints to standard error: it goes where ours goes, or nowhere.
enum class CommandErrors { shown, dropped };

// Starts a command through the command interpreter with a pipe to its standard output (mode "r") or
// standard input (mode "w"), binary. Null with errno set when no interpreter could be started. Safe
// on every thread. To be ended by one of the four functions below.
[[nodiscard]] FILE* openPipe(const std::string& command, const char* mode,
                             CommandErrors errors = CommandErrors::shown);

// Waits for the command and returns its exit status (-1 when it did not end normally).
int closePipe(FILE* pipe);
// The same, but `goOn` is asked about every millisecond; false abandons the command (-1).
int closePipe(FILE* pipe, const GoOn& goOn);

// Closes our end: what the command still writes fails, what it still does it may do until the
// program ends. Does not wait for it, unless so many linger already that one of them has
// to end first: `goOn` then is asked about every millisecond, false ends that wait (none: never
// waits).
void releasePipe(FILE* pipe, const GoOn& goOn = {});

// Closes our end and ends the command with everything it has started, with force when it has not
// ended after some time or when the program ends. Does not wait.
void abandonPipe(FILE* pipe);

// Ends the command with everything it has started, with force, and leaves our end open: whoever
// reads or writes there, on another thread, meets its end and then closes it.
void endCommand(FILE* pipe);

// Gives back what the system keeps for released and abandoned commands that have ended meanwhile:
// none stays behind while the program does nothing else. To be called now and then.
void collectEndedCommands();

// What the end of the program does to its commands, for an end that runs no destructors: they are
// ended with everything they have started, with force when they have not ended after a moment. What
// lives on behind one that has ended by itself is left alone. No more are started.
void endCommands();

// The command that runs one program with one argument (and further words as they are) through the
// interpreter of this system, each name quoted so that blanks and the interpreter's own signs in it
// are taken literally.
std::string quotedCommand(const std::string& program, const std::string& argument,
                          const std::string& furtherWords);
// The same without any word.
std::string quotedCommand(const std::string& program);
// The same with words of ours (options) before the argument, as they are.
std::string quotedCommand(const std::string& program, const std::string& leadingWords,
                          const std::string& argument, const std::string& furtherWords);

// Full path of a program of this base name ("pixconv") beside the running program or along the
// executable search path; none when there is none. Never one in the current folder: of the search
// path only whole paths count.
std::optional<std::string> findProgram(const std::string& baseName);

std::optional<std::string> environmentVariable(const std::string& name);
// Sets NAME=value for this process and its children.
void setEnvironmentVariable(const std::string& name, const std::string& value);

// Makes an interrupt from the console (Ctrl+C, SIGTERM, a hang-up) set a flag instead of ending the
// process at once; a second interrupt ends it. interruptRequested tells whether the flag is set.
// Where a write can be called off, one that nobody reads does not wait any more a second later.
void catchInterrupts();
bool interruptRequested();
// The same as the first interrupt, from any thread: a wait for messages ends.
void requestInterrupt();

// Makes writing to a pipe whose reader has gone, and beyond the size that files may have, a failed
// write, where it would end the program.
void ignoreClosedReaders();

}  // namespace vistel::platform
