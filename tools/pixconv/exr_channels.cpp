#include "exr_channels.h"

#include <algorithm>

namespace vistel {

namespace {

bool has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isColour(const std::string& name) {
    static constexpr const char* all[] = {"R", "G", "B", "Y", "r", "g", "b"};
    return std::find(std::begin(all), std::end(all), name) != std::end(all);
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
    const auto nameOf = [&](const char* channel, const char* other = "") {
        if (has(names, layer + channel)) return layer + channel;
        return *other && has(names, layer + other) ? layer + other : std::string();
    };
    channels = ExrChannels();
    static constexpr const char* colours[][2] = {{"R", "r"}, {"G", "g"}, {"B", "b"}};
    for (int i = 0; i < 3; ++i) channels.colour[i] = nameOf(colours[i][0], colours[i][1]);
    channels.grey = std::all_of(std::begin(channels.colour), std::end(channels.colour),
                                [](const std::string& name) { return name.empty(); });
    if (channels.grey) channels.colour[0] = nameOf("Y");
    channels.mask = nameOf("A", "a");
    channels.depth = nameOf("Z");
    if (channels.depth.empty() && has(names, "Z")) channels.depth = "Z";
    if (channels.grey && !(nameOf("RY") + nameOf("BY")).empty()) {
        if (channels.colour[0].empty()) return "the picture has chroma, but no luminance";
        channels.grey = false;
        channels.luminanceChroma = true;
        channels.layer = layer.substr(0, layer.size() - (layer.empty() ? 0 : 1));
        channels.depth.clear();
    }
    if (channels.grey && channels.colour[0].empty() && channels.mask.empty() &&
        channels.depth.empty())
        return "the picture has no channels R, G, B, Y, A or Z";
    return {};
}

}  // namespace vistel
