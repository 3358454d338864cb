// A picture on its way from one file type to another: what the frame format can carry, in memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vistel {

// Why something could not be done, in words for the user, without the file's name; none: done.
using Failure = std::optional<std::string>;

// Between light (0 to 1, linear) and what pictures hold, divided by their largest sample.
float encodedFromLinear(float linear);   // the sRGB curve; below 0 and not a number: 0, above 1: 1
float linearFromEncoded(float encoded);  // its inverse over 0 to 1

// The nearest byte to 255 times encodedFromLinear, from a table.
uint8_t byteFromLinear(float linear);
// The nearest byte to 255 times the value itself (a mask); below 0 and not a number: 0.
uint8_t byteFromMask(float value);
// Between the two widths of a sample: 0 is 0 and all ones are all ones; to 8 bits the nearest.
inline uint16_t wordFromByte(uint8_t value) { return static_cast<uint16_t>(value * 257); }
inline uint8_t byteFromWord(uint16_t value) {
    return static_cast<uint8_t>((uint32_t{value} * 255 + 32767) / 65535);
}

// Memory that is zero without having been written: a header that promises a large picture costs
// nothing until its pixels come. Is sized once, from empty.
template <class Sample>
class Samples {
 public:
    Samples() = default;
    explicit Samples(size_t count) { resize(count); }
    Samples(Samples&& other) noexcept { swap(other); }
    Samples& operator=(Samples other) noexcept {
        swap(other);
        return *this;
    }
    ~Samples() { std::free(block_); }

    void resize(size_t count) {
        block_ = static_cast<Sample*>(std::calloc(count, sizeof(Sample)));
        if (!block_) throw std::bad_alloc();
        count_ = count;
    }
    bool empty() const { return count_ == 0; }
    size_t size() const { return count_; }
    Sample* data() { return block_; }
    const Sample* data() const { return block_; }
    Sample* begin() { return block_; }
    Sample* end() { return block_ + count_; }
    const Sample* begin() const { return block_; }
    const Sample* end() const { return block_ + count_; }
    Sample& operator[](size_t i) { return block_[i]; }
    const Sample& operator[](size_t i) const { return block_[i]; }
    bool operator==(const Samples& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }

 private:
    void swap(Samples& other) {
        std::swap(block_, other.block_);
        std::swap(count_, other.count_);
    }
    Sample* block_ = nullptr;
    size_t count_ = 0;
};

// What any picture may take, colour and depth together: 1 GB.
inline constexpr uint64_t mostPictureBytes = uint64_t{1} << 30;

// Pixels are red, green, blue, mask, four samples each; rows from the top one down. A grey picture
// has equal red, green and blue; one without mask has a mask of all ones (255 or 65535).
struct Picture {
    uint32_t width = 0, height = 0;
    bool wide = false;   // samples of 16 bits (0 to 65535) in `wideSamples`; else 8 in `samples`
    bool colour = true;  // false: grey
    bool mask = false;
    bool filmCodes = false;  // logarithmic codes of film (printing densities), kept as they are
    Samples<uint8_t> samples;
    Samples<uint16_t> wideSamples;
    Samples<float> z;  // depth, one for each pixel; empty: none
    // Rows that have come, or as many pixels as so many rows have: of a file that turns out cut or
    // damaged they are worth showing. What has not come is zero: black and clear.
    uint32_t rowsRead = 0;
    uint64_t mostBytes = mostPictureBytes;  // that it may take (memory_rule.h)

    // Sets size and sample width and takes the memory, all zero. Fails for a side of 0 or above
    // 65535 (no frame can have it), for more than it may take, and without memory.
    [[nodiscard]] Failure allocate(uint32_t newWidth, uint32_t newHeight, bool isWide);
    [[nodiscard]] Failure allocateZ();

    // Whether a reading that failed left more than a header's promise: a hundredth of the picture.
    bool partIsThere() const { return rowsRead > 0 && uint64_t{rowsRead} * 100 >= height; }

    size_t rowSamples() const { return size_t{width} * 4; }
    uint8_t* row(uint32_t y) { return samples.data() + y * rowSamples(); }
    const uint8_t* row(uint32_t y) const { return samples.data() + y * rowSamples(); }
    uint16_t* wideRow(uint32_t y) { return wideSamples.data() + y * rowSamples(); }
    const uint16_t* wideRow(uint32_t y) const { return wideSamples.data() + y * rowSamples(); }
    float* zRow(uint32_t y) { return z.data() + y * size_t{width}; }
    const float* zRow(uint32_t y) const { return z.data() + y * size_t{width}; }

    // A row in 8 bits, for types that hold no more: the row itself or, of a wide picture, a copy in
    // `room`.
    const uint8_t* byteRow(uint32_t y, std::vector<uint8_t>& room) const;
};

}  // namespace vistel
