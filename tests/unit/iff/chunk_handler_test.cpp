// What becomes of each chunk of an image.

#include <gtest/gtest.h>

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
using test::maskFlags;
using test::sampleTiles;


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

}  // namespace
}  // namespace vistel
