// What the commands of process.h are put together from; each system has its own.
#pragma once

#include <string>

namespace vistel::platform {

// The word as the command interpreter takes it literally.
std::string quotedWord(const std::string& word);

// A command that begins with a quoted word, as the interpreter is to be handed it.
std::string interpretedLine(const std::string& command);

}  // namespace vistel::platform
