#include "turned.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "samples.h"

namespace vistel {

namespace {

struct Turn {
    bool exchange, fromRight, fromBottom;  // of the upright picture
};
constexpr Turn turns[] = {{false, false, false}, {false, true, false}, {false, true, true},
                          {false, false, true},  {true, false, false}, {true, true, false},
                          {true, true, true},    {true, false, true}};

template <class Sample>
void turnPixels(const Sample* from, const Picture& stored, const Turn& turn, uint32_t width,
                uint32_t height, Sample* to) {
    for (uint32_t row = 0; row < stored.height; ++row)
        for (uint32_t column = 0; column < stored.width; ++column, from += 4) {
            uint32_t x = turn.exchange ? row : column;
            uint32_t y = turn.exchange ? column : row;
            if (turn.fromRight) x = width - 1 - x;
            if (turn.fromBottom) y = height - 1 - y;
            std::memcpy(to + (size_t{y} * width + x) * 4, from, 4 * sizeof(Sample));
        }
}

}  // namespace

Failure turnUpright(Picture& picture, int orientation) {
    if (orientation < 2 || orientation > 8) return {};
    const Turn& turn = turns[orientation - 1];
    const Picture stored = std::exchange(picture, {});
    picture.mostBytes = stored.mostBytes;
    const uint32_t width = turn.exchange ? stored.height : stored.width;
    const uint32_t height = turn.exchange ? stored.width : stored.height;
    if (Failure failure = picture.allocate(width, height, stored.wide)) return failure;
    picture.colour = stored.colour;
    picture.mask = stored.mask;
    picture.filmCodes = stored.filmCodes;
    picture.rowsRead =
        uint32_t((uint64_t{stored.rowsRead} * height + stored.height - 1) / stored.height);
    if (stored.wide)
        turnPixels(stored.wideSamples.data(), stored, turn, width, height,
                   picture.wideSamples.data());
    else
        turnPixels(stored.samples.data(), stored, turn, width, height, picture.samples.data());
    return {};
}

Failure completed(Picture& picture, Failure failure, int orientation) {
    if (failure && !picture.partIsThere()) return failure;
    for (uint32_t y = 0; y < picture.height; ++y) completeRow(picture, y);
    const Failure turned = turnUpright(picture, orientation);
    return failure ? failure : turned;
}

}  // namespace vistel
