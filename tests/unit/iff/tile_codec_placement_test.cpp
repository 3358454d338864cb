// Where a tile lands, and which rectangles and sizes are refused before it is decoded.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "iff/image_bytes.h"
#include "iff/result_codes.h"
#include "iff/tile_codec.h"

namespace vistel {
namespace {

using test::colourFlags;
using test::maskFlags;

TEST(TilePlacement, CoversFromTheFirstPixelDividedToTheEndDivided) {
    const struct {
        TileRect rect;
        uint32_t shrink, column, row, columns, rows;
    } cases[] = {
        {{64, 128, 127, 191}, 1, 64, 128, 64, 64},
        {{64, 128, 127, 191}, 2, 32, 64, 32, 32},
        {{64, 0, 127, 63}, 3, 21, 0, 21, 21},  // 128/3 - 64/3 columns
        {{0, 0, 63, 63}, 3, 0, 0, 21, 21},
        {{3, 3, 3, 3}, 4, 0, 0, 1, 1},
        {{0, 0, 2, 2}, 4, 0, 0, 0, 0},  // falls between the samples
        {{0, 0, 65534, 65534}, 65535, 0, 0, 1, 1},
        {{5, 5, 5, 5}, UINT32_MAX, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        const TilePlacement place = placeTile(c.rect, c.shrink);
        SCOPED_TRACE(testing::Message() << c.rect.x1 << " shrink " << c.shrink);
        EXPECT_EQ(place.column, c.column);
        EXPECT_EQ(place.row, c.row);
        EXPECT_EQ(place.columns, c.columns);
        EXPECT_EQ(place.rows, c.rows);
    }
}

TEST(TilePlacement, NeverLeavesTheTileOrThePlane) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int round = 0; round < 20000; ++round) {
        const uint32_t width = random() % 300 + 1, height = random() % 300 + 1;
        const uint32_t shrink = random() % 12 + 1;
        TileRect rect;
        rect.x1 = static_cast<uint16_t>(random() % width);
        rect.y1 = static_cast<uint16_t>(random() % height);
        rect.x2 = static_cast<uint16_t>(rect.x1 + random() % (width - rect.x1));
        rect.y2 = static_cast<uint16_t>(rect.y1 + random() % (height - rect.y1));
        const TilePlacement place = placeTile(rect, shrink);
        ASSERT_LE(place.column + place.columns, std::max<uint32_t>(width / shrink, 1)) << seed;
        ASSERT_LE(place.row + place.rows, std::max<uint32_t>(height / shrink, 1)) << seed;
        if (place.columns > 0) {
            ASSERT_LT((place.columns - 1) * shrink, rect.width()) << seed;
        }
        if (place.rows > 0) {
            ASSERT_LT((place.rows - 1) * shrink, rect.height()) << seed;
        }
    }
}

TEST(TileRectCheck, RefusesRectanglesOutsideTheImage) {
    ImageHeader header;
    header.width = 100;
    header.height = 50;
    const struct {
        TileRect rect;
        int code;
    } rows[] = {
        {{0, 0, 99, 49}, iffOk},          {{99, 49, 99, 49}, iffOk},
        {{0, 0, 100, 49}, iffBadTiling},  {{0, 0, 99, 50}, iffBadTiling},
        {{5, 0, 4, 49}, iffBadTiling},    {{0, 5, 99, 4}, iffBadTiling},
        {{100, 0, 100, 0}, iffBadTiling}, {{0, 0, 65535, 65535}, iffBadTiling},
    };
    for (const auto& row : rows) EXPECT_EQ(checkTileRect(row.rect, header), row.code);
}

TEST(TileDataSize, MoreThanTheWholeTileIsACompressionError) {
    const TileRect rect{0, 0, 9, 9};
    const TileFormat colour = colourTileFormat(test::header(10, 10, colourFlags));
    EXPECT_EQ(checkTileDataSize(colour, rect, 300), iffOk);
    EXPECT_EQ(checkTileDataSize(colour, rect, 301), iffCompression);
    EXPECT_EQ(checkTileDataSize(depthTileFormat(), rect, 400), iffOk);
    EXPECT_EQ(checkTileDataSize(depthTileFormat(), rect, 401), iffCompression);
    const TileFormat nothing = colourTileFormat(test::header(10, 10, imageBlack));
    EXPECT_EQ(checkTileDataSize(nothing, rect, 0), iffOk);
    EXPECT_EQ(checkTileDataSize(nothing, rect, 1), iffCompression);
}

TEST(TileDataSize, TooLittleForAnyPackingIsACompressionError) {
    const TileRect rect{0, 0, 65534, 65534};  // 12 GB whole
    const TileFormat colour = colourTileFormat(test::header(65535, 65535, colourFlags));
    EXPECT_EQ(checkTileDataSize(colour, rect, 0), iffCompression);
    EXPECT_EQ(checkTileDataSize(colour, rect, 1000), iffCompression);
    EXPECT_EQ(checkTileDataSize(depthTileFormat(), rect, 1000), iffCompression);
    // The densest packets there are just pass.
    const TileRect row{0, 0, 1279, 0};
    EXPECT_EQ(checkTileDataSize(colour, row, 3 * 20), iffOk);
    const TileFormat pixels = colourTileFormat(test::header(1280, 1, colourFlags, compressQrl));
    EXPECT_EQ(checkTileDataSize(pixels, row, 4 * 10), iffOk);
}

TEST(TileDataSize, ATileOfOrdinarySizeMayBeShortOrEmpty) {
    const TileRect all{0, 0, 63, 63};
    for (uint32_t compression : {0u, 1u, 2u, 3u}) {
        const TileFormat format = colourTileFormat(test::header(64, 64, maskFlags, compression));
        for (uint64_t size : {0, 1, 16}) EXPECT_EQ(checkTileDataSize(format, all, size), iffOk);
    }
}

}  // namespace
}  // namespace vistel
