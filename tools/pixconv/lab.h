// CIE L*a*b* colours, of white at 5000 K as documents have them.
#pragma once

#include <array>

namespace vistel {

// Lightness 0 to 100, a and b around 0: red, green and blue as linear light, 0 to 1 where a screen
// can show the colour.
std::array<float, 3> lightOfLab(float lightness, float a, float b);

}  // namespace vistel
