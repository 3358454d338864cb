// Other programs and the environment.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

namespace vistel::platform {

// Starts a command through the command interpreter with a pipe to its standard output (mode "r") or
// standard input (mode "w"), binary. Null when no interpreter could be started. Close with closePipe.
[[nodiscard]] FILE* openPipe(const std::string& command, const char* mode);

// Waits for the command and returns its exit status (-1 when it did not end normally).
int closePipe(FILE* pipe);

// The command that runs one program with one argument (and further words as they are) through the
// interpreter of this system, each name quoted so that blanks and the interpreter's own signs in it
// are taken literally.
std::string quotedCommand(const std::string& program, const std::string& argument,
                          const std::string& furtherWords);
// The same with words of ours (options) before the argument, as they are.
std::string quotedCommand(const std::string& program, const std::string& leadingWords,
                          const std::string& argument, const std::string& furtherWords);

// Full path of a program of this base name ("pixconv") beside the running program or along the
// executable search path; none when there is none.
std::optional<std::string> findProgram(const std::string& baseName);

std::optional<std::string> environmentVariable(const std::string& name);
// Sets NAME=value for this process and its children.
void setEnvironmentVariable(const std::string& name, const std::string& value);

// Makes an interrupt from the console (Ctrl+C, SIGTERM) set a flag instead of ending the process at
// once; a second interrupt ends it. interruptRequested tells whether the flag is set.
void catchInterrupts();
bool interruptRequested();

}  // namespace vistel::platform
