#include "iff/big_endian.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

TEST(BigEndian, TheFirstByteIsTheHighestAndNoSignIsCarriedOver) {
    const uint8_t bytes[] = {0xFE, 0x01, 0x80, 0xFF};
    EXPECT_EQ(readBig16(bytes), 0xFE01u);
    EXPECT_EQ(readBig16(bytes + 2), 0x80FFu);
    EXPECT_EQ(readBig32(bytes), 0xFE0180FFu);
}

TEST(BigEndian, WhatIsWrittenIsThatManyBytesAndReadBack) {
    for (const uint32_t value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFEDCBA98u, 0xFFFFFFFFu}) {
        uint8_t bytes[6] = {0x55, 0, 0, 0, 0, 0x55};
        writeBig32(bytes + 1, value);
        EXPECT_EQ(readBig32(bytes + 1), value);
        EXPECT_EQ(bytes[1], value >> 24);
        writeBig16(bytes + 1, static_cast<uint16_t>(value));
        EXPECT_EQ(readBig16(bytes + 1), value & 0xFFFF);
        EXPECT_EQ(readBig16(bytes + 3), value & 0xFFFF);  // as the word was written
        EXPECT_EQ(bytes[0], 0x55);
        EXPECT_EQ(bytes[5], 0x55);
    }
}

}  // namespace
}  // namespace vistel
