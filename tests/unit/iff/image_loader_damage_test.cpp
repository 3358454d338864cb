// Files that are cut or bent anywhere: every load ends in a listed code, nothing crashes or hangs.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "iff/image_sample.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Loading;

bool listed(int code) {
    const auto texts = resultTexts();
    return std::any_of(texts.begin(), texts.end(),
                       [=](const ResultText& t) { return t.code == code; });
}

// Loads from one file that is written anew each time; creating files is what takes the time.
int loadBytes(Loading& load, const Bytes& bytes) {
    load.frames.clear();
    load.errors.clear();
    load.working.clear();
    load.request.stream = nullptr;
    load.file.write(bytes);
    const int code = load.run();
    for (const FrameStore& frame : load.frames) {
        // What is handed over can be read: in every row, and to the last pixel.
        volatile uint32_t sum = 0;
        const auto read = [&](size_t x, size_t y) {
            if (!frame.colour.empty()) sum = sum + frame.colour.row(y)[x];
            if (!frame.z.empty()) sum = sum + static_cast<uint32_t>(frame.z.row(y)[x] != 0);
        };
        const size_t width = static_cast<size_t>(frame.width);
        const size_t height = static_cast<size_t>(frame.height);
        if (!frame.hasPicture()) continue;
        for (size_t y = 0; y < height; ++y) read(y % width, y);
        read(width - 1, height - 1);
    }
    return code;
}

TEST(BrokenFiles, CutAtEveryByteEndInAListedCode) {
    const Bytes whole = test::everyChunk();
    Loading load(whole);
    ASSERT_EQ(loadBytes(load, whole), iffOk);
    for (size_t length = 0; length < whole.size(); ++length) {
        const int code = loadBytes(load, whole.cut(length));
        ASSERT_TRUE(listed(code)) << code << " cut at " << length;
        ASSERT_NE(code, iffOk) << "cut at " << length;
    }
}

TEST(BrokenFiles, CutInTheTilesStillGiveTheTilesBeforeTheCut) {
    const Bytes whole = test::everyChunk();
    Loading load(whole);
    ASSERT_NE(loadBytes(load, whole.cut(whole.size() - 4)), iffOk);
    ASSERT_EQ(load.frames.size(), 1u);
    EXPECT_EQ(load.frames[0].colour.row(0)[5], test::planePixel({1, 2, 3, 9}));
    EXPECT_NE(load.errors[0], iffOk);
}

TEST(BrokenFiles, BentAtEveryByteEndInAListedCode) {
    const Bytes whole = test::everyChunk();
    Loading load(whole);
    for (size_t at = 0; at < whole.size(); ++at)
        for (uint8_t flip : {0x01, 0x80, 0xFF}) {
            Bytes bent = whole;
            bent.data[at] ^= flip;
            const int code = loadBytes(load, bent);
            ASSERT_TRUE(listed(code)) << code << " byte " << at << " flip " << int{flip};
        }
}

TEST(BrokenFiles, OfNoiseInsideTheTilesEndInAListedCode) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    Loading load(Bytes{});
    for (int round = 0; round < 1500; ++round) {
        const uint32_t flags = random() & 0x17;
        const ImageHeader head =
            test::header(random() % 60 + 1, random() % 60 + 1, flags, random() % 5, random() & 1);
        Bytes tiles;
        for (int i = 0; i < 3; ++i) {
            TileRect rect;
            rect.x1 = static_cast<uint16_t>(random() % head.width);
            rect.y1 = static_cast<uint16_t>(random() % head.height);
            rect.x2 = static_cast<uint16_t>(rect.x1 + random() % (head.width - rect.x1));
            rect.y2 = static_cast<uint16_t>(rect.y1 + random() % (head.height - rect.y1));
            Bytes data;
            const size_t room = size_t{rect.width()} * rect.height() * 4 + 1;
            for (size_t n = random() % room; n > 0; --n) data.u8(random() & 255);
            tiles.add(test::tile(random() % 3 ? "RGBA" : "ZBUF", rect, data));
        }
        load.request.fit.shrink = static_cast<uint32_t>(random() % 4);
        const int code = loadBytes(load, test::imageForm(head, tiles));
        ASSERT_TRUE(code == iffOk || code == iffCompression) << code << " seed " << seed;
    }
}

TEST(BrokenFiles, ThatPromiseMoreThanTheyHoldTakeNoMemoryForIt) {
    // 60000 x 60000 pixels of which two bytes of a tile are there.
    const ImageHeader head = test::header(60000, 60000, imageColour | imageMask | imageZ);
    const Bytes tiles = test::tile("RGBA", {0, 0, 59999, 59999}, Bytes().u8(0xFF).u8(1));
    Loading tile(test::imageForm(head, tiles));
    EXPECT_EQ(tile.run(), iffCompression);
    // A chunk that says it has 2 GB and ends at once.
    Bytes body;
    body.chunk("TBHD", test::headerBody(head));
    body.header("FOR4", 0x7FFF0000).add("TBMP");
    body.header("RGBA", 0x7FFE0000).u16(0).u16(0).u16(59999).u16(59999).u32(0);
    Loading chunk(Bytes().header("FOR4", 0x7FFFF000).add("CIMG").add(body));
    const int code = chunk.run();
    EXPECT_TRUE(code == iffPartialIo || code == iffIncomplete) << code;
}

TEST(BrokenFiles, MayNotSpreadAFewBytesOverAHugePlane) {
    // Rows of 4 MB, a pixel of two bytes in each; the load ends before it meets the bad rectangle.
    const ImageHeader head = test::header(1 << 20, 65535, imageColour | imageMask);
    Bytes tiles;
    for (uint16_t y = 0; y < 200; ++y)
        tiles.add(test::tile("RGBA", {0, y, 0, y}, Bytes().u8(0x80).u8(1)));
    tiles.add(test::tile("RGBA", {1, 0, 0, 0}, Bytes().u8(0x80).u8(1)));
    Loading load(test::imageForm(head, tiles));
    EXPECT_EQ(load.run(), iffNoMemory);
}

TEST(BrokenFiles, NestedDeeplyEndInAListedCode) {
    for (const char* type : {"CIMG", "XYZW"}) {
        Bytes deep;
        for (int i = 0; i < 2000; ++i)
            deep.header("FOR4", static_cast<uint32_t>((2000 - i) * 12 - 8)).add(type);
        Loading load(deep);
        EXPECT_TRUE(listed(load.run()));
    }
}

}  // namespace
}  // namespace vistel
