// The relief shades of all differences from -256 to 255, so that shading a pixel takes no square
// root.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vistel {

class ReliefTable {
 public:
    explicit ReliefTable(float k) { build(k); }

    // Makes every entry shadeOf(k, dx, dy).
    void build(float k);

    // The factor of the differences that the table was built for.
    float k() const { return k_; }

    // dx and dy from -256 to 255.
    uint8_t at(int dx, int dy) const { return shades_[dy + half][dx + half]; }

    // One row of the relief, as ViewKernels::shadeRow does it with the formula.
    void shadeRow(const uint32_t* row, const uint32_t* before, size_t pixels, uint8_t* shade) const;

 private:
    static constexpr int half = 256;
    float k_ = 0;
    uint8_t shades_[2 * half][2 * half];  // row dy, column dx
};

}  // namespace vistel
