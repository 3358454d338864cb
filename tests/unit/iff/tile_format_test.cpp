#include <gtest/gtest.h>

#include <vector>

#include "iff/image_bytes.h"
#include "iff/tile_format.h"

namespace vistel {
namespace {

TEST(TileFormat, ChannelsAreThoseTheImageHas) {
    const struct {
        uint32_t flags;
        std::vector<int> channels;
    } rows[] = {
        {imageColour | imageMask, {0, 1, 2, 3}},
        {imageColour, {1, 2, 3}},
        {imageMask, {0, 2}},
        {0, {2}},
        {imageBlack, {}},
        {imageBlack | imageMask, {0}},
        {imageBlack | imageMask | imageColour, {0}},
        {imageBlack | imageColour, {}},
    };
    for (const auto& row : rows)
        for (uint16_t wide : {0, 1}) {
            const ImageHeader header = test::header(1, 1, row.flags, compressRle, wide);
            const TileFormat format = colourTileFormat(header);
            EXPECT_EQ(std::vector<int>(format.channels, format.channels + format.channelCount),
                      row.channels);
            EXPECT_EQ(format.pixelBytes(), header.bytesPerPixel()) << row.flags;
        }
    EXPECT_EQ(depthTileFormat().pixelBytes(), 4);
}

}  // namespace
}  // namespace vistel
