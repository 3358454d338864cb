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
    // Colour is stored as luminance, in colour[0], and chroma ("RY", "BY") of the layer, whose name
    // has no dot; the depth is then left out.
    bool luminanceChroma = false;
    std::string layer;
};

// R, G, B (or Y, with or without RY and BY), A and Z, of colours and mask also the lower-case
// letters; when there is no such colour, that of the first layer that has one ("left.R"). Fails
// when nothing can be shown.
[[nodiscard]] Failure findExrChannels(const std::vector<std::string>& names, ExrChannels& channels);

}  // namespace vistel
