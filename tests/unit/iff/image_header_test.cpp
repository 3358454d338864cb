#include <gtest/gtest.h>

#include <vector>

#include "iff/image_bytes.h"
#include "iff/image_header.h"
#include "iff/result_codes.h"

namespace vistel {
namespace {

using test::Bytes;

TEST(ImageHeader, FieldsLieAtTheirOffsets) {
    const Bytes bytes = Bytes().u32(640).u32(480).u16(1).u16(2).u32(0x20017).u16(3).u16(80).u32(2);
    ImageHeader header;
    ASSERT_EQ(bytes.size(), ImageHeader::encodedSize);
    ASSERT_EQ(decodeImageHeader(bytes.data.data(), header), iffOk);
    EXPECT_EQ(header.width, 640u);
    EXPECT_EQ(header.height, 480u);
    EXPECT_EQ(header.pairFirst, 1);
    EXPECT_EQ(header.pairSecond, 2);
    EXPECT_EQ(header.flags, 0x20017u);
    EXPECT_EQ(header.wideChannels, 3);
    EXPECT_EQ(header.tiles, 80);
    EXPECT_EQ(header.compression, 2u);
    uint8_t encoded[ImageHeader::encodedSize];
    encodeImageHeader(header, encoded);
    EXPECT_EQ(std::vector<uint8_t>(encoded, encoded + sizeof encoded), bytes.data);
}

TEST(ImageHeader, AZeroSizeIsABadHeader) {
    ImageHeader header = test::header(5, 5, 0);
    for (auto [width, height] : {std::pair{0u, 5u}, {5u, 0u}, {0u, 0u}}) {
        const Bytes bytes = test::headerBody(test::header(width, height, 0));
        EXPECT_EQ(decodeImageHeader(bytes.data.data(), header), iffBadImageHeader);
    }
    EXPECT_EQ(header.width, 5u);  // unchanged
}

TEST(ImageHeader, BytesPerPixelFollowTheFlags) {
    const struct {
        uint32_t flags;
        uint16_t wide;
        int bytes;
    } rows[] = {
        {imageColour, 0, 3},
        {imageColour | imageMask, 0, 4},
        {0, 0, 1},
        {imageMask, 0, 2},
        {imageBlack, 0, 0},
        {imageBlack | imageColour, 0, 0},
        {imageBlack | imageMask, 0, 1},
        {imageColour | imageMask, 1, 8},
        {0, 7, 2},
    };
    for (const auto& row : rows)
        EXPECT_EQ(test::header(1, 1, row.flags, 1, row.wide).bytesPerPixel(), row.bytes);
}

}  // namespace
}  // namespace vistel
