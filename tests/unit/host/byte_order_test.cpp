#include "host/byte_order.h"

#include <gtest/gtest.h>

#include <array>

namespace vistel {
namespace {

constexpr uint8_t bytes[] = {0xF1, 0x82, 0xE3, 0x94, 0xD5, 0xA6, 0xC7, 0xB8};

TEST(ByteOrder, BigEndianNumbersBeginWithTheMostSignificantByte) {
    EXPECT_EQ(readBig16(bytes), 0xF182);
    EXPECT_EQ(readBig32(bytes), 0xF182E394u);
    EXPECT_EQ(readBig64(bytes), 0xF182E394D5A6C7B8u);
}

TEST(ByteOrder, LittleEndianNumbersEndWithIt) {
    EXPECT_EQ(readLittle16(bytes), 0x82F1);
    EXPECT_EQ(readLittle32(bytes), 0x94E382F1u);
}

TEST(ByteOrder, NumbersLieAtAnyAddress) {
    for (int at = 0; at < 4; ++at) {
        EXPECT_EQ(readBig16(bytes + at), bytes[at] * 256 + bytes[at + 1]);
        EXPECT_EQ(readLittle16(bytes + at), bytes[at + 1] * 256 + bytes[at]);
        EXPECT_EQ(readBig32(bytes + at),
                  readBig16(bytes + at) * 65536u + readBig16(bytes + at + 2));
        EXPECT_EQ(readLittle32(bytes + at),
                  readLittle16(bytes + at + 2) * 65536u + readLittle16(bytes + at));
    }
}

// What `write` leaves of six bytes of 0x55, from the second one on.
template <class Number>
std::array<uint8_t, 6> written(void (*write)(uint8_t*, Number), Number value) {
    std::array<uint8_t, 6> room;
    room.fill(0x55);
    write(&room[1], value);
    return room;
}

TEST(ByteOrder, WritingTouchesTheNumbersBytesAlone) {
    using Bytes = std::array<uint8_t, 6>;
    EXPECT_EQ(written<uint16_t>(writeBig16, 0xF182), (Bytes{0x55, 0xF1, 0x82, 0x55, 0x55, 0x55}));
    EXPECT_EQ(written<uint16_t>(writeLittle16, 0xF182),
              (Bytes{0x55, 0x82, 0xF1, 0x55, 0x55, 0x55}));
    EXPECT_EQ(written<uint32_t>(writeBig32, 0xF182E394),
              (Bytes{0x55, 0xF1, 0x82, 0xE3, 0x94, 0x55}));
    EXPECT_EQ(written<uint32_t>(writeLittle32, 0xF182E394),
              (Bytes{0x55, 0x94, 0xE3, 0x82, 0xF1, 0x55}));
}

}  // namespace
}  // namespace vistel
