#include "audio/extended_float.h"

#include <cmath>

#include "host/byte_order.h"

namespace vistel {

static constexpr int greatestExponent = 32767;

double doubleFromExtended(const uint8_t bytes[10]) {
    const int exponent = readBig16(bytes) & greatestExponent;
    const uint32_t high = readBig32(bytes + 2), low = readBig32(bytes + 6);
    double value = HUGE_VAL;
    if (exponent == 0 && high == 0 && low == 0)
        value = 0;
    else if (exponent != greatestExponent)
        value = std::ldexp(static_cast<double>(high), exponent - 16414) +
                std::ldexp(static_cast<double>(low), exponent - 16446);
    return bytes[0] & 0x80 ? -value : value;
}

std::array<uint8_t, 10> extendedFromDouble(double value) {
    std::array<uint8_t, 10> bytes{};
    uint16_t exponent = 0;
    uint64_t mantissa = 0;
    if (!std::isfinite(value)) {
        exponent = greatestExponent;
    } else if (value != 0) {
        int power;  // of two, of a fraction from a half to one
        mantissa = static_cast<uint64_t>(std::ldexp(std::frexp(std::fabs(value), &power), 64));
        exponent = static_cast<uint16_t>(power + 16382);
    }
    writeBig16(bytes.data(), static_cast<uint16_t>(exponent | (std::signbit(value) ? 0x8000 : 0)));
    writeBig32(bytes.data() + 2, static_cast<uint32_t>(mantissa >> 32));
    writeBig32(bytes.data() + 6, static_cast<uint32_t>(mantissa));
    return bytes;
}

}  // namespace vistel
