#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "iff/image_bytes.h"
#include "iff/tile_encoder.h"

namespace vistel {
namespace {

using test::Bytes;

TEST(TileEncoder, PacketsSayWhatTheValuesAre) {
    const auto packed = [](const std::vector<uint8_t>& values) {
        std::vector<uint8_t> out(roomForPackets(values.size()));
        out.resize(size_t(packRle(values.data(), values.size(), out.data()) - out.data()));
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
    TileEncoder encoder;
    using V = std::vector<uint8_t>;
    const auto encoded = [&](uint32_t width, uint32_t compression, const V& pixels) {
        const TileFormat grey = colourTileFormat(test::header(width, 1, 0, compression));
        const TileRect rect{0, 0, static_cast<uint16_t>(width - 1), 0};
        const auto data = encoder.encode(grey, rect, {pixels.data(), 1, width});
        return V(data.begin(), data.end());
    };
    EXPECT_EQ(encoded(2, compressRle, {1, 1}), (V{1, 1}));  // 2 bytes would be taken as whole
    EXPECT_EQ(encoded(3, compressRle, {1, 1, 1}), (V{0x82, 1}));
    EXPECT_EQ(encoded(3, compressNone, {1, 1, 1}), (V{1, 1, 1}));
}

TEST(TileEncoder, ATilesRowsLieApartInItsPicture) {
    TileEncoder encoder;
    using V = std::vector<uint8_t>;
    const V picture = {1, 2, 9, 9, 3, 4, 9, 9, 7, 7, 9, 9};
    const TileFormat grey = colourTileFormat(test::header(4, 3, 0));
    const auto whole = encoder.encode(grey, {0, 0, 1, 1}, {picture.data(), 1, 4});
    EXPECT_EQ(V(whole.begin(), whole.end()), (V{1, 2, 3, 4}));
    const V flat(12, 5);
    const auto packed = encoder.encode(grey, {1, 0, 2, 2}, {flat.data() + 1, 1, 4});
    EXPECT_EQ(V(packed.begin(), packed.end()), (V{0x85, 5}));
}

TEST(TileEncoder, APixelsBytesAreTakenInTheFilesOrder) {
    TileEncoder encoder;
    using V = std::vector<uint8_t>;
    const V pixels = {1, 2, 3, 4, 5, 6, 7, 8};
    const auto encoded = [&](uint32_t flags, uint32_t compression, const TileSource& source) {
        const TileFormat format = colourTileFormat(test::header(2, 1, flags, compression));
        const auto data = encoder.encode(format, {0, 0, 1, 0}, source);
        return V(data.begin(), data.end());
    };
    const TileSource turned{pixels.data(), 4, 8, {3, 2, 1, 0}};
    EXPECT_EQ(encoded(test::maskFlags, compressNone, turned), (V{4, 3, 2, 1, 8, 7, 6, 5}));
    const TileSource without{pixels.data(), 4, 8, {2, 1, 0}};
    EXPECT_EQ(encoded(test::colourFlags, compressNone, without), (V{3, 2, 1, 7, 6, 5}));
    const V flat(8, 9);
    // The mask's two bytes, then a run of two pixels.
    EXPECT_EQ(encoded(test::maskFlags, compressQrl, {flat.data(), 4, 8, {3, 2, 1, 0}}),
              (V{1, 9, 9, 0x81, 9, 9, 9}));
}

TEST(TileEncoder, LiteralsEndWhereARunBegins) {
    std::vector<uint8_t> values, out;
    for (size_t literal = 1; literal < 40; ++literal)
        for (size_t run = 3; run < 12; ++run) {
            values.clear();
            for (size_t i = 0; i < literal; ++i) values.push_back(static_cast<uint8_t>(i));
            values.insert(values.end(), run, 200);
            out.assign(roomForPackets(values.size()), 0);
            out.resize(size_t(packRle(values.data(), values.size(), out.data()) - out.data()));
            ASSERT_EQ(out.size(), literal + 3) << literal << " " << run;
            EXPECT_EQ(out[0], literal - 1);
            EXPECT_TRUE(std::equal(values.begin(), values.begin() + long(literal), out.begin() + 1));
            EXPECT_EQ(out[literal + 1], 127 + run);
            EXPECT_EQ(out[literal + 2], 200);
        }
}

}  // namespace
}  // namespace vistel
