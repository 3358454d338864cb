#include "exr_channels.h"

#include <algorithm>

namespace vistel {

namespace {

bool has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isColour(const std::string& name) {
    return name == "R" || name == "G" || name == "B" || name == "Y";
}

// "left." of the first channel like "left.R"; "" when the picture itself has colour, or no layer
// has.
std::string layerOf(const std::vector<std::string>& names) {
    if (std::any_of(names.begin(), names.end(), isColour)) return {};
    for (const std::string& name : names) {
        const size_t word = name.rfind('.') + 1;
        if (word > 0 && isColour(name.substr(word))) return name.substr(0, word);
    }
    return {};
}

}  // namespace

Failure findExrChannels(const std::vector<std::string>& names, ExrChannels& channels) {
    const std::string layer = layerOf(names);
    const auto nameOf = [&](const char* channel) {
        return has(names, layer + channel) ? layer + channel : std::string();
    };
    channels = ExrChannels();
    const char* colours[] = {"R", "G", "B"};
    for (int i = 0; i < 3; ++i) channels.colour[i] = nameOf(colours[i]);
    channels.grey = std::all_of(std::begin(channels.colour), std::end(channels.colour),
                                [](const std::string& name) { return name.empty(); });
    if (channels.grey) channels.colour[0] = nameOf("Y");
    channels.mask = nameOf("A");
    channels.depth = nameOf("Z");
    if (channels.depth.empty() && has(names, "Z")) channels.depth = "Z";
    if (channels.grey && (has(names, layer + "RY") || has(names, layer + "BY")))
        return "colour stored as luminance and chroma cannot be read";
    if (channels.grey && channels.colour[0].empty() && channels.mask.empty() &&
        channels.depth.empty())
        return "the picture has no channels R, G, B, Y, A or Z";
    return {};
}

}  // namespace vistel
