// The walk over frame files: which forms are read, and when it stops.

#include <gtest/gtest.h>

#include "iff/iff_reader.h"
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

TEST(ImageLoading, StopsInsideALongBody) {
    const ImageHeader head = test::header(1, 1, 0);
    Loading load(test::imageForm(head, test::tile("RGBA", {0, 0, 0, 0}, Bytes().u8(1)),
                                 Bytes().streamedChunk("USER", Bytes().fill(5 << 20))));
    int calls = 0;
    load.request.goOn = [&] { return ++calls < 3; };
    EXPECT_EQ(load.run(), iffAborted);
    EXPECT_EQ(calls, 3);
}

TEST(ImageLoading, StopsWhenItIsToldTo) {
    const ImageHeader head = test::header(8, 8, maskFlags);
    Loading load(test::imageForm(head, sampleTiles(head, 4, 4)));
    int calls = 0;
    load.request.goOn = [&] { return ++calls < 3; };
    EXPECT_EQ(load.run(), iffAborted);
    EXPECT_EQ(calls, 3);
    ASSERT_EQ(load.frames.size(), 1u);
    EXPECT_EQ(load.errors[0], iffAborted);
    EXPECT_EQ(load.frames[0].colour.row(0)[0], test::planePixel(test::samplePixel(0, 0)));
}

TEST(ImageLoading, WaitsForTheBytesOfAWriter) {
    const Bytes file = flatImage(5);
    Loading load(file.cut(file.size() - 20));
    int calls = 0;
    Bytes rest;
    rest.data.assign(file.data.end() - 20, file.data.end());
    load.request.waitForWriter = true;
    load.request.goOn = [&] {
        if (++calls == 5) load.file.append(rest);
        return calls < 5000;
    };
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_GE(calls, 5);
    EXPECT_EQ(test::pixelsOf(load.frames.at(0)), std::vector<uint32_t>(16, flatPixel(5)));
}

TEST(ImageLoading, WaitingCanBeAborted) {
    const Bytes file = flatImage(5);
    Loading load(file.cut(file.size() - 20));
    int calls = 0;
    load.request.waitForWriter = true;
    load.request.goOn = [&] { return ++calls < 10; };
    EXPECT_EQ(load.run(), iffAborted);
}

TEST(ImageLoading, AFileWithoutAGroupIsNotAFrameFile) {
    for (const Bytes& file : {Bytes("hello world, this is text"), Bytes().chunk("NAME", "abcd"),
                              Bytes().fill(100, 0xFF)}) {
        Loading load(file);
        EXPECT_EQ(load.run(), iffNotIff);
    }
}

// --- tiles that are not decoded --------------------------------------------------------------------

TEST(TilesNotDecoded, AreHandedOverInsteadWhileDepthIsRead) {
    const ImageHeader head = test::header(8, 8, imageColour | imageMask | imageZ);
    const Bytes name = Bytes().chunk("NAME", "a name");
    Loading load(test::imageForm(head, sampleTiles(head, 4, 8, false, true), name));
    load.request.decodeColour = false;
    std::vector<std::string> names;
    load.request.countTile = [&](IffReader& chunk, const FrameStore& frame) {
        EXPECT_EQ(chunk.chunkId(), iffId("RGBA"));
        EXPECT_EQ(chunk.consumed(), 0u);
        names.push_back(frame.imageName);
        return int{iffOk};
    };
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(names, std::vector<std::string>(2, "a name"));
    EXPECT_TRUE(load.frames.at(0).colour.empty());
    EXPECT_FALSE(load.frames.at(0).z.empty());
}

TEST(TilesNotDecoded, ArePassedOverWhereNobodyTakesThem) {
    Loading load(flatImage(1));
    load.request.decodeColour = false;
    EXPECT_EQ(load.run(), iffOk);
    EXPECT_FALSE(load.frames.at(0).hasPicture());
}

TEST(TilesNotDecoded, AreThoseOfTheWantedForm) {
    Loading load(Bytes().add(flatImage(1)).add(flatImage(2)).add(flatImage(3)));
    load.request.decodeColour = false;
    load.request.wantedForm = 2;
    std::vector<uint8_t> last;
    load.request.countTile = [&](IffReader& chunk, const FrameStore&) {
        std::vector<uint8_t> body(chunk.chunkSize());
        const int code = chunk.readBytes(body.data(), body.size());
        last.push_back(body.back());
        return code;
    };
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_EQ(last, std::vector<uint8_t>{2});
}

TEST(TilesNotDecoded, NeedAHeaderAndEndTheLoadWithTheirError) {
    Loading load(Bytes().group("FOR4", "CIMG", test::tileGroup(test::tile("RGBA", {}, {}))));
    load.request.decodeColour = false;
    EXPECT_EQ(load.run(), iffNoImageHeader);
    Loading failing(flatImage(1));
    failing.request.decodeColour = false;
    failing.request.countTile = [](IffReader&, const FrameStore&) { return int{iffIoError}; };
    EXPECT_EQ(failing.run(), iffIoError);
}

}  // namespace
}  // namespace vistel
