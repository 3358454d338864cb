#include "platform/process.h"
#include "platform/quoting.h"

namespace vistel::platform {

std::string quotedCommand(const std::string& program) {
    return interpretedLine(quotedWord(program));
}

std::string quotedCommand(const std::string& program, const std::string& argument,
                          const std::string& furtherWords) {
    return quotedCommand(program, "", argument, furtherWords);
}

std::string quotedCommand(const std::string& program, const std::string& leadingWords,
                          const std::string& argument, const std::string& furtherWords) {
    std::string command = quotedWord(program) + " ";
    if (!leadingWords.empty()) command += leadingWords + " ";
    command += quotedWord(argument);
    if (!furtherWords.empty()) command += " " + furtherWords;
    return interpretedLine(command);
}

}  // namespace vistel::platform
