// Radiance pictures: red, green and blue, or X, Y and Z, on a scale whose power of two is the
// fourth byte.
//
//     "#?RADIANCE" or "#?RGBE", lines of NAME=VALUE, an empty line, "-Y height +X width", rows
//
// The signs and the order of the axes tell where the first row and pixel stand. A row starts with
// 2, 2 and its length, big-endian, when its four planes follow in runs (a count above 128: so many
// less 128 of the next byte, else so many bytes follow); otherwise it is pixel after pixel, where
// 1, 1, 1, n is the pixel before n times more, with the next such one 256 times n.
//
// GAMMA tells the power whose root was taken of the light. EXPOSURE tells what the light was
// multiplied with so that it can be seen: it is shown so.

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

#include "byte_source.h"
#include "byte_target.h"
#include "codecs.h"
#include "file_starts.h"
#include "samples.h"
#include "text_header.h"
#include "turned.h"

namespace vistel {

namespace {

struct Header {
    double gamma = 1;
    bool xyz = false;                // the three are X, Y and Z
    uint32_t rows = 0, columns = 0;  // as stored
    int orientation = 1;             // for turnUpright
};

bool recognises(std::span<const uint8_t> start) {
    for (const char* mark : {"#?RADIANCE\n", "#?RADIANCE\r", "#?RGBE\n", "#?RGBE\r"})
        if (startsWith(start, mark)) return true;
    return false;
}

// Multiplies the gamma by the one in the line, when the line holds one and it is sensible.
void applyGamma(const std::string& line, double& gamma) {
    constexpr std::string_view name = "GAMMA=";
    if (!line.starts_with(name)) return;
    const char* from = line.data() + name.size();
    const char* end = line.data() + line.size();
    while (from < end && isBlank(*from)) ++from;
    double number = 0;
    if (std::from_chars(from, end, number).ec != std::errc()) return;
    if (number > 0 && std::isfinite(number) && std::isnormal(gamma * number)) gamma *= number;
}

Failure readResolution(ByteSource& source, Header& header) {
    struct Row {
        const char *first, *second;
    };
    static constexpr Row orders[] = {{"-Y", "+X"}, {"-Y", "-X"}, {"+Y", "-X"}, {"+Y", "+X"},
                                     {"+X", "-Y"}, {"-X", "-Y"}, {"-X", "+Y"}, {"+X", "+Y"}};
    const std::string line = readLine(source);
    if (source.left() == 0) return endsInHeader();
    const size_t gaps[] = {line.find(' '), line.find(' ', 3), line.rfind(' ')};
    const auto damaged = [] { return Failure("the file is damaged: no size of the picture"); };
    if (gaps[0] != 2 || gaps[1] == std::string::npos || gaps[2] != gaps[1] + 3) return damaged();
    if (!parseNumber(line.substr(3, gaps[1] - 3), header.rows) ||
        !parseNumber(line.substr(gaps[2] + 1), header.columns))
        return damaged();
    for (int i = 0; i < 8; ++i)
        if (line.starts_with(orders[i].first) &&
            line.compare(gaps[1] + 1, 2, orders[i].second) == 0) {
            header.orientation = i + 1;
            return {};
        }
    return damaged();
}

Failure readHeader(ByteSource& source, Header& header) {
    if (!readLine(source).starts_with("#?")) return "not a Radiance picture";
    for (;;) {
        const std::string line = readLine(source);
        if (source.left() == 0) return endsInHeader();
        if (line.empty()) break;
        if (line.starts_with("FORMAT=") && line != "FORMAT=32-bit_rle_rgbe" &&
            line != "FORMAT=32-bit_rle_xyze")
            return "the Radiance format " + line.substr(7) + " is not supported";
        if (line.starts_with("FORMAT=")) header.xyz = line.ends_with("xyze");
        applyGamma(line, header.gamma);
    }
    return readResolution(source, header);
}

enum class Outcome { whole, cut, damaged };

// One byte of each pixel, in runs.
Outcome readPlane(ByteSource& source, uint8_t* to, uint32_t columns) {
    for (uint32_t x = 0; x < columns;) {
        const int control = source.next();
        if (control < 0) return Outcome::cut;
        const bool repeated = control > 128;
        const uint32_t count = uint32_t(repeated ? control - 128 : control);
        if (count == 0 || count > columns - x) return Outcome::damaged;
        int byte = 0;
        for (uint32_t i = 0; i < count; ++i, ++x) {
            if (i == 0 || !repeated) byte = source.next();
            if (byte < 0) return Outcome::cut;
            to[size_t{x} * 4] = uint8_t(byte);
        }
    }
    return Outcome::whole;
}

// Pixel after pixel; the first one has been read into the row.
Outcome readPixels(ByteSource& source, uint8_t* row, uint32_t columns) {
    uint32_t shift = 0;
    uint8_t pixel[4];
    std::memcpy(pixel, row, 4);
    for (uint32_t x = 0;;) {
        if (pixel[0] == 1 && pixel[1] == 1 && pixel[2] == 1) {
            const uint64_t count = uint64_t{pixel[3]} << shift;
            if (x == 0 || count > columns - x) return Outcome::damaged;
            for (uint64_t i = 0; i < count; ++i, ++x)
                std::memcpy(row + size_t{x} * 4, row + (size_t{x} - 1) * 4, 4);
            shift = std::min(shift + 8, 24u);
        } else {
            std::memcpy(row + size_t{x++} * 4, pixel, 4);
            shift = 0;
        }
        if (x == columns) return Outcome::whole;
        if (!source.read(pixel, 4)) return Outcome::cut;
    }
}

Outcome readRow(ByteSource& source, uint8_t* row, uint32_t columns) {
    if (!source.read(row, 4)) return Outcome::cut;
    const bool planes =
        row[0] == 2 && row[1] == 2 && row[2] < 128 && columns >= 8 && columns == readBig16(row + 2);
    if (!planes) return readPixels(source, row, columns);
    Outcome outcome = Outcome::whole;
    for (size_t i = 0; i < 4 && outcome == Outcome::whole; ++i)
        outcome = readPlane(source, row + i, columns);
    return outcome;
}

// The samples of bytes and exponents.
class SampleTable {
 public:
    explicit SampleTable(double gamma) : gamma_(gamma) {
        for (int exponent = 1; exponent < 256; ++exponent)
            scale_[size_t(exponent)] = std::ldexp(1.0, exponent - 136);
    }
    double light(uint8_t byte, uint8_t exponent) const {
        const double stored = byte * scale_[exponent];
        return gamma_ != 1 ? std::pow(stored, gamma_) : stored;
    }
    uint8_t sample(uint8_t byte, uint8_t exponent) const {
        return byteFromLinear(float(light(byte, exponent)));
    }

 private:
    const double gamma_;
    std::array<double, 256> scale_{};  // exponent 0 is black
};

// X, Y and Z become red, green and blue of the screen.
void placeXyz(const SampleTable& table, uint8_t* pixel) {
    static constexpr double matrix[3][3] = {{3.2404542, -1.5371385, -0.4985314},
                                            {-0.9692660, 1.8760108, 0.0415560},
                                            {0.0556434, -0.2040259, 1.0572252}};
    const double xyz[] = {table.light(pixel[0], pixel[3]), table.light(pixel[1], pixel[3]),
                          table.light(pixel[2], pixel[3])};
    for (size_t i = 0; i < 3; ++i)
        pixel[i] = byteFromLinear(
            float(matrix[i][0] * xyz[0] + matrix[i][1] * xyz[1] + matrix[i][2] * xyz[2]));
}

Failure readRows(ByteSource& source, const Header& header, Picture& picture) {
    const SampleTable table(header.gamma);
    for (uint32_t y = 0; y < header.rows; ++y) {
        uint8_t* row = picture.row(y);
        const Outcome outcome = readRow(source, row, header.columns);
        if (outcome != Outcome::whole) std::memset(row, 0, picture.rowSamples());
        if (outcome == Outcome::cut) return endsInRow(y, header.rows);
        if (outcome == Outcome::damaged) return damagedRow(y, header.rows);
        for (size_t x = 0; x < header.columns; ++x, row += 4) {
            if (header.xyz) {
                placeXyz(table, row);
                continue;
            }
            for (size_t i = 0; i < 3; ++i) row[i] = table.sample(row[i], row[3]);
        }
        picture.rowsRead = y + 1;
    }
    return {};
}

Failure read(const SourceFile& file, Picture& picture) {
    ByteSource source(file);
    Header header;
    if (auto failure = readHeader(source, header)) return failure;
    if (auto failure = picture.allocate(header.columns, header.rows, false)) return failure;
    return completed(picture, readRows(source, header, picture), header.orientation);
}

// The brightest of the three sets the scale. Rounded, so that a byte that is written and read again
// stays. What is so dark that no scale is left for it is black: four zeros.
void putLight(const Picture& picture, uint32_t y, size_t x, uint8_t* to) {
    float light[3];
    for (size_t i = 0; i < 3; ++i) light[i] = lightOfSample(picture, y, x * 4 + i);
    int exponent;
    float scale = std::frexp(std::max({light[0], light[1], light[2]}), &exponent);
    if (scale * 256 >= 255.5f) ++exponent;  // would be rounded to 256
    if (scale == 0 || exponent < -127) {
        std::fill_n(to, 4, uint8_t{0});
        return;
    }
    scale = std::ldexp(1.0f, 8 - exponent);
    for (size_t i = 0; i < 3; ++i) to[i] = uint8_t(light[i] * scale + 0.5f);
    to[3] = uint8_t(exponent + 128);
}

// Pixels one by one: as the largest byte of each is at least 128, none is mistaken for a run.
Failure write(const Picture& picture, const TargetFile& target) {
    if (std::fprintf(target.file, "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %u +X %u\n",
                     picture.height, picture.width) < 0)
        return cannotWrite();
    const auto fill = [&](uint32_t y, std::vector<uint8_t>& row) {
        for (size_t x = 0; x < picture.width; ++x) putLight(picture, y, x, &row[x * 4]);
    };
    return writeRows(target, picture, RowOrder::topFirst, picture.rowSamples(), fill);
}

}  // namespace

const Codec hdrCodec{"hdr", recognises, read, write};

}  // namespace vistel
