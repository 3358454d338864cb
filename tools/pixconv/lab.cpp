#include "lab.h"

#include <cstddef>

namespace vistel {

namespace {

// From XYZ under D50 to linear sRGB, whose white is D65 (Bradford adaptation).
constexpr float matrix[3][3] = {{3.1338561f, -1.6168667f, -0.4906146f},
                                {-0.9787684f, 1.9161415f, 0.0334540f},
                                {0.0719453f, -0.2289914f, 1.4052427f}};
constexpr float white[3] = {0.9642f, 1, 0.8249f};

float cubed(float root) {
    constexpr float least = 6.0f / 29;
    return root > least ? root * root * root : 3 * least * least * (root - 4.0f / 29);
}

}  // namespace

std::array<float, 3> lightOfLab(float lightness, float a, float b) {
    const float y = (lightness + 16) / 116;
    const float roots[3] = {y + a / 500, y, y - b / 200};
    std::array<float, 3> light{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < 3; ++k) light[i] += matrix[i][k] * white[k] * cubed(roots[k]);
    return light;
}

}  // namespace vistel
