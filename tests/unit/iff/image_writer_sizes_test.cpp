// Every size around the borders of tiles and of the tile size table, every kind of image, from the
// first row or from the last, to a file or to a pipe: what was written is read back equal, by the
// loader and by a plain reader that sees every bit.

#include <gtest/gtest.h>

#include <algorithm>

#include "iff/image_read_back.h"
#include "iff/image_writer.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Loading;
using test::TemporaryFile;

struct Case {
    uint32_t width, height, flags;
    uint32_t compression = compressRle;
    bool wide = false, pipe = false, fromLast = false;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
    return out << c.width << "x" << c.height << std::hex << " flags " << c.flags << std::dec
               << " compression " << c.compression << (c.wide ? " wide" : "")
               << (c.pipe ? " pipe" : "") << (c.fromLast ? " from last" : "");
}

// The low bytes of 16-bit channels and the second colour are other than the rest.
unsigned lowByte(uint32_t x, uint32_t y) { return (x * 3 + y) & 255; }
test::Pixel secondPixel(uint32_t x, uint32_t y) { return test::samplePixel(y + 7, x / 3); }

struct Rows {
    std::vector<uint32_t> colour, second;
    std::vector<uint16_t> wideColour, wideSecond;
    std::vector<float> z;
};

void addWide(std::vector<uint16_t>& words, const test::Pixel& p, unsigned low) {
    for (const unsigned value : {p.red, p.green, p.blue, p.mask})
        words.push_back(static_cast<uint16_t>(value << 8 | low));
}

Rows rowsOf(const Case& c, uint32_t y) {
    Rows rows;
    for (uint32_t x = 0; x < c.width; ++x) {
        rows.z.push_back(test::sampleDepth(x, y));
        if (c.wide) {
            addWide(rows.wideColour, test::samplePixel(x, y), lowByte(x, y));
            addWide(rows.wideSecond, secondPixel(x, y), lowByte(y, x));
        } else {
            rows.colour.push_back(test::planePixel(test::samplePixel(x, y)));
            rows.second.push_back(test::planePixel(secondPixel(x, y)));
        }
    }
    return rows;
}

int writeRow(ImageWriter& writer, const Case& c, uint32_t y) {
    const Rows rows = rowsOf(c, y);
    const bool colour = writer.header().bytesPerPixel() > 0;
    const bool second = colour && (c.flags & imageTwelveBit);
    const float* z = c.flags & imageZ ? rows.z.data() : nullptr;
    if (c.wide)
        return writer.writeWideScanline(colour ? rows.wideColour.data() : nullptr, z,
                                        second ? rows.wideSecond.data() : nullptr);
    return writer.writeScanline(colour ? rows.colour.data() : nullptr, z,
                                second ? rows.second.data() : nullptr);
}

Bytes written(const Case& c, bool twoThreads = false) {
    static const TemporaryFile file;
    ImageWriter writer;
    EXPECT_EQ(writer.openStream(platform::openFile(file.name(), "w"), c.pipe), iffOk);
    if (!c.pipe) {
        EXPECT_EQ(writer.setCompression(c.compression), iffOk);
    }
    EXPECT_EQ(writer.setWideChannels(c.wide), iffOk);
    EXPECT_EQ(writer.setRowsFromLast(c.fromLast), iffOk);
    writer.setTwoThreads(twoThreads);
    EXPECT_EQ(writer.writeHeader(c.width, c.height, c.flags), iffOk);
    EXPECT_EQ(writer.beginImageData(), iffOk);
    for (uint32_t i = 0; i < c.height; ++i)
        EXPECT_EQ(writeRow(writer, c, c.fromLast ? c.height - 1 - i : i), iffOk);
    EXPECT_EQ(writer.endImage(), iffOk);
    EXPECT_EQ(writer.close(), iffOk);
    return file.read();
}

// The corners of the tiles as the size table says, row of tiles by row of tiles.
std::vector<std::array<unsigned, 4>> expectedTiles(const Case& c) {
    unsigned tileWidth = 64, tileHeight = 64;
    if (c.height > 4096) tileWidth = 512, tileHeight = 128;
    if (c.width > 4096) tileWidth = 256, tileHeight = 64;
    if (c.width > 8192) tileWidth = 1024, tileHeight = 32;
    if (c.width > 16384) tileWidth = 2048, tileHeight = 16;
    std::vector<std::array<unsigned, 4>> tiles;
    for (unsigned y = 0; y < c.height; y += tileHeight)
        for (unsigned x = 0; x < c.width; x += tileWidth)
            tiles.push_back({x, y, std::min(x + tileWidth, c.width) - 1,
                             std::min(y + tileHeight, c.height) - 1});
    return tiles;
}

void expectTiles(const Case& c, const test::PlainPlane& plane, bool there) {
    std::vector<std::array<unsigned, 4>> got;
    for (const TileRect& r : plane.tiles) got.push_back({r.x1, r.y1, r.x2, r.y2});
    auto expected = expectedTiles(c);
    if (c.fromLast)  // the bands come in the other order
        for (auto* list : {&got, &expected}) std::sort(list->begin(), list->end());
    EXPECT_EQ(got, there ? expected : decltype(expected){});
    const auto oneEach = [&](int tiles) { return tiles == (there ? 1 : 0); };
    EXPECT_TRUE(std::all_of(plane.covered.begin(), plane.covered.end(), oneEach));
}

// How many values of a colour plane are not those of the picture.
int wrongValues(const Case& c, const test::PlainPlane& plane, int channels, bool second) {
    int wrong = 0;
    size_t at = 0;
    for (uint32_t y = 0; y < c.height; ++y)
        for (uint32_t x = 0; x < c.width; ++x) {
            const test::Pixel pixel = second ? secondPixel(x, y) : test::samplePixel(x, y);
            const unsigned low = second ? lowByte(y, x) : lowByte(x, y);
            const test::FileValues values(pixel, c.flags);
            if (values.size() != size_t(channels)) return -1;
            for (const unsigned value : values)
                wrong += plane.values[at++] != (c.wide ? value << 8 | low : value);
        }
    return wrong;
}

int wrongDepths(const Case& c, const test::PlainPlane& plane) {
    int wrong = 0;
    size_t at = 0;
    for (uint32_t y = 0; y < c.height; ++y)
        for (uint32_t x = 0; x < c.width; ++x, at += 2) {
            const uint32_t bits = uint32_t{plane.values[at]} << 16 | plane.values[at + 1];
            wrong += bits != std::bit_cast<uint32_t>(test::sampleDepth(x, y));
        }
    return wrong;
}

void expectReadBack(const Case& c) {
    SCOPED_TRACE(testing::PrintToString(c));
    const Bytes file = written(c);
    test::PlainReader plain;
    ASSERT_EQ(plain.read(file), "");
    EXPECT_EQ(plain.header.width, c.width);
    EXPECT_EQ(plain.header.height, c.height);
    EXPECT_EQ(plain.header.flags, c.flags);
    EXPECT_EQ(plain.header.compression, c.pipe ? uint32_t{compressRle} : c.compression);
    EXPECT_EQ(plain.header.wideChannels != 0, c.wide);
    EXPECT_EQ(plain.header.tiles, expectedTiles(c).size());
    const bool second = (c.flags & imageTwelveBit) != 0, z = (c.flags & imageZ) != 0;
    expectTiles(c, plain.colour, true);
    expectTiles(c, plain.second, second);
    expectTiles(c, plain.z, z);
    EXPECT_EQ(wrongValues(c, plain.colour, plain.channels, false), 0);
    if (second) {
        EXPECT_EQ(wrongValues(c, plain.second, plain.channels, true), 0);
    }
    if (z) {
        EXPECT_EQ(wrongDepths(c, plain.z), 0);
    }

    static Loading load{Bytes()};
    load.frames.clear();
    load.request.stream = nullptr;
    load.file.write(file);
    ASSERT_EQ(load.run(), iffOk);
    ASSERT_EQ(load.frames.size(), 1u);
    const FrameStore& frame = load.frames[0];
    const bool picture = !(c.flags & imageBlack) || (c.flags & imageMask) || !z;
    ASSERT_EQ(!frame.colour.empty(), picture);
    if (picture) {
        EXPECT_TRUE(test::pixelsOf(frame) == test::samplePicture(frame.header));
    }
    ASSERT_EQ(!frame.z.empty(), z);
}

constexpr uint32_t kinds[] = {0x0, 0x1, 0x2, 0x3, 0x4, 0x7, 0x10, 0x12, 0x14, 0x16, 0x2001, 0x2003};
constexpr uint32_t aroundTiles[] = {1, 2, 63, 64, 65, 127, 128, 129};

TEST(WrittenImages, OfEverySizeAroundTheTilesAreReadBackEqual) {
    // Every size with every kind; the compressions, widths of channels, destinations and directions
    // take turns, so that every kind meets them all.
    uint32_t turn = 0;
    for (const uint32_t width : aroundTiles)
        for (const uint32_t height : aroundTiles) {
            for (const uint32_t flags : kinds) {
                ++turn;
                expectReadBack(
                    {width, height, flags, turn % 3, turn % 4 == 1, turn % 5 == 0, turn % 7 < 3});
                if (HasFatalFailure()) return;
            }
            ++turn;
        }
}

TEST(WrittenImages, OfEveryKindAndCompressionAreReadBackEqual) {
    for (const uint32_t flags : kinds)
        for (const uint32_t compression : {compressNone, compressRle, compressQrl})
            for (const bool wide : {false, true})
                for (const bool fromLast : {false, true}) {
                    expectReadBack({70, 67, flags, compression, wide, false, fromLast});
                    expectReadBack({70, 67, flags, compressRle, wide, true, fromLast});
                    if (HasFatalFailure()) return;
                }
}

TEST(WrittenImages, AroundTheBordersOfTheTileSizeTableAreReadBackEqual) {
    const std::pair<uint32_t, uint32_t> sizes[] = {
        {4095, 1},  {4096, 2},   {4097, 65},  {8191, 3},  {8192, 65},  {8193, 33},
        {16383, 2}, {16384, 33}, {16385, 17}, {65535, 1}, {1, 4095},   {2, 4096},
        {3, 4097},  {65, 4096},  {65, 4097},  {1, 65535}, {4097, 129}, {513, 4097},
    };
    uint32_t turn = 0;
    for (const auto& [width, height] : sizes) {
        ++turn;
        expectReadBack({width, height, 0x0, turn % 3, false, false, turn % 2 == 0});
        if (size_t{width} * height > 300000) continue;
        expectReadBack({width, height, 0x7, (turn + 1) % 3, false, turn % 2 == 0, false});
        if (HasFatalFailure()) return;
    }
}

TEST(WrittenImages, AreTheSameByTwoThreads) {
    const auto undated = [](const Bytes& bytes) {
        std::string text(bytes.data.begin(), bytes.data.end());
        constexpr size_t date = 8 + 24;
        return text.erase(text.find("DATE"), date);
    };
    for (const uint32_t width : {960u, 1100u})  // 15 tiles in a row are too few for two
        for (const uint32_t flags : {0x3u, 0x7u})
            for (const bool fromLast : {false, true}) {
                const Case c{width, 130, flags, compressRle, false, false, fromLast};
                EXPECT_TRUE(undated(written(c)) == undated(written(c, true))) << width << flags;
            }
}

TEST(WrittenImages, WithRowsMissingKeepThoseThatWereGiven) {
    for (const bool fromLast : {false, true})
        for (const uint32_t given : {1u, 2u, 63u, 64u, 65u, 66u, 67u, 129u}) {
            SCOPED_TRACE(testing::Message() << given << " rows, from last " << fromLast);
            const Case c{70, 130, 0x7, compressRle, false, false, fromLast};
            TemporaryFile file;
            ImageWriter writer;
            ASSERT_EQ(writer.open(file.name()), iffOk);
            ASSERT_EQ(writer.setRowsFromLast(fromLast), iffOk);
            ASSERT_EQ(writer.writeHeader(c.width, c.height, c.flags), iffOk);
            ASSERT_EQ(writer.beginImageData(), iffOk);
            EXPECT_EQ(writer.setRowsFromLast(!fromLast), iffClientError);  // too late
            for (uint32_t i = 0; i < given; ++i)
                ASSERT_EQ(writeRow(writer, c, fromLast ? c.height - 1 - i : i), iffOk);
            EXPECT_EQ(writer.close(), iffPartialImageIo);
            Loading load(file.read());
            ASSERT_EQ(load.run(), iffOk);
            const FrameStore& frame = load.frames.at(0);
            for (uint32_t y = 0; y < c.height; ++y) {
                const bool there = fromLast ? y >= c.height - given : y < given;
                const test::Pixel pixel = there ? test::samplePixel(69, y) : test::Pixel{};
                ASSERT_EQ(frame.colour.row(y)[69], test::planePixel(pixel)) << y;
                ASSERT_EQ(frame.z.row(y)[69], there ? test::sampleDepth(69, y) : 0) << y;
            }
        }
}

TEST(WrittenImages, OfTilesInAnyOrderHoldEveryPlane) {
    const ImageHeader head = test::header(70, 3, imageColour | imageMask | imageZ | imageTwelveBit);
    for (const uint32_t compression : {compressNone, compressRle, compressQrl})
        for (const bool wide : {false, true}) {
            TemporaryFile file;
            ImageWriter writer;
            ASSERT_EQ(writer.open(file.name()), iffOk);
            ASSERT_EQ(writer.setCompression(compression), iffOk);
            ASSERT_EQ(writer.setWideChannels(wide), iffOk);
            ASSERT_EQ(writer.writeHeader(head.width, head.height, head.flags, 3), iffOk);
            ASSERT_EQ(writer.beginImageData(), iffOk);
            for (const TileRect& rect :
                 {TileRect{40, 0, 69, 2}, TileRect{0, 1, 39, 2}, TileRect{0, 0, 39, 0}}) {
                const Bytes raw = test::wholeTileData(writer.header(), rect);
                ASSERT_EQ(writer.writeTile("RGB2", rect, raw.data.data()), iffOk);
                ASSERT_EQ(writer.writeTile("ZBUF", rect, test::wholeDepthData(rect).data.data()),
                          iffOk);
                ASSERT_EQ(writer.writeTile("RGBA", rect, raw.data.data()), iffOk);
            }
            EXPECT_EQ(writer.writeScanline(nullptr), iffLineIoInPageMode);
            ASSERT_EQ(writer.close(), iffOk);
            test::PlainReader plain;
            ASSERT_EQ(plain.read(file.read()), "");
            EXPECT_EQ(plain.header.tiles, 3);
            for (const test::PlainPlane* plane : {&plain.colour, &plain.second, &plain.z}) {
                EXPECT_EQ(plane->tiles.size(), 3u);
                EXPECT_EQ(plane->covered, std::vector<int>(70 * 3, 1));
            }
            EXPECT_EQ(plain.colour.values, plain.second.values);
            EXPECT_EQ(wrongDepths({70, 3, 0}, plain.z), 0);
            EXPECT_EQ(plain.colour.values.at(4), wide ? 0x005Au : 0u);  // mask of pixel 1
        }
}

TEST(WrittenImages, WithNothingButTheirHeaderHaveNoPicture) {
    TemporaryFile file;
    ImageWriter writer;
    ASSERT_EQ(writer.open(file.name()), iffOk);
    ASSERT_EQ(writer.writeHeader(5, 5, imageColour), iffOk);
    ASSERT_EQ(writer.close(), iffOk);
    Loading load(file.read());
    ASSERT_EQ(load.run(), iffOk);
    EXPECT_FALSE(load.frames.at(0).hasPicture());
}

}  // namespace
}  // namespace vistel
