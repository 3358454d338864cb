// Files that are not in the frame format, and the programs that turn them into it: one converter
// for image files, an older one for raster files. Each writes the frame format to its standard
// output.
#pragma once

#include <optional>
#include <string>

#include "platform/process.h"

namespace vistel {

// What reads a file: the frame reader itself or one of the converters.
enum class SourceReader { direct, imageConverter, olderConverter };

// By the file's kind (probeFileKind).
SourceReader readerOfKind(int kind);

// What reads the regular file of this path, by how it begins. With waitForWriter a file that is
// still too short to be told is taken for a frame that is being written.
SourceReader readerOfFile(const std::string& located, bool waitForWriter);

// Base name of a converter's program.
const char* converterName(SourceReader reader);

// Full path of a converter's program; none: not installed. Called by the threads that read ahead,
// too. Tests put their own here.
inline std::optional<std::string> (*converterProgram)(SourceReader reader) =
    [](SourceReader reader) { return platform::findProgram(converterName(reader)); };

// The command that converts one file.
std::string converterCommand(SourceReader reader, const std::string& program,
                             const std::string& file);

}  // namespace vistel
