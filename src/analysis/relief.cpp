#include "analysis/relief.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

#include "analysis/view_kernels.h"

namespace vistel {

// Null without memory for it: the formula gives the same shades.
const ReliefTable* ReliefShader::tableFor(float k) {
    if (table_ && table_->k() == k) return table_.get();
    if (table_) {
        table_->build(k);
    } else {
        table_.reset(new (std::nothrow) ReliefTable(k));
    }
    if (table_) ++tableBuilds_;
    return table_.get();
}

void ReliefShader::shade(const uint32_t* heights, size_t width, size_t height, float slope,
                         bool tableWanted, uint8_t* shade) {
    if (width == 0) return;
    const float k = slope * -0.25f;
    const ViewKernels& kernels = viewKernels();
    const bool large = width * height >= largeFrame;
    const bool tabled = !kernels.shadesFasterThanATable && (tableWanted || large);
    const ReliefTable* table = tabled ? tableFor(k) : nullptr;
    for (size_t y = 0; y < height; ++y) {
        const uint32_t* row = heights + y * width;
        const uint32_t* before = y > 0 ? row - width : nullptr;
        uint8_t* out = shade + y * width;
        table ? table->shadeRow(row, before, width, out)
              : kernels.shadeRow(k, row, before, width, out);
    }
}

void buildReliefView(const uint8_t* shade, const uint32_t* colour, int strength, size_t pixels,
                     uint32_t* view) {
    if (!colour || strength <= 0) return viewKernels().greyBytes(shade, pixels, view);
    // The strength over the shade of a flat plane, so that flat parts nearly keep their colours.
    const int full = std::min(strength, strongestRelief);
    const auto factor = static_cast<uint32_t>(full / (0.6 / std::sqrt(2.36)));
    // What is missing from full strength is made up in white.
    const auto base = static_cast<uint32_t>(strongestRelief - full) * 256;
    viewKernels().blendRelief({factor, base}, shade, colour, pixels, view);
}

std::optional<uint32_t> profileColour(ChannelMode view) {
    static constexpr std::optional<uint32_t> colours[] = {
        0x808000,     0x800000, 0x008000, 0x000080,  // mask, blue, green, red
        std::nullopt, 0x008080, 0x808080,            // all channels, depth, luminance
    };
    const auto number = static_cast<size_t>(view);
    return number < std::size(colours) ? colours[number] : std::nullopt;
}

void profileOfRow(const uint32_t* heights, size_t width, size_t row, ProfilePoint* points) {
    for (size_t x = 0; x < width; ++x)
        points[x] = {
            static_cast<float>(x),
            static_cast<float>(row) + reliefHeight(heights[x]) * (float{profileHeight} / 255)};
}

}  // namespace vistel
