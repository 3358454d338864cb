// All that a stream holds.
#pragma once

#include <string>

#include "sequence/source_stream.h"
#include "sequence_fixture.h"

namespace vistel {

inline std::string contents(SourceStream& stream) {
    std::string text;
    char block[512];
    while (const size_t count = std::fread(block, 1, sizeof block, stream.file()))
        text.append(block, count);
    return text;
}

}  // namespace vistel
