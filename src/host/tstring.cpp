#include "host/tstring.h"

#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace vistel {

namespace {

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

struct NumberStart {
    const char* first;  // first character after the sign
    bool negative;
};

// Skips leading blanks and one sign; the conversions of the library take neither blanks nor "+".
NumberStart skipToNumber(const std::string& text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end && isBlank(*at)) ++at;
    const bool negative = at < end && *at == '-';
    if (at < end && (*at == '-' || *at == '+')) ++at;
    return {at, negative};
}

// The magnitude of a decimal integer, clamped to `limit`.
uint64_t readMagnitude(const char* at, const char* end, uint64_t limit) {
    uint64_t value = 0;
    for (; at < end && isDigit(*at); ++at) {
        value = value * 10 + static_cast<uint64_t>(*at - '0');
        if (value > limit) return limit;
    }
    return value;
}

// Whether a decimal real that does not fit its type is too large (true) or too near to 0 (false):
// the decimal exponent of its first significant digit decides.
bool overflows(const char* at, const char* end) {
    long long exponent = 0;
    bool pointSeen = false, significant = false;
    for (; at < end && (isDigit(*at) || *at == '.'); ++at) {
        if (*at == '.') {
            pointSeen = true;
            continue;
        }
        significant = significant || *at != '0';
        if (significant && !pointSeen) ++exponent;
        if (!significant && pointSeen) --exponent;
    }
    if (at < end && (*at == 'e' || *at == 'E')) {
        ++at;
        const bool negative = at < end && *at == '-';
        if (at < end && (*at == '-' || *at == '+')) ++at;
        const auto written = static_cast<long long>(readMagnitude(at, end, 1'000'000'000'000));
        exponent += negative ? -written : written;
    }
    return exponent > 0;
}

// A decimal real. Words such as "inf" and "nan" are not numbers here.
template <typename Real>
Real readReal(const std::string& text) {
    const NumberStart start = skipToNumber(text);
    const char* const end = text.data() + text.size();
    if (start.first == end || (!isDigit(*start.first) && *start.first != '.')) return 0;
    Real value = 0;
    const std::from_chars_result result = std::from_chars(start.first, end, value);
    if (result.ec == std::errc::invalid_argument) return 0;
    if (result.ec == std::errc::result_out_of_range)
        value = overflows(start.first, result.ptr) ? std::numeric_limits<Real>::max() : Real{0};
    return start.negative ? -value : value;
}

}  // namespace

Tstring printable(std::string_view text) {
    Tstring shown;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<uint8_t>(text[i]);
        const auto next = static_cast<uint8_t>(i + 1 < text.size() ? text[i + 1] : 0);
        if (byte < 0x20 || byte == 0x7F) {
            shown += formatPrintf("\\x%02x", byte);
        } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            shown += formatPrintf("\\x%02x", next);
            ++i;
        } else {
            shown += text[i];
        }
    }
    return shown;
}

char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

int32_t Tstring::asInt32() const {
    const NumberStart start = skipToNumber(*this);
    const uint64_t limit = start.negative ? 0x80000000u : 0x7fffffffu;
    const auto magnitude = static_cast<int64_t>(readMagnitude(start.first, data() + size(), limit));
    return static_cast<int32_t>(start.negative ? -magnitude : magnitude);
}

uint32_t Tstring::asUInt32() const {
    const NumberStart start = skipToNumber(*this);
    if (start.negative) return 0;
    return static_cast<uint32_t>(readMagnitude(start.first, data() + size(), 0xffffffffu));
}

double Tstring::asDouble() const { return readReal<double>(*this); }

float Tstring::asFloat() const { return readReal<float>(*this); }

bool Tstring::isInt32() const {
    const bool sign = !empty() && (front() == '-' || front() == '+');
    const size_t digits = size() - (sign ? 1 : 0);
    if (digits == 0) return false;
    for (size_t i = sign ? 1 : 0; i < size(); ++i)
        if (!isDigit((*this)[i])) return false;
    const uint64_t limit = front() == '-' ? 0x80000000u : 0x7fffffffu;
    return readMagnitude(data() + (sign ? 1 : 0), data() + size(), limit + 1) <= limit;
}

bool Tstring::isUInt32() const {
    if (empty() || find_first_not_of("0123456789") != npos) return false;
    return readMagnitude(data(), data() + size(), 0x100000000u) <= 0xffffffffu;
}

bool Tstring::isReal() const {
    const char* const first = data() + (starts_with('-') || starts_with('+') ? 1 : 0);
    const char* const end = data() + size();
    if (first == end || (!isDigit(*first) && *first != '.')) return false;
    double value = 0;
    const std::from_chars_result result = std::from_chars(first, end, value);
    return result.ec != std::errc::invalid_argument && result.ptr == end;
}

bool Tstring::equalsIgnoringCase(std::string_view other) const {
    if (size() != other.size()) return false;
    for (size_t i = 0; i < size(); ++i)
        if (lowerCase((*this)[i]) != lowerCase(other[i])) return false;
    return true;
}

Tstring Tstring::replacingAll(char from, char to) const {
    Tstring result = *this;
    for (char& c : result)
        if (c == from) c = to;
    return result;
}

// Six significant digits, as "%g" prints them in the C locale.
FormatArgument::FormatArgument(double number) {
    char buffer[64];
    const std::to_chars_result result =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, 6);
    text_.assign(buffer, result.ptr);
}

Tstring formatPositional(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    Tstring result;
    for (size_t at = 0; at < format.size(); ++at) {
        if (format[at] != '^') {
            result += format[at];
            continue;
        }
        if (at + 1 < format.size() && format[at + 1] == '^') {
            result += '^';
            ++at;
            continue;
        }
        size_t next = at + 1, number = 0;
        while (next < format.size() && isDigit(format[next]) && number <= arguments.size())
            number = number * 10 + static_cast<size_t>(format[next++] - '0');
        const bool typed = next < format.size() &&
                           (format[next] == 's' || format[next] == 'd' || format[next] == 'f');
        if (!typed || number < 1 || number > arguments.size()) {
            result += '^';  // not a placeholder, or one without an argument: stays as it is
            continue;
        }
        result += arguments.begin()[number - 1].text();
        at = next;
    }
    return result;
}

Tstring formatPrintf(const char* format, ...) {
    std::va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    Tstring result;
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length > 0) {
        result.resize(static_cast<size_t>(length));
        std::vsnprintf(result.data(), result.size() + 1, format, again);
    }
    va_end(again);
    return result;
}

}  // namespace vistel
