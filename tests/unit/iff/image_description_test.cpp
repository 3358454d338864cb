// The texts of the verbose report.

#include <gtest/gtest.h>

#include <bit>

#include "host/messages.h"
#include "iff/iff_context.h"
#include "iff/image_bytes.h"
#include "iff/image_description.h"

namespace vistel {
namespace {

using test::Bytes;

TEST(ImageDescription, NamesWhatTheHeaderHolds) {
    const auto with = [](uint32_t flags, uint32_t compression, uint16_t tiles, uint16_t wide = 0) {
        ImageHeader header = test::header(640, 480, flags, compression, wide);
        header.tiles = tiles;
        return describeImage(header);
    };
    EXPECT_EQ(with(0x7, 1, 80), "640x480 Color RLE, 8 bits with Mask, ZBuf, 80 tiles");
    EXPECT_EQ(with(0x10, 0, 0), "640x480, 8 bits Mask");
    EXPECT_EQ(with(0x14, 0, 2), "640x480, 8 bits Mask, ZBuf, 2 tiles");
    EXPECT_EQ(with(0x13, 0, 0), "640x480, 8 bits Mask");
    EXPECT_EQ(with(0x0, 2, 1), "640x480 B&W QRL, 8 bits without Mask, 1 tile");
    EXPECT_EQ(with(0x2, 3, 0), "640x480 B&W QR4, 8 bits with Mask");
    EXPECT_EQ(with(0x1, 7, 0), "640x480 Color Badly encoded, 8 bits without Mask");
    EXPECT_EQ(with(0x1, 4, 0), "640x480 Color Badly encoded, 8 bits without Mask");
    EXPECT_EQ(with(0x1, 1, 0, 1), "640x480 Color RLE, 16 bits without Mask");
    EXPECT_EQ(with(0x2001, 1, 0, 1), "640x480 Color RLE, 12 bits without Mask");
    EXPECT_EQ(with(0x3001, 1, 0, 1), "640x480 Color RLE, Color map without Mask");
    EXPECT_EQ(with(0x2000F, 1, 3), "640x480 Color RLE, 8 bits with Mask, ZBuf, ABuf, Map, 3 tiles");
}

TEST(TileDescription, IsFourPaddedNumbers) {
    EXPECT_EQ(describeTile({0, 64, 63, 127}), "x1:    0  y1:   64  x2:   63  y2:  127");
    EXPECT_EQ(describeTile({0, 0, 65535, 12345}), "x1:    0  y1:    0  x2: 65535  y2: 12345");
}

TEST(ListingLine, HasAFullStopForEachLevel) {
    EXPECT_EQ(listingLine(0, iffId("FOR4"), 1234, iffId("CIMG")), "FOR4     1234 CIMG");
    EXPECT_EQ(listingLine(2, iffId("RGBA"), 9, 0), "..RGBA        9 ");
    EXPECT_EQ(listingLine(1, iffId("(c) "), 123456789, 0), ".(c)  123456789 ");
}

TEST(ListingLine, NamesSizesThatAreNotKnown) {
    const std::string unknown = messageText(Message::rVTUnknown);
    EXPECT_EQ(listingLine(0, iffId("FOR4"), 0x80000000, iffId("CIMG")), "FOR4" + unknown + "CIMG");
    EXPECT_EQ(listingLine(1, iffId("NAME"), 0x80000002, 0), ".NAME" + unknown);
    EXPECT_EQ(listingLine(0, iffId("FOR4"), 0x80000001, iffId("CIMG")),
              "FOR4" + std::string(messageText(Message::rVTNotYetWritten)) + "CIMG");
}

TEST(ContentLine, IsTheTextOrOnlyALineEnd) {
    EXPECT_EQ(contentLine("shot"), "    shot\n");
    EXPECT_EQ(contentLine(""), "\n");
    EXPECT_EQ(contentLine(std::string(300, 'a')), "    " + std::string(255, 'a') + "\n");
}

TEST(ExtendedFloat, IsConvertedToAFloat) {
    const struct {
        uint16_t exponent;
        uint32_t high, low;
        float value;
    } rows[] = {
        {0x400E, 0xAC440000, 0, 44100.0f},
        {0x400E, 0xBB800000, 0, 48000.0f},
        {0x3FFF, 0x80000000, 0, 1.0f},
        {0xBFFF, 0x80000000, 0, -1.0f},
        {0x3FFF, 0xC0000000, 0, 1.5f},
        {0x4020, 0x80000000, 0x80000000, 8589934592.0f + 2.0f},  // the low half counts
        {0x0000, 0, 0, 0.0f},
        {0x7FFF, 0, 0, 1.0e30f},
        {0xFFFF, 1, 1, -1.0e30f},
    };
    for (const auto& row : rows) {
        const Bytes bytes = Bytes().u16(row.exponent).u32(row.high).u32(row.low);
        EXPECT_EQ(floatFromExtended(bytes.data.data()), row.value) << row.exponent;
    }
    const Bytes zero = Bytes().u16(0x8000).u32(0).u32(0);
    EXPECT_EQ(std::bit_cast<uint32_t>(floatFromExtended(zero.data.data())), 0x80000000u);
    const Bytes infinite = Bytes().u16(0x7FFF).u32(0).u32(0);
    EXPECT_EQ(std::bit_cast<uint32_t>(floatFromExtended(infinite.data.data())), 0x7149F2CAu);
}

Bytes soundBody(unsigned channels, uint32_t frames, unsigned bits) {
    return Bytes().u16(channels).u32(frames).u16(bits).u16(0x400E).u32(0xAC440000).u32(0);
}

TEST(SoundFormat, IsDescribedAndUsableWhenUncompressed) {
    const struct {
        Bytes body;
        bool usable;
        const char* text;
    } rows[] = {
        {soundBody(2, 44100, 16), true, "44100 Samples, 16 Bits Stereo, 44.1KHz     "},
        {soundBody(1, 7, 8), true, "7 Samples, 8 Bits Mono, 44.1KHz     "},
        {soundBody(5, 7, 8), true, "7 Samples, 8 Bits Multi-Channels, 44.1KHz     "},
        {soundBody(0, 7, 8), true, "7 Samples, 8 Bits Multi-Channels, 44.1KHz     "},
        {soundBody(1, 7, 8).add("NONE").u8(3).add("abc"), true,
         "7 Samples, 8 Bits Mono, 44.1KHz  abc"},
        {soundBody(1, 7, 8).add("ulaw").u8(4).add("\xB5law"), false,
         "7 Samples, 8 Bits Mono, 44.1KHz \xB5law"},
        {soundBody(1, 7, 8).add("NONE").u8(200).add("cut"), true,
         "7 Samples, 8 Bits Mono, 44.1KHz  cut"},
        {soundBody(1, 7, 8).add("NONE"), true, "7 Samples, 8 Bits Mono, 44.1KHz     "},
        {soundBody(1, 7, 8).add("NONE").u8(0), true, "7 Samples, 8 Bits Mono, 44.1KHz     "},
        {soundBody(1, 7, 8).add("ulaw"), false, "7 Samples, 8 Bits Mono, 44.1KHz     "},
        {soundBody(1, 7, 8).add("NON"), false, "7 Samples, 8 Bits Mono, 44.1KHz     "},
    };
    for (const auto& row : rows) {
        const SoundFormat format = decodeSoundFormat(row.body.data.data(), row.body.size());
        EXPECT_EQ(format.usable, row.usable) << row.text;
        EXPECT_EQ(describeSound(format), row.text);
    }
}

}  // namespace
}  // namespace vistel
