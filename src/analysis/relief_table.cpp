#include "analysis/relief_table.h"

#include "analysis/view_kernels.h"

namespace vistel {

void ReliefTable::build(float k) {
    k_ = k;
    for (int dy = -half; dy < half; ++dy)
        for (int dx = -half; dx <= dy; ++dx)
            shades_[dy + half][dx + half] = shades_[dx + half][dy + half] = shadeOf(k, dx, dy);
}

void ReliefTable::shadeRow(const uint32_t* row, const uint32_t* before, size_t pixels,
                           uint8_t* shade) const {
    if (pixels == 0) return;
    const uint8_t* const flat = &shades_[half][half];
    int left = reliefHeight(row[0]);
    const auto each = [&](auto dyAt) {
        for (size_t i = 0; i < pixels; ++i) {
            const int here = reliefHeight(row[i]);
            shade[i] = flat[2 * half * dyAt(i, here) + here - left];
            left = here;
        }
    };
    if (before) {
        each([&](size_t i, int here) { return here - reliefHeight(before[i]); });
    } else {
        each([](size_t, int) { return 0; });
    }
}

}  // namespace vistel
