// The walk over frame files: which forms are read, what becomes of each chunk.

#include <gtest/gtest.h>

#include <algorithm>

#include "iff/image_bytes.h"
#include "iff/image_loader.h"
#include "iff/result_codes.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Loading;

constexpr uint32_t maskFlags = imageColour | imageMask;

// A one-tile image of one value, different for each `value`.
Bytes flatImage(unsigned value, uint32_t width = 4, uint32_t height = 4,
                std::string_view kind = "FOR4") {
    const ImageHeader head = test::header(width, height, maskFlags);
    Bytes data;
    for (uint32_t i = 0; i < width * height; ++i) data.u8(9).u8(3).u8(2).u8(value);
    const TileRect all{0, 0, static_cast<uint16_t>(width - 1), static_cast<uint16_t>(height - 1)};
    Bytes body;
    body.chunk("TBHD", test::headerBody(head));
    body.add(test::tileGroup(test::tile("RGBA", all, data)));
    if (kind == "FOR8") body.fill((8 - body.size() % 8) % 8);  // its chunks end on 8 bytes
    return Bytes().group(kind, "CIMG", body);
}
uint32_t flatPixel(unsigned value) { return test::planePixel({value, 2, 3, 9}); }

// The sample picture cut into tiles of the given size, in any order.
Bytes sampleTiles(const ImageHeader& head, uint16_t tileWidth, uint16_t tileHeight,
                  bool lastFirst = false, bool withDepth = false) {
    std::vector<Bytes> tiles;
    for (uint32_t y = 0; y < head.height; y += tileHeight)
        for (uint32_t x = 0; x < head.width; x += tileWidth) {
            TileRect rect;
            rect.x1 = static_cast<uint16_t>(x);
            rect.y1 = static_cast<uint16_t>(y);
            rect.x2 = static_cast<uint16_t>(std::min(x + tileWidth, head.width) - 1);
            rect.y2 = static_cast<uint16_t>(std::min(y + tileHeight, head.height) - 1);
            const Bytes whole = test::wholeTileData(head, rect);
            const Bytes packed = test::packedPlanes(whole, size_t(head.bytesPerPixel()));
            tiles.push_back(
                test::tile("RGBA", rect, packed.size() < whole.size() ? packed : whole));
            if (withDepth) tiles.back().add(test::tile("ZBUF", rect, test::wholeDepthData(rect)));
        }
    if (lastFirst) std::reverse(tiles.begin(), tiles.end());
    Bytes all;
    for (const Bytes& one : tiles) all.add(one);
    return all;
}

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

// --- groups ---

TEST(ImageForms, OfEveryAlignmentAreRead) {
    for (const char* kind : {"FORM", "FOR4", "FOR8"}) {
        Loading load(flatImage(50, 4, 4, kind));
        ASSERT_EQ(load.run(), iffOk) << kind;
        EXPECT_EQ(test::pixelsOf(load.frames.at(0)), std::vector<uint32_t>(16, flatPixel(50)));
    }
}

TEST(ImageForms, OfUnknownSizeEndWithTheirEndChunk) {
    const ImageHeader head = test::header(2, 1, imageColour);
    const Bytes tiles = test::tile("RGBA", {0, 0, 1, 0}, Bytes().fill(6, 7));
    Bytes body;
    body.chunk("TBHD", test::headerBody(head)).openGroup("FOR4", "TBMP", tiles);
    Loading load(Bytes().openGroup("FOR4", "CIMG", body));
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), std::vector<uint32_t>(2, 0xFF070707));
}

TEST(ImageForms, EachIsHandedOverInAList) {
    for (const char* kind : {"LIST", "LIS4", "LIS8", "CAT ", "CAT4", "CAT8"}) {
        const Bytes images = Bytes().add(flatImage(1)).add(flatImage(2)).add(flatImage(3));
        Loading load(Bytes().group(kind, "CIMG", images));
        ASSERT_EQ(load.run(), iffOk) << kind;
        ASSERT_EQ(load.frames.size(), 3u) << kind;
        for (unsigned i = 0; i < 3; ++i)
            EXPECT_EQ(load.frames[i].colour.row(0)[0], flatPixel(i + 1));
    }
}

TEST(ImageForms, EachIsHandedOverWhenTheyFollowEachOther) {
    Loading load(Bytes().add(flatImage(1)).add(flatImage(2, 6, 2)).add(flatImage(3, 2, 6)));
    ASSERT_EQ(load.run(), iffOk);
    ASSERT_EQ(load.frames.size(), 3u);
    EXPECT_EQ(load.frames[1].width, 6);
    EXPECT_EQ(load.frames[1].height, 2);
    EXPECT_EQ(test::pixelsOf(load.frames[2]), std::vector<uint32_t>(12, flatPixel(3)));
}

TEST(ImageForms, EachIsLoadedByItsNumberInARead) {
    const Bytes images = Bytes().add(flatImage(1)).add(flatImage(2)).add(flatImage(3));
    for (const Bytes& file : {images, Bytes().group("LIS4", "CIMG", images)})
        for (int wanted = 1; wanted <= 3; ++wanted) {
            Loading load(file);
            load.request.wantedForm = wanted;
            ASSERT_EQ(load.run(), iffOk);
            ASSERT_EQ(load.frames.size(), 1u);
            EXPECT_EQ(load.frames[0].colour.row(0)[0], flatPixel(static_cast<unsigned>(wanted)));
        }
}

TEST(ImageForms, ARereadOfAFormThatIsNotThereGivesNoFrame) {
    Loading load(Bytes().add(flatImage(1)).add(flatImage(2)));
    load.request.wantedForm = 3;
    EXPECT_EQ(load.run(), iffOk);
    EXPECT_TRUE(load.frames.empty());
    EXPECT_FALSE(load.working.hasPicture());
}

TEST(ImageForms, ARereadReadsNothingOfOtherForms) {
    // The first form is broken inside; its number is not the wanted one.
    Bytes broken = flatImage(1);
    broken.data[12] = 'X';  // TBHD
    Loading load(Bytes().add(broken).add(flatImage(2)));
    load.request.wantedForm = 2;
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.at(0).colour.row(0)[0], flatPixel(2));
}

TEST(ImageForms, TheLastOneStaysInTheWorkingStore) {
    Loading load(Bytes().add(flatImage(1)).add(flatImage(2)));
    load.request.stream = load.file.open();
    ASSERT_EQ(loadImages(load.request, load.working), iffOk);
    EXPECT_EQ(load.working.colour.row(3)[3], flatPixel(2));
}

TEST(ImageForms, TheReceiversResultGoesOn) {
    const Bytes file = Bytes().add(flatImage(1)).add(flatImage(2));
    Loading done(file);
    done.answer = iffParsingComplete;
    EXPECT_EQ(done.run(), iffOk);
    EXPECT_EQ(done.frames.size(), 1u);
    Loading failed(file);
    failed.answer = iffUserError;
    EXPECT_EQ(failed.run(), iffUserError);
    EXPECT_EQ(failed.frames.size(), 1u);
}

TEST(ImageForms, InsideAnotherImageFormAreImagesOfTheirOwn) {
    Loading load(Bytes().group("FOR4", "CIMG", Bytes().add(flatImage(1)).add(flatImage(2))));
    ASSERT_EQ(load.run(), iffOk);
    ASSERT_EQ(load.frames.size(), 2u);
    EXPECT_EQ(load.frames[1].colour.row(0)[0], flatPixel(2));
}

TEST(ImageForms, OfOtherTypesAreWalkedThrough) {
    Loading load(Bytes().group("FOR4", "XYZW", flatImage(4)));
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.at(0).colour.row(0)[0], flatPixel(4));
}

TEST(ImageForms, PropertyGroupsOfAListDoNotDisturb) {
    const Bytes properties = Bytes().group("PRO4", "CIMG", Bytes().chunk("NAME", "abcd"));
    Loading load(Bytes().group("LIS4", "CIMG", Bytes().add(properties).add(flatImage(4))));
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.size(), 1u);
}

TEST(ImageForms, APlainChunkInAListIsABadFile) {
    Loading load(Bytes().group("LIS4", "CIMG", Bytes().chunk("NAME", "abcd")));
    EXPECT_EQ(load.run(), iffBadFile);
}

TEST(NestingLimit, GroupsAtItOrDeeperAreSkipped) {
    const struct {
        uint32_t maxLevel;
        size_t frames;
        bool picture;
    } rows[] = {{0, 0, false}, {1, 1, false}, {2, 1, true}, {0xFFFFFFF0, 1, true}};
    for (const auto& row : rows) {
        Loading load(flatImage(1));
        load.request.maxLevel = row.maxLevel;
        ASSERT_EQ(load.run(), iffOk);
        ASSERT_EQ(load.frames.size(), row.frames) << row.maxLevel;
        if (row.frames) {
            EXPECT_EQ(load.frames[0].hasPicture(), row.picture) << row.maxLevel;
        }
    }
    Loading list(Bytes().group("LIS4", "CIMG", flatImage(1)));
    list.request.maxLevel = 0;
    EXPECT_EQ(list.run(), iffOk);
    EXPECT_TRUE(list.frames.empty());
}

TEST(TileGroups, AreSkippedWithoutPixelsUnlessAllIsShown) {
    // A tile that is refused when it is looked at: -100 needs no header, but the group must be
    // read.
    Bytes file = Bytes().group("FOR4", "CIMG",
                               test::tileGroup(test::tile("RGBA", {0, 0, 0, 0}, Bytes().u8(1))));
    const struct {
        bool pixels, all;
        int code;
    } rows[] = {{true, false, iffNoImageHeader},
                {true, true, iffNoImageHeader},
                {false, true, iffNoImageHeader},
                {false, false, iffOk}};
    for (const auto& row : rows) {
        Loading load(file);
        load.request.loadPixels = row.pixels;
        load.request.showAll = row.all;
        EXPECT_EQ(load.run(), row.code);
    }
}

TEST(TileGroups, WithoutPixelsNothingIsAllocated) {
    const ImageHeader head = test::header(8, 8, maskFlags | imageZ);
    Loading load(test::imageForm(head, sampleTiles(head, 8, 8, false, true)));
    load.request.loadPixels = false;
    load.request.showAll = true;
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_FALSE(load.frames.at(0).hasPicture());
    EXPECT_EQ(load.frames[0].header.width, 8u);
}

// --- chunks ---

TEST(ImageChunks, TheNameBelongsToTheFrame) {
    const ImageHeader head = test::header(1, 1, 0);
    const Bytes tile = test::tile("RGBA", {0, 0, 0, 0}, Bytes().u8(1));
    const auto nameOf = [&](const Bytes& text, int wanted = 0) {
        Loading load(test::imageForm(head, tile, Bytes().chunk("NAME", text)));
        load.request.wantedForm = wanted;
        EXPECT_EQ(load.run(), iffOk);
        return load.frames.at(0).imageName;
    };
    EXPECT_EQ(nameOf("first take"), "first take");
    EXPECT_EQ(nameOf(Bytes("cut").u8(0).add("off")), "cut");
    EXPECT_EQ(nameOf(Bytes().fill(255, 'n')), std::string(255, 'n'));
    EXPECT_EQ(nameOf(Bytes().fill(256, 'n')), "");
    EXPECT_EQ(nameOf("first take", 1), "");  // a re-read passes it over
}

TEST(ImageChunks, OfTilesBeforeAHeaderAreRefused) {
    for (const char* id : {"RGBA", "ZBUF"}) {
        Loading load(Bytes().group("FOR4", "CIMG",
                                   test::tileGroup(test::tile(id, {0, 0, 0, 0}, Bytes().fill(4)))));
        EXPECT_EQ(load.run(), iffNoImageHeader) << id;
        EXPECT_TRUE(load.frames.empty());
    }
}

TEST(ImageChunks, AHeaderOfOneFormDoesNotServeTheNext) {
    Loading load(Bytes()
                     .add(flatImage(1))
                     .group("FOR4", "CIMG",
                            test::tileGroup(test::tile("RGBA", {0, 0, 0, 0}, Bytes().fill(4)))));
    EXPECT_EQ(load.run(), iffNoImageHeader);
    EXPECT_EQ(load.frames.size(), 1u);
}

TEST(ImageChunks, ABadHeaderEndsTheLoad) {
    const ImageHeader head = test::header(0, 4, maskFlags);
    Loading load(test::imageForm(head, {}));
    EXPECT_EQ(load.run(), iffBadImageHeader);
    EXPECT_TRUE(load.frames.empty());
    Loading shorter(
        Bytes().group("FOR4", "CIMG", Bytes().chunk("TBHD", Bytes().u32(4).u32(4).u32(1))));
    EXPECT_EQ(shorter.run(), iffBlockTooShort);
}

TEST(ImageChunks, ALongerHeaderIsReadLikeA24ByteOne) {
    const ImageHeader head = test::header(2, 1, 0);
    Bytes body;
    body.chunk("TBHD", test::headerBody(head).u32(0xFFFFFFFF).u32(5));
    body.add(test::tileGroup(test::tile("RGBA", {0, 0, 1, 0}, Bytes().fill(2, 7))));
    Loading load(Bytes().group("FOR4", "CIMG", body));
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(load.frames.at(0).colour.row(0)[1], 0xFF070707u);
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

TEST(ImageChunks, ThatSayNothingAboutThePictureAreSkippedWhateverTheyHold) {
    const ImageHeader head = test::header(2, 1, 0);
    for (const char* id : {"ZPLC", "ICON", "USER", "COMM", "SSND", "RGB2", "ABUF", "NAME", "ABCD"})
        for (size_t size : {0, 1, 3, 8, 18, 23, 400}) {
            const Bytes further = Bytes().chunk(id, Bytes().fill(size, 0xFE));
            Loading load(test::imageForm(head, test::tile("RGBA", {0, 0, 1, 0}, Bytes().fill(2, 7)),
                                         further));
            ASSERT_EQ(load.run(), iffOk) << id << " " << size;
            EXPECT_EQ(load.frames.at(0).colour.row(0)[1], 0xFF070707u);
        }
}

TEST(ImageChunks, ASecondHeaderOfAnotherSizeStartsThePlanesAnew) {
    Bytes body;
    body.chunk("TBHD", test::headerBody(test::header(4, 4, 0)));
    body.add(test::tileGroup(test::tile("RGBA", {0, 0, 3, 3}, Bytes().fill(16, 7))));
    body.chunk("TBHD", test::headerBody(test::header(6, 2, 0)));
    body.add(test::tileGroup(test::tile("RGBA", {5, 1, 5, 1}, Bytes().fill(1, 8))));
    Loading load(Bytes().group("FOR4", "CIMG", body));
    ASSERT_EQ(load.run(), iffOk);
    const FrameStore& frame = load.frames.at(0);
    EXPECT_EQ(frame.width, 6);
    EXPECT_EQ(frame.colour.row(1)[5], 0xFF080808u);
    EXPECT_EQ(frame.colour.row(0)[0], 0u);
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

TEST(ImageForms, OpenInsideEachOtherAreReadToTheFourthLevel) {
    const ImageHeader head = test::header(1, 1, 0);
    Bytes nested;
    for (int level = 500; level > 0; --level) {
        Bytes body;
        body.chunk("TBHD", test::headerBody(head));
        body.add(test::tileGroup(
            test::tile("RGBA", {0, 0, 0, 0}, Bytes().u8(static_cast<unsigned>(level)))));
        nested = Bytes().group("FOR4", "CIMG", body.add(nested));
    }
    Loading load(nested);
    ASSERT_EQ(load.run(), iffOk);
    ASSERT_EQ(load.frames.size(), 4u);  // the innermost is complete first
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(load.frames[i].colour.row(0)[0] & 255, 4 - i);
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

TEST(ImageChunks, ASecondHeaderOfTheSameSizeStartsTilesAndPlanesAnew) {
    Bytes body;
    body.chunk("TBHD", test::headerBody(test::header(4, 4, 0)));
    body.add(test::tileGroup(test::tile("RGBA", {0, 0, 3, 3}, Bytes().fill(16, 7))));
    body.chunk("TBHD", test::headerBody(test::header(4, 4, 0)));
    body.add(test::tileGroup(test::tile("RGBA", {3, 3, 3, 3}, Bytes().fill(1, 8))));
    Loading load(Bytes().group("FOR4", "CIMG", body));
    ASSERT_EQ(load.run(), iffOk);
    std::vector<uint32_t> expected(16, 0);
    expected[15] = 0xFF080808u;
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), expected);
    EXPECT_EQ(load.frames[0].tiles.size(), 1u);
}

TEST(ImageLoading, StopsInsideALongBody) {
    const ImageHeader head = test::header(1, 1, 0);
    Loading load(test::imageForm(head, test::tile("RGBA", {0, 0, 0, 0}, Bytes().u8(1)),
                                 Bytes().streamedChunk("USER", Bytes().fill(5 << 20))));
    static int calls;
    calls = 0;
    load.request.keepGoing = [](void*) { return ++calls < 3; };
    EXPECT_EQ(load.run(), iffAborted);
    EXPECT_EQ(calls, 3);
}

TEST(ImageLoading, StopsWhenItIsToldTo) {
    const ImageHeader head = test::header(8, 8, maskFlags);
    Loading load(test::imageForm(head, sampleTiles(head, 4, 4)));
    static int calls;
    calls = 0;
    load.request.keepGoing = [](void*) { return ++calls < 3; };
    EXPECT_EQ(load.run(), iffAborted);
    EXPECT_EQ(calls, 3);
    ASSERT_EQ(load.frames.size(), 1u);
    EXPECT_EQ(load.errors[0], iffAborted);
    EXPECT_EQ(load.frames[0].colour.row(0)[0], test::planePixel(test::samplePixel(0, 0)));
}

TEST(ImageLoading, WaitsForTheBytesOfAWriter) {
    const Bytes file = flatImage(5);
    Loading load(file.cut(file.size() - 20));
    static Loading* waiting;
    static Bytes rest;
    static int calls;
    waiting = &load;
    calls = 0;
    rest = Bytes();
    rest.data.assign(file.data.end() - 20, file.data.end());
    load.request.waitForWriter = true;
    load.request.keepGoing = [](void*) {
        if (++calls == 5) waiting->file.append(rest);
        return calls < 5000;
    };
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_GE(calls, 5);
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), std::vector<uint32_t>(16, flatPixel(5)));
}

TEST(ImageLoading, WaitingCanBeAborted) {
    const Bytes file = flatImage(5);
    Loading load(file.cut(file.size() - 20));
    static int calls;
    calls = 0;
    load.request.waitForWriter = true;
    load.request.keepGoing = [](void*) { return ++calls < 10; };
    EXPECT_EQ(load.run(), iffAborted);
}

TEST(ImageLoading, AFileWithoutAGroupIsNotAFrameFile) {
    for (const Bytes& file : {Bytes("hello world, this is text"), Bytes().chunk("NAME", "abcd"),
                              Bytes().fill(100, 0xFF)}) {
        Loading load(file);
        EXPECT_EQ(load.run(), iffNotIff);
    }
}

}  // namespace
}  // namespace vistel
