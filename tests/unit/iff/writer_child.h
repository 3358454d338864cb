// This test program in its second role: a program that writes an image, or the converter that is
// sent one.
#pragma once

#include <string>

namespace vistel::test {

enum class WriterRole {
    none,
    writeToOutput,  // writes an image to standard output
    save,           // writes an image to the file named by its only argument, through the converter
    convert,        // keeps its arguments and what it is sent in keptName
    refuse,         // the same, and ends with status 3
};
// Children that are started from now on play this role.
void setWriterRole(WriterRole role);
// The file that a converter keeps: its arguments, one a line, an empty line, what it was sent.
void setKeptName(const std::string& name);

constexpr unsigned childImageWidth = 70, childImageHeight = 67, childImageFlags = 7;

}  // namespace vistel::test
