#include <gtest/gtest.h>

#include <vector>

#include "iff/image_bytes.h"
#include "iff/tile_encoder.h"

namespace vistel {
namespace {

using test::Bytes;

TEST(TileEncoder, PacketsSayWhatTheValuesAre) {
    const auto packed = [](const std::vector<uint8_t>& values) {
        std::vector<uint8_t> out;
        appendRle(values.data(), values.size(), 1, out);
        return out;
    };
    using V = std::vector<uint8_t>;
    EXPECT_EQ(packed({}), V{});
    EXPECT_EQ(packed({5}), (V{0, 5}));
    EXPECT_EQ(packed({5, 6}), (V{1, 5, 6}));
    EXPECT_EQ(packed({5, 5, 5}), (V{0x82, 5}));
    EXPECT_EQ(packed({1, 5, 5, 5}), (V{0, 1, 0x82, 5}));
    EXPECT_EQ(packed(V(128, 7)), (V{0xFF, 7}));
    EXPECT_EQ(packed(V(131, 7)), (V{0xFF, 7, 0x82, 7}));
    EXPECT_EQ(packed(V(129, 7)), (V{0xFF, 7, 0, 7}));
    V counting(200), expected{0x7F};
    for (int i = 0; i < 200; ++i) counting[size_t(i)] = static_cast<uint8_t>(i);
    expected.insert(expected.end(), counting.begin(), counting.begin() + 128);
    expected.push_back(71);
    expected.insert(expected.end(), counting.begin() + 128, counting.end());
    EXPECT_EQ(packed(counting), expected);
}

TEST(TileEncoder, TilesThatDoNotShrinkAreLeftWhole) {
    std::vector<uint8_t> packed;
    const TileFormat grey = colourTileFormat(test::header(2, 1, 0));
    const uint8_t raw[] = {1, 1};
    EXPECT_EQ(encodeTile(grey, {0, 0, 1, 0}, raw, packed), 0u);  // 2 bytes would be taken as whole
    const uint8_t run[] = {1, 1, 1};
    EXPECT_EQ(encodeTile(grey, {0, 0, 2, 0}, run, packed), 2u);
    const TileFormat none = colourTileFormat(test::header(3, 1, 0, compressNone));
    EXPECT_EQ(encodeTile(none, {0, 0, 2, 0}, run, packed), 0u);
}

}  // namespace
}  // namespace vistel
