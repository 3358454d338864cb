// Which of an OpenEXR file's channels make the picture.
#pragma once

#include <string>
#include <vector>

#include "picture.h"

namespace vistel {

// Names in the file; empty for a channel that is not there.
struct ExrChannels {
    std::string colour[3];  // red, green, blue; of a grey picture only the first
    std::string mask, depth;
    bool grey = false;
};

// R, G, B (or Y), A and Z; when there is no such colour, that of the first layer that has one
// ("left.R"). Fails when nothing can be shown.
[[nodiscard]] Failure findExrChannels(const std::vector<std::string>& names, ExrChannels& channels);

}  // namespace vistel
