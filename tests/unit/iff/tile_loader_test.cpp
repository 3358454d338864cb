// What becomes of the tiles of an image: which are loaded, where they land, which are refused.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "iff/image_bytes.h"
#include "iff/image_loader.h"
#include "iff/result_codes.h"
#include "iff/sample_tiles.h"

namespace vistel {
namespace {

using test::Bytes;
using test::flatImage;
using test::flatPixel;
using test::Loading;
using test::sampleTiles;

using test::maskFlags;

TEST(ImageLoading, EveryKindOfImageInEveryTiling) {
    for (uint32_t flags : {0u, 1u, 2u, 3u, 0x12u})
        for (uint16_t wide : {0, 1})
            for (auto [tileWidth, tileHeight] : {std::pair{64, 64}, {7, 100}, {100, 3}, {1, 1}}) {
                const ImageHeader head = test::header(81, 70, flags, compressRle, wide);
                Loading load(test::imageForm(
                    head, sampleTiles(head, static_cast<uint16_t>(tileWidth),
                                      static_cast<uint16_t>(tileHeight), tileWidth == 7)));
                ASSERT_EQ(load.run(), iffOk);
                ASSERT_EQ(load.frames.size(), 1u);
                EXPECT_EQ(load.frames[0].width, 81);
                EXPECT_EQ(load.frames[0].height, 70);
                EXPECT_EQ(test::pixelsOf(load.frames[0]), test::samplePicture(head))
                    << "flags " << flags << " wide " << wide;
                EXPECT_TRUE(load.frames[0].z.empty());
            }
}

TEST(ImageLoading, DepthGoesToItsOwnPlane) {
    const ImageHeader head = test::header(40, 30, maskFlags | imageZ);
    Loading load(test::imageForm(head, sampleTiles(head, 16, 16, true, true)));
    ASSERT_EQ(load.run(), iffOk);
    const auto depths = test::depthsOf(load.frames.at(0));
    ASSERT_EQ(depths.size(), 1200u);
    for (uint32_t y = 0; y < 30; ++y)
        for (uint32_t x = 0; x < 40; ++x)
            ASSERT_EQ(depths[y * 40 + x], test::sampleDepth(x, y)) << x << " " << y;
    EXPECT_EQ(test::pixelsOf(load.frames[0]), test::samplePicture(head));
}

TEST(ImageLoading, DepthIsSkippedWhenItIsNotWanted) {
    const ImageHeader head = test::header(40, 30, maskFlags | imageZ);
    Loading load(test::imageForm(head, sampleTiles(head, 16, 16, false, true)));
    load.request.loadZ = false;
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_TRUE(load.frames.at(0).z.empty());
    EXPECT_EQ(test::pixelsOf(load.frames[0]), test::samplePicture(head));
}

TEST(ImageLoading, AnImageWithoutColourAndMaskHasOnlyDepth) {
    const ImageHeader head = test::header(20, 10, imageBlack | imageZ);
    const TileRect all{0, 0, 19, 9};
    Loading load(
        test::imageForm(head, Bytes()
                                  .add(test::tile("RGBA", all, {}))
                                  .add(test::tile("ZBUF", all, test::wholeDepthData(all)))));
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_TRUE(load.frames.at(0).colour.empty());
    EXPECT_EQ(test::depthsOf(load.frames[0]).size(), 200u);
    EXPECT_EQ(load.frames[0].width, 20);
}

TEST(ImageLoading, PixelsNoTileCoversAreZero) {
    const ImageHeader head = test::header(8, 8, imageColour);
    Loading load(test::imageForm(head, test::tile("RGBA", {4, 4, 5, 5}, Bytes().fill(12, 0x11))));
    ASSERT_EQ(load.run(), iffOk);
    const auto pixels = test::pixelsOf(load.frames.at(0));
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 0xFF111111u), 4);
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 0u), 60);
    EXPECT_EQ(pixels[4 * 8 + 4], 0xFF111111u);
}

TEST(ImageLoading, ShrinksAsTheDisplayFitAsks) {
    const ImageHeader head = test::header(101, 60, maskFlags | imageZ);
    for (uint16_t size : {16, 101}) {
        Loading load(test::imageForm(head, sampleTiles(head, size, size, false, true)));
        load.request.fit.shrink = 3;
        ASSERT_EQ(load.run(), iffOk);
        const FrameStore& frame = load.frames.at(0);
        EXPECT_EQ(frame.width, 33);
        EXPECT_EQ(frame.height, 20);
        EXPECT_EQ(frame.shrink, 3);
        EXPECT_EQ(frame.header.width, 101u);
        if (size == 101)
            for (uint32_t y = 0; y < 20; ++y)
                for (uint32_t x = 0; x < 33; ++x) {
                    ASSERT_EQ(frame.colour.row(y)[x],
                              test::planePixel(test::samplePixel(3 * x, 3 * y)));
                    ASSERT_EQ(frame.z.row(y)[x], test::sampleDepth(3 * x, 3 * y));
                }
    }
}

TEST(ImageLoading, TileRectanglesAreListedForUpTo8192Tiles) {
    ImageHeader head = test::header(4, 4, maskFlags);
    const auto listed = [&](uint16_t tiles) {
        head.tiles = tiles;
        Loading load(test::imageForm(head, sampleTiles(head, 2, 2)));
        EXPECT_EQ(load.run(), iffOk);
        return load.frames.at(0).tiles.size();
    };
    EXPECT_EQ(listed(4), 4u);
    EXPECT_EQ(listed(0), 4u);
    EXPECT_EQ(listed(8192), 4u);
    EXPECT_EQ(listed(8193), 0u);
    Loading load(test::imageForm(head = test::header(4, 4, maskFlags), sampleTiles(head, 2, 2)));
    ASSERT_EQ(load.run(), iffOk);
    const TileRect& last = load.frames.at(0).tiles.back();
    EXPECT_EQ(last.x1, 2);
    EXPECT_EQ(last.y1, 2);
    EXPECT_EQ(last.x2, 3);
    EXPECT_EQ(last.y2, 3);
}

TEST(ImageChunks, OfTilesBeforeAHeaderAreRefused) {
    for (const char* id : {"RGBA", "ZBUF"}) {
        Loading load(Bytes().group("FOR4", "CIMG",
                                   test::tileGroup(test::tile(id, {0, 0, 0, 0}, Bytes().fill(4)))));
        EXPECT_EQ(load.run(), iffNoImageHeader) << id;
        EXPECT_TRUE(load.frames.empty());
    }
}

TEST(ImageChunks, BadTilesEndTheLoadAndTheFrameIsStillHandedOver) {
    const ImageHeader head = test::header(8, 8, imageColour);
    const Bytes good = test::tile("RGBA", {0, 0, 1, 0}, Bytes().fill(6, 0x22));
    const struct {
        const char* what;
        Bytes tile;
        int code;
    } rows[] = {
        {"outside", test::tile("RGBA", {7, 7, 8, 8}, Bytes().fill(12)), iffBadTiling},
        {"turned", test::tile("RGBA", {3, 3, 2, 3}, Bytes().fill(3)), iffBadTiling},
        {"too much data", test::tile("RGBA", {0, 0, 1, 0}, Bytes().fill(7)), iffCompression},
        {"no rectangle", Bytes().chunk("RGBA", Bytes().u32(0)), iffBlockTooShort},
        {"depth outside", test::tile("ZBUF", {0, 0, 8, 0}, Bytes().fill(36)), iffBadTiling},
        {"depth too much", test::tile("ZBUF", {0, 0, 0, 0}, Bytes().fill(5)), iffCompression},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Loading alone(test::imageForm(head, row.tile));
        EXPECT_EQ(alone.run(), row.code);
        EXPECT_TRUE(alone.frames.empty());
        Loading second(test::imageForm(head, Bytes().add(good).add(row.tile)));
        EXPECT_EQ(second.run(), row.code);
        ASSERT_EQ(second.frames.size(), 1u);
        EXPECT_EQ(second.errors[0], row.code);
        EXPECT_EQ(second.frames[0].colour.row(0)[0], 0xFF222222u);
        EXPECT_EQ(second.frames[0].colour.row(7)[7], 0u);
    }
}

TEST(ImageChunks, ATileOfUnknownSizeIsACompressionError) {
    const ImageHeader head = test::header(2, 2, 0);
    Bytes tiles;
    tiles.streamedChunk("RGBA", Bytes().u16(0).u16(0).u16(1).u16(1).fill(4));
    Loading load(test::imageForm(head, tiles));
    EXPECT_EQ(load.run(), iffCompression);
}

TEST(ImageMemory, AHeaderWhosePlanesCannotBeIsNoMemory) {
    const Bytes tile = test::tile("RGBA", {0, 0, 0, 0}, Bytes().u8(1));
    for (auto [width, height] : {std::pair{0xFFFFFFFFu, 0xFFFFFFFFu}, {0x80000000u, 1u}}) {
        Loading load(test::imageForm(test::header(width, height, 0), tile));
        EXPECT_EQ(load.run(), iffNoMemory);
        EXPECT_TRUE(load.frames.empty());
    }
    // Without a tile nothing is asked of memory.
    Loading empty(test::imageForm(test::header(0xFFFFFFFF, 0xFFFFFFFF, 0), {}));
    EXPECT_EQ(empty.run(), iffOk);
}

TEST(ImageMemory, APromiseThatTheTilesCannotKeepIsNoMemory) {
    const Bytes pixel = test::tile("RGBA", {0, 0, 0, 0}, Bytes().fill(4, 1));
    Loading load(test::imageForm(test::header(60000, 60000, maskFlags), pixel));
    load.request.fit = DisplayFit();
    EXPECT_EQ(load.run(), iffNoMemory);
    EXPECT_TRUE(load.frames.empty());
    EXPECT_FALSE(load.working.hasPicture());
    Loading shrunk(test::imageForm(test::header(60000, 60000, maskFlags), pixel));
    shrunk.request.fit.shrink = 100;
    EXPECT_EQ(shrunk.run(), iffOk);
    EXPECT_EQ(shrunk.frames.at(0).width, 600);
}

TEST(ImageLoading, ABlackImageWithoutDepthIsShownBlack) {
    const TileRect all{0, 0, 19, 9};
    const Bytes colour = test::tile("RGBA", all, {});
    const Bytes depth = test::tile("ZBUF", all, test::wholeDepthData(all));
    const struct {
        const char* what;
        Bytes tiles;
        bool loadZ;
    } rows[] = {{"no depth tiles", colour, true},
                {"depth not wanted", Bytes().add(colour).add(depth), false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Loading load(test::imageForm(test::header(20, 10, imageBlack | imageZ), row.tiles));
        load.request.loadZ = row.loadZ;
        ASSERT_EQ(load.run(), iffOk);
        const FrameStore& frame = load.frames.at(0);
        EXPECT_EQ(test::pixelsOf(frame), std::vector<uint32_t>(200, 0));
        EXPECT_TRUE(frame.z.empty());
        EXPECT_EQ(frame.width, 20);
    }
}

TEST(ImageLoading, TilesWithFewBytesOrNoneAreZeroWhereNothingIs) {
    const TileRect all{0, 0, 63, 63};
    for (uint32_t compression : {0u, 1u, 2u, 3u}) {
        Loading load(test::imageForm(test::header(64, 64, maskFlags, compression),
                                     test::tile("RGBA", all, {})));
        ASSERT_EQ(load.run(), iffOk) << compression;
        EXPECT_EQ(test::pixelsOf(load.frames.at(0)), std::vector<uint32_t>(4096, 0));
    }
    Bytes four;
    for (int i = 0; i < 4; ++i) four.u8(9).u8(3).u8(2).u8(1);
    Loading load(
        test::imageForm(test::header(64, 64, maskFlags, 3), test::tile("RGBA", all, four)));
    ASSERT_EQ(load.run(), iffOk);
    std::vector<uint32_t> expected(4096, 0);
    std::fill_n(expected.begin(), 4, flatPixel(1));
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), expected);
}

}  // namespace
}  // namespace vistel
