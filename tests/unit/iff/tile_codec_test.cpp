// From a tile's data to the pixels of a plane.

#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "iff/image_bytes.h"
#include "iff/result_codes.h"
#include "iff/tile_codec.h"

namespace vistel {
namespace {

using test::Bytes;
using test::Pixel;

constexpr uint32_t untouched = 0xDEADBEEF;

// A plane of plain memory to decode into.
struct Canvas {
    Canvas(uint32_t width, uint32_t height, uint32_t shrink = 1)
        : width(width), shrink(shrink), pixels(size_t{width} * height, untouched) {}
    TileTarget target() { return {pixels.data(), width, shrink}; }
    uint32_t at(uint32_t x, uint32_t y) const { return pixels[y * width + x]; }
    uint32_t width, shrink;
    std::vector<uint32_t> pixels;
};

int decodeColour(const ImageHeader& header, const TileRect& rect, const Bytes& data,
                 Canvas& canvas) {
    TileDecoder decoder;
    const TileFormat format = colourTileFormat(header);
    if (int code = checkTileDataSize(format, rect, data.size()); code != iffOk) return code;
    // An own block of the exact size: a read behind it is seen by the sanitizers.
    const std::vector<uint8_t> block(data.data);
    return decoder.decodeColour(format, rect, block.data(), block.size(), canvas.target());
}

// A one-row tile of `width` pixels, decoded.
std::vector<uint32_t> decodeRow(const ImageHeader& header, uint16_t width, const Bytes& data) {
    Canvas canvas(width, 1);
    const TileRect rect{0, 0, static_cast<uint16_t>(width - 1), 0};
    EXPECT_EQ(decodeColour(header, rect, data, canvas), iffOk);
    return canvas.pixels;
}

using test::colourFlags;
using test::maskFlags;

TEST(TileCodec, DataOfTheRawSizeIsStoredWhole) {
    // 0x80-looking bytes are values here, not packets.
    const Bytes data = Bytes().u8(4).u8(3).u8(2).u8(1).u8(0x80).u8(0x81).u8(0x82).u8(0x83);
    EXPECT_EQ(decodeRow(test::header(2, 1, maskFlags), 2, data),
              (std::vector<uint32_t>{0x04030201, 0x80818283}));
}

TEST(TileCodec, ARunPacketRepeatsItsByte) {
    const Bytes data = Bytes().u8(0x87).u8(30).u8(0x87).u8(20).u8(0x87).u8(10);
    const std::vector<uint32_t> expected(8, test::planePixel({10, 20, 30, 255}));
    EXPECT_EQ(decodeRow(test::header(8, 1, colourFlags), 8, data), expected);
}

TEST(TileCodec, ALiteralPacketCopiesItsBytes) {
    const Bytes data = Bytes().u8(0x00).u8(7).u8(0x86).u8(8);
    const auto pixels = decodeRow(test::header(8, 1, 0), 8, data);
    EXPECT_EQ(pixels[0], test::planePixel({7, 7, 7, 255}));
    EXPECT_EQ(pixels[1], test::planePixel({8, 8, 8, 255}));
    EXPECT_EQ(pixels[7], test::planePixel({8, 8, 8, 255}));
}

TEST(TileCodec, PacketsCrossTheRowsOfATileButNotItsChannels) {
    Canvas canvas(4, 4);
    const TileRect rect{1, 1, 2, 3};  // 2 x 3
    const Bytes data = Bytes().u8(0x85).u8(5).u8(0x83).u8(6).u8(0x81).u8(7);
    ASSERT_EQ(decodeColour(test::header(4, 4, imageMask), rect, data, canvas), iffOk);
    EXPECT_EQ(canvas.at(1, 1), test::planePixel({6, 6, 6, 5}));
    EXPECT_EQ(canvas.at(2, 2), test::planePixel({6, 6, 6, 5}));
    EXPECT_EQ(canvas.at(1, 3), test::planePixel({7, 7, 7, 5}));
    EXPECT_EQ(canvas.at(0, 0), untouched);
    EXPECT_EQ(canvas.at(3, 3), untouched);
}

TEST(TileCodec, APacketThatRunsPastItsChannelEndsDecodingSilently) {
    // The mask's run is one too long: mask and grey stay zero, nothing is reported.
    const Bytes data = Bytes().u8(0x88).u8(5).u8(0x87).u8(9);
    EXPECT_EQ(decodeRow(test::header(8, 1, imageMask), 8, data), std::vector<uint32_t>(8, 0));
    // An overrun in the second channel keeps the first.
    const Bytes second = Bytes().u8(0x87).u8(5).u8(0x88).u8(9);
    EXPECT_EQ(decodeRow(test::header(8, 1, imageMask), 8, second),
              std::vector<uint32_t>(8, test::planePixel({0, 0, 0, 5})));
}

TEST(TileCodec, MissingValuesAreZeroAndStillOpaqueWithoutMask) {
    const Bytes data = Bytes().u8(0x83).u8(9);  // 4 of 8 blue values
    const auto pixels = decodeRow(test::header(8, 1, colourFlags), 8, data);
    EXPECT_EQ(pixels[3], test::planePixel({0, 0, 9, 255}));
    EXPECT_EQ(pixels[4], test::planePixel({0, 0, 0, 255}));
}

TEST(TileCodec, AnEmptyTileIsZero) {
    EXPECT_EQ(decodeRow(test::header(4, 1, maskFlags), 4, {}), std::vector<uint32_t>(4, 0));
}

TEST(TileCodec, WideChannelsGiveTheirHighBytes) {
    const ImageHeader header = test::header(4, 1, maskFlags, compressRle, 1);
    Bytes packed;
    for (unsigned value : {4u, 99u, 3u, 99u, 2u, 99u, 1u, 99u}) packed.u8(0x83).u8(value);
    EXPECT_EQ(decodeRow(header, 4, packed), std::vector<uint32_t>(4, 0x04030201));
    Bytes whole;
    for (int i = 0; i < 4; ++i) whole.u16(0x0463).u16(0x0363).u16(0x0263).u16(0x0163);
    EXPECT_EQ(decodeRow(header, 4, whole), std::vector<uint32_t>(4, 0x04030201));
    // A low byte plane that overruns ends decoding like any other.
    const Bytes broken = Bytes().u8(0x83).u8(4).u8(0x84).u8(99).u8(0x83).u8(3);
    EXPECT_EQ(decodeRow(header, 4, broken), std::vector<uint32_t>(4, 0x04000000));
}

TEST(TileCodec, OtherCompressionsAreTakenAsTheyStand) {
    for (uint32_t compression : {0u, 3u, 7u}) {
        const ImageHeader header = test::header(3, 1, maskFlags, compression);
        // A pixel and a half: mask, blue, green, red, mask, blue.
        const Bytes data = Bytes().u8(0x84).u8(3).u8(2).u8(1).u8(8).u8(7);
        EXPECT_EQ(decodeRow(header, 3, data), (std::vector<uint32_t>{0x84030201, 0x08070000, 0}));
    }
}

TEST(TileCodec, WholePixelPacketsHoldRedGreenBlue) {
    const ImageHeader header = test::header(3, 1, colourFlags, compressQrl);
    const Bytes data = Bytes().u8(0x82).u8(1).u8(2).u8(3);
    EXPECT_EQ(decodeRow(header, 3, data),
              std::vector<uint32_t>(3, test::planePixel({1, 2, 3, 255})));
    const Bytes literal = Bytes().u8(0x00).u8(1).u8(2).u8(3).u8(0x81).u8(4).u8(5).u8(6);
    EXPECT_EQ(decodeRow(header, 3, literal)[0], test::planePixel({1, 2, 3, 255}));
    EXPECT_EQ(decodeRow(header, 3, literal)[2], test::planePixel({4, 5, 6, 255}));
}

TEST(TileCodec, WholePixelPacketsNeverCrossARow) {
    const ImageHeader header = test::header(4, 2, colourFlags, compressQrl);
    const TileRect rect{0, 0, 3, 1};
    Canvas canvas(4, 2);
    // The first packet is two pixels too long for its row: the tile ends there.
    const Bytes overrun = Bytes().u8(0x85).u8(1).u8(2).u8(3).u8(0x83).u8(4).u8(5).u8(6);
    ASSERT_EQ(decodeColour(header, rect, overrun, canvas), iffOk);
    EXPECT_EQ(canvas.pixels, std::vector<uint32_t>(8, test::planePixel({0, 0, 0, 255})));
    const Bytes rows = Bytes().u8(0x83).u8(1).u8(2).u8(3).u8(0x83).u8(4).u8(5).u8(6);
    ASSERT_EQ(decodeColour(header, rect, rows, canvas), iffOk);
    EXPECT_EQ(canvas.at(3, 0), test::planePixel({1, 2, 3, 255}));
    EXPECT_EQ(canvas.at(0, 1), test::planePixel({4, 5, 6, 255}));
}

TEST(TileCodec, TheMaskOfAWholePixelTileComesFirstAsRunLengthPackets) {
    const ImageHeader header = test::header(4, 1, maskFlags, compressQrl);
    const Bytes data = Bytes().u8(0x83).u8(9).u8(0x83).u8(1).u8(2).u8(3);
    EXPECT_EQ(decodeRow(header, 4, data), std::vector<uint32_t>(4, test::planePixel({1, 2, 3, 9})));
}

TEST(TileCodec, WholePixelCompressionOfOtherTilesIsRunLength) {
    const Bytes data = Bytes().u8(0x83).u8(9);
    EXPECT_EQ(decodeRow(test::header(4, 1, 0, compressQrl), 4, data),
              std::vector<uint32_t>(4, test::planePixel({9, 9, 9, 255})));
    const ImageHeader wide = test::header(4, 1, colourFlags, compressQrl, 1);
    Bytes planes;
    for (unsigned value : {3u, 0u, 2u, 0u, 1u, 0u}) planes.u8(0x83).u8(value);
    EXPECT_EQ(decodeRow(wide, 4, planes),
              std::vector<uint32_t>(4, test::planePixel({1, 2, 3, 255})));
}

TEST(TileCodec, ValuesAreLookedUpInAChannelsTable) {
    uint8_t negative[256];
    for (int i = 0; i < 256; ++i) negative[i] = static_cast<uint8_t>(255 - i);
    TileDecoder decoder;
    decoder.setValueTable(channelGreen, negative);
    const TileFormat format = colourTileFormat(test::header(4, 1, colourFlags));
    const TileRect rect{0, 0, 3, 0};
    const Bytes packed = Bytes().u8(0x83).u8(3).u8(0x83).u8(2).u8(0x83).u8(1);
    Canvas canvas(4, 1);
    ASSERT_EQ(
        decoder.decodeColour(format, rect, packed.data.data(), packed.size(), canvas.target()),
        iffOk);
    EXPECT_EQ(canvas.pixels, std::vector<uint32_t>(4, test::planePixel({1, 253, 3, 255})));
    decoder.setValueTable(channelGreen, nullptr);
    ASSERT_EQ(
        decoder.decodeColour(format, rect, packed.data.data(), packed.size(), canvas.target()),
        iffOk);
    EXPECT_EQ(canvas.at(0, 0), test::planePixel({1, 2, 3, 255}));
}

TEST(TileCodec, DepthIsBigEndianFloatsWholeOrInFourPlanes) {
    const TileRect rect{0, 0, 3, 0};
    const uint32_t bits = std::bit_cast<uint32_t>(-123.456f);
    Bytes whole, packed;
    for (int i = 0; i < 4; ++i) whole.u32(bits);
    for (int shift = 24; shift >= 0; shift -= 8) packed.u8(0x83).u8(bits >> shift & 255);
    for (const Bytes& data : {whole, packed}) {
        Canvas canvas(4, 1);
        TileDecoder decoder;
        ASSERT_EQ(decoder.decodeDepth(rect, data.data.data(), data.size(), canvas.target()), iffOk);
        EXPECT_EQ(canvas.pixels, std::vector<uint32_t>(4, bits));
    }
}

// --- every kind of image, every way of storing it, against the sample picture ---

struct Kind {
    const char* name;
    uint32_t flags;
};
constexpr Kind imageKinds[] = {
    {"colour", imageColour},
    {"colour with mask", imageColour | imageMask},
    {"grey", 0},
    {"grey with mask", imageMask},
    {"mask only", imageBlack | imageMask},
    {"mask only, marked colour", imageBlack | imageColour | imageMask},
};

TEST(TileCodec, EveryKindOfImageGivesTheSamplePicture) {
    const TileRect rect{0, 0, 76, 20};
    for (const Kind& kind : imageKinds)
        for (uint16_t wide : {0, 1})
            for (uint32_t compression : {compressNone, compressRle}) {
                const ImageHeader header = test::header(77, 21, kind.flags, compression, wide);
                SCOPED_TRACE(testing::Message() << kind.name << " wide " << wide);
                const Bytes whole = test::wholeTileData(header, rect);
                const Bytes data = compression == compressNone
                                       ? whole
                                       : test::packedPlanes(whole, size_t(header.bytesPerPixel()));
                Canvas canvas(77, 21);
                ASSERT_EQ(decodeColour(header, rect, data, canvas), iffOk);
                EXPECT_EQ(canvas.pixels, test::samplePicture(header));
            }
}

TEST(TileCodec, ShrinkingTakesEverySthPixelOfEverySthRow) {
    const TileRect rect{5, 7, 60, 44};
    for (const Kind& kind : imageKinds)
        for (uint16_t wide : {0, 1})
            for (uint32_t compression : {compressNone, compressRle})
                for (uint32_t s : {2u, 3u, 7u, 50u}) {
                    const ImageHeader header = test::header(70, 50, kind.flags, compression, wide);
                    SCOPED_TRACE(testing::Message() << kind.name << " wide " << wide << " s " << s);
                    const Bytes whole = test::wholeTileData(header, rect);
                    const Bytes data =
                        compression == compressNone
                            ? whole
                            : test::packedPlanes(whole, size_t(header.bytesPerPixel()));
                    Canvas canvas(70 / s, 50 / s, s);
                    ASSERT_EQ(decodeColour(header, rect, data, canvas), iffOk);
                    Canvas expected(70 / s, 50 / s, s);
                    for (uint32_t row = 7 / s, m = 0; row < 45 / s; ++row, ++m)
                        for (uint32_t n = 0; n < 61 / s - 5 / s; ++n)
                            expected.pixels[row * expected.width + 5 / s + n] = test::storedPixel(
                                test::samplePixel(5 + n * s, 7 + m * s), kind.flags);
                    EXPECT_EQ(canvas.pixels, expected.pixels);
                }
}

// --- channels of one value, and tiles that end early ---

// The packets of `count` equal values, as long as packets can be.
void appendConstant(Bytes& data, unsigned value, size_t count) {
    for (; count > 128; count -= 128) data.u8(0xFF).u8(value);
    data.u8(static_cast<unsigned>(127 + count)).u8(value);
}

TEST(TileCodec, ChannelsOfOneValueFillTheirTile) {
    for (uint16_t height : {1, 2, 7, 20}) {
        constexpr uint16_t width = 37;
        const size_t pixels = size_t{width} * height;
        const TileRect rect{0, 0, width - 1, static_cast<uint16_t>(height - 1)};
        Bytes data;
        for (unsigned value : {4u, 3u, 2u, 1u}) appendConstant(data, value, pixels);
        for (uint32_t shrink : {1u, 3u}) {
            Canvas canvas(width / shrink, std::max(1u, height / shrink), shrink);
            ASSERT_EQ(decodeColour(test::header(width, height, maskFlags), rect, data, canvas),
                      iffOk);
            const TilePlacement place = placeTile(rect, shrink);
            for (uint32_t y = 0; y < place.rows; ++y)
                for (uint32_t x = 0; x < place.columns; ++x)
                    ASSERT_EQ(canvas.at(x, y), 0x04030201u) << x << " " << y;
        }
    }
}

TEST(TileCodec, ARunOfAnotherValueIsNotTakenForAChannelOfOneValue) {
    constexpr size_t pixels = 640;
    const TileRect rect{0, 0, 63, 9};
    for (size_t other = 0; other < 5; ++other) {
        Bytes data;
        for (size_t i = 0; i < 5; ++i) data.u8(0xFF).u8(i == other ? 99 : 7);
        appendConstant(data, 50, pixels);
        Canvas canvas(64, 10);
        ASSERT_EQ(decodeColour(test::header(64, 10, imageMask), rect, data, canvas), iffOk);
        for (uint32_t i = 0; i < pixels; ++i)
            ASSERT_EQ(canvas.pixels[i] >> 24, i / 128 == other ? 99u : 7u) << i;
    }
}

TEST(TileCodec, AChannelOfOneValueIsLookedUpInItsTable) {
    uint8_t negative[256];
    for (int i = 0; i < 256; ++i) negative[i] = static_cast<uint8_t>(255 - i);
    const TileRect rect{0, 0, 63, 9};
    Bytes data;
    for (unsigned value : {4u, 3u}) appendConstant(data, value, 640);
    for (FileChannel channel : {channelMask, channelGreen}) {
        TileDecoder decoder;
        decoder.setValueTable(channel, negative);
        Canvas canvas(64, 10);
        const TileFormat format = colourTileFormat(test::header(64, 10, imageMask));
        ASSERT_EQ(
            decoder.decodeColour(format, rect, data.data.data(), data.size(), canvas.target()),
            iffOk);
        EXPECT_EQ(canvas.pixels,
                  std::vector<uint32_t>(640, channel == channelMask ? 0xFB030303u : 0x04FCFCFCu));
    }
}

TEST(TileCodec, ATileThatEndsAnywhereIsZeroFromThereOn) {
    // 100 x 40 pixels in packets of 50 values, so that the last channel is stored in several steps.
    const TileRect rect{0, 0, 99, 39};
    const ImageHeader header = test::header(100, 40, imageMask);
    Bytes whole;
    for (unsigned packet = 0; packet < 160; ++packet) whole.u8(0x80 + 49).u8(1 + packet);
    for (size_t size = 0; size <= whole.size(); ++size) {
        Bytes data;
        data.data.assign(whole.data.begin(),
                         whole.data.begin() + static_cast<std::ptrdiff_t>(size));
        Canvas canvas(100, 40);
        ASSERT_EQ(decodeColour(header, rect, data, canvas), iffOk);
        for (uint32_t i = 0; i < 4000; ++i) {
            const uint32_t packet = i / 50;
            const uint32_t mask = packet < size / 2 ? 1 + packet : 0;
            const uint32_t grey = 80 + packet < size / 2 ? (81 + packet) & 255 : 0;
            ASSERT_EQ(canvas.pixels[i], mask << 24 | grey * 0x010101u) << size << " " << i;
        }
    }
}

// --- every set of kernels, into memory of both kinds ---

std::vector<const TileKernels*> kernelSets() {
    std::vector<const TileKernels*> sets = {&scalarTileKernels()};
    for (const TileKernels* fast : {sse2TileKernels(), avx2TileKernels()})
        if (fast) sets.push_back(fast);
    return sets;
}

TEST(TileCodec, EveryKernelSetGivesTheSamePixelsAndLeavesThoseAroundTheTile) {
    // Rows that start at odd places of a cache line, and a tile narrower than any block.
    const TileRect rects[] = {{0, 0, 63, 63}, {3, 2, 76, 20}, {64, 1, 77, 9}, {5, 5, 5, 5}};
    for (const TileRect& rect : rects)
        for (const Kind& kind : imageKinds)
            for (uint16_t wide : {0, 1})
                for (uint32_t compression : {compressNone, compressRle}) {
                    const ImageHeader header = test::header(78, 64, kind.flags, compression, wide);
                    const TileFormat format = colourTileFormat(header);
                    const Bytes whole = test::wholeTileData(header, rect);
                    const Bytes data =
                        compression == compressNone
                            ? whole
                            : test::packedPlanes(whole, size_t(header.bytesPerPixel()));
                    if (data.size() > whole.size()) continue;
                    Canvas expected(78, 64);
                    for (uint32_t y = rect.y1; y <= rect.y2; ++y)
                        for (uint32_t x = rect.x1; x <= rect.x2; ++x)
                            expected.pixels[y * 78 + x] =
                                test::storedPixel(test::samplePixel(x, y), kind.flags);
                    for (const TileKernels* kernels : kernelSets())
                        for (const bool touched : {false, true}) {
                            SCOPED_TRACE(testing::Message()
                                         << kernels->name << " " << kind.name << " wide " << wide
                                         << " compression " << compression << " x1 " << rect.x1
                                         << (touched ? " touched" : ""));
                            Canvas canvas(78, 64);
                            TileTarget target = canvas.target();
                            target.touched = touched;
                            TileDecoder decoder(*kernels);
                            ASSERT_EQ(decoder.decodeColour(format, rect, data.data.data(),
                                                           data.size(), target),
                                      iffOk);
                            ASSERT_EQ(canvas.pixels, expected.pixels);
                        }
                }
}

TEST(TileCodec, DataBehindAWholeTileChangesNothing) {
    // The last run of one channel must not reach into the next, which may be decoded already.
    constexpr uint16_t width = 20, height = 60;
    const TileRect all{0, 0, width - 1, height - 1};
    for (uint32_t flags : {colourFlags, maskFlags}) {
        Bytes data;
        if (flags & imageMask)
            for (int i = 0; i < width * height / 20; ++i) data.u8(0x93).u8(77);
        for (unsigned y = 0; y < height; ++y) data.u8(0x93).u8(y + 1).u8(y + 70).u8(y + 140);
        data.fill(500, 0xEE);
        Canvas canvas(width, height);
        ASSERT_EQ(decodeColour(test::header(width, height, flags, compressQrl), all, data, canvas),
                  iffOk);
        const unsigned mask = flags & imageMask ? 77 : 255;
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x)
                ASSERT_EQ(canvas.at(x, y), test::planePixel({y + 1, y + 70, y + 140, mask}))
                    << x << " " << y;
    }
}

}  // namespace
}  // namespace vistel
