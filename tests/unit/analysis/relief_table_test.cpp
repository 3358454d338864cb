#include "analysis/relief_table.h"

#include <gtest/gtest.h>

#include <vector>

#include "analysis/noise.h"
#include "analysis/view_kernels.h"

namespace vistel {
namespace {

using test::noise;

TEST(ReliefTable, TheTableHoldsTheFormulaForEveryDifference) {
    for (const float k : {0.025f, -0.013f, 3.0f}) {
        const ReliefTable table(k);
        EXPECT_EQ(table.k(), k);
        for (int dy = -256; dy < 256; ++dy)
            for (int dx = -256; dx < 256; ++dx) ASSERT_EQ(table.at(dx, dy), shadeOf(k, dx, dy));
    }
}

TEST(ReliefTable, ATableRowIsTheFormulasRow) {
    constexpr size_t width = 301;
    const auto pixels = noise(2 * width, 5);
    const ReliefTable table(0.025f);
    for (const uint32_t* before : {static_cast<const uint32_t*>(nullptr), pixels.data()}) {
        std::vector<uint8_t> byTable(width), byFormula(width);
        table.shadeRow(pixels.data() + width, before, width, byTable.data());
        scalarViewKernels().shadeRow(0.025f, pixels.data() + width, before, width,
                                     byFormula.data());
        EXPECT_EQ(byTable, byFormula);
    }
    table.shadeRow(pixels.data(), nullptr, 0, nullptr);
}

}  // namespace
}  // namespace vistel
