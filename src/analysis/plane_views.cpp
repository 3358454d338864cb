#include "analysis/plane_views.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "analysis/view_kernels.h"

namespace vistel {

namespace {

struct Range {
    double low = 0, high = 0;
};

Range wholeRange(const DepthRange& range) { return {range.nearest, range.farthest}; }

constexpr uint32_t signBit = 0x80000000;

// Words in the order of the numbers that they stand for.
uint32_t orderedWord(float number) {
    const auto bits = std::bit_cast<uint32_t>(number);
    return bits & signBit ? ~bits : bits | signBit;
}
double numberOf(uint32_t word) {
    return double{std::bit_cast<float>(word & signBit ? word & ~signBit : ~word)};
}

// `scratch` has room for a word for each sample.
Range percentileRange(const float* z, size_t pixels, uint32_t* scratch) {
    uint32_t* end = scratch;
    for (size_t i = 0; i < pixels; ++i)
        if (std::isfinite(z[i])) *end++ = orderedWord(z[i]);
    if (end == scratch) return {};
    const auto at = [&](size_t percent) {
        uint32_t* place = scratch + static_cast<size_t>(end - scratch - 1) * percent / 100;
        std::nth_element(scratch, place, end);
        return numberOf(*place);
    };
    const double low = at(2);
    return {low, at(98)};
}

}  // namespace

void buildPlaneView(ChannelMode plane, bool maskInverted, const uint32_t* stored, size_t pixels,
                    uint32_t* view) {
    const uint8_t flip = plane == ChannelMode::matte && maskInverted ? 0xFF : 0;
    viewKernels().greyPlane(planeOf(plane), flip, stored, pixels, view);
}

void buildLuminanceView(const uint32_t* stored, size_t pixels, uint32_t* view) {
    const size_t whole = pixels - pixels % 4;
    viewKernels().luminance(stored, whole, view);
    std::fill(view + whole, view + pixels, 0);
}

DepthRange finiteRange(const float* z, size_t pixels) {
    bool found = false;
    DepthRange range;
    for (size_t i = 0; i < pixels; ++i) {
        if (!std::isfinite(z[i])) continue;
        range.nearest = found ? std::min(range.nearest, z[i]) : z[i];
        range.farthest = found ? std::max(range.farthest, z[i]) : z[i];
        found = true;
    }
    return range;
}

void buildZView(const float* z, size_t pixels, ZScale scale, uint32_t* view) {
    // The samples are sorted where the view will be: showing frame after frame allocates nothing.
    const Range range = scale == ZScale::wholeRange ? wholeRange(finiteRange(z, pixels))
                                                    : percentileRange(z, pixels, view);
    const double span = range.high - range.low;
    for (size_t i = 0; i < pixels; ++i) {
        if (!std::isfinite(z[i])) {
            view[i] = greyPixel(0);
            continue;
        }
        const double nearness = span > 0 ? (range.high - z[i]) / span : 1.0;
        view[i] = greyPixel(static_cast<uint8_t>(std::clamp(nearness, 0.0, 1.0) * 255 + 0.5));
    }
}

}  // namespace vistel
