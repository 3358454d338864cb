// Relief shading, its picture under the colours, its profile lines.

#include "analysis/relief.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "analysis/noise.h"
#include "analysis/view_kernels.h"

namespace vistel {
namespace {

using test::noise;

// The light on a slope, in double precision.
double light(double k, int dx, int dy) {
    const double scale = 255 / std::sqrt(2.36);
    const double value =
        (dx * k + 0.6 + dy * k) * scale / std::sqrt((dy * k) * (dy * k) + 1 + (dx * k) * (dx * k));
    return std::min(255.0, std::max(0.0, value));
}

std::vector<uint32_t> heights(const std::vector<int>& values) {
    std::vector<uint32_t> pixels;
    for (const int value : values) pixels.push_back(0xAB0055AA | value << 16);
    return pixels;
}

std::vector<int> shaded(const std::vector<int>& values, size_t width, float slope,
                        bool tableWanted = false) {
    ReliefShader shader;
    const auto pixels = heights(values);
    std::vector<uint8_t> shade(values.size());
    shader.shade(pixels.data(), width, values.size() / width, slope, tableWanted, shade.data());
    return {shade.begin(), shade.end()};
}

TEST(Relief, LightIsTruncatedFromTheFormula) {
    for (const float k : {0.025f, -0.025f, 0.1f, 1.0f, 0.0f})
        for (int dy = -256; dy < 256; dy += 3)
            for (int dx = -256; dx < 256; dx += 5) {
                const double exact = light(double{k}, dx, dy);
                // Single precision may fall on the other side of a whole number, no further.
                ASSERT_GE(shadeOf(k, dx, dy), std::floor(exact - 1e-3))
                    << k << " " << dx << " " << dy;
                ASSERT_LE(shadeOf(k, dx, dy), std::floor(exact + 1e-3))
                    << k << " " << dx << " " << dy;
            }
}

TEST(Relief, LightOnKnownSlopes) {
    EXPECT_EQ(shadeOf(0.025f, 0, 0), 99);    // 0.6 x 165.99
    EXPECT_EQ(shadeOf(0.025f, 40, 0), 187);  // (1 + 0.6) x 165.99 / sqrt(2)
    EXPECT_EQ(shadeOf(0.025f, 0, 40), 187);
    EXPECT_EQ(shadeOf(0.025f, -40, 0), 0);    // faces away
    EXPECT_EQ(shadeOf(0.025f, 66, 66), 254);  // nearly into the light: clamped or close to it
    EXPECT_EQ(shadeOf(INFINITY, 0, 0), 0);    // no number
    EXPECT_EQ(shadeOf(NAN, 1, 1), 0);
}

TEST(Relief, LightIsTheSameFromTheRightAndFromAbove) {
    for (const float k : {0.025f, -0.0371f, 0.7f})
        for (int dy = -256; dy < 256; ++dy)
            for (int dx = -256; dx < dy; ++dx) ASSERT_EQ(shadeOf(k, dx, dy), shadeOf(k, dy, dx));
}

TEST(Relief, AFlatPlaneShadesTo99Everywhere) {
    for (const int height : {0, 1, 128, 255})
        for (const float slope : {-0.1f, 0.1f, -5.0f, 0.0f})
            EXPECT_EQ(shaded(std::vector<int>(35, height), 7, slope), std::vector<int>(35, 99));
}

TEST(Relief, TheFirstPixelIsFlatWhateverItsHeight) {
    for (const int height : {0, 7, 255}) EXPECT_EQ(shaded({height, 3, 9, 200}, 2, -0.1f)[0], 99);
}

TEST(Relief, DifferencesAreToTheLeftAndToTheRowBefore) {
    const float k = 0.025f;  // of a slope of -0.1
    const std::vector<int> expected = {
        99,  // the first pixel
        shadeOf(k, 30, 0),
        shadeOf(k, -10, 0),  // along the first row nothing but dx
        shadeOf(k, 0, 5),    // along the first column nothing but dy
        shadeOf(k, 45, 20),
        shadeOf(k, -40, -10),
        shadeOf(k, 0, -15),
        shadeOf(k, 0, -60),
        shadeOf(k, 200, 180),
    };
    EXPECT_EQ(shaded({10, 40, 30, 15, 60, 20, 0, 0, 200}, 3, -0.1f), expected);
    EXPECT_EQ(shaded({10, 40, 30, 15, 60, 20, 0, 0, 200}, 3, -0.1f, true), expected);
}

TEST(Relief, TheSlopeIsTimesMinusAQuarter) {
    EXPECT_EQ(shaded({0, 40}, 2, -0.1f)[1], 187);  // rises into the light
    EXPECT_EQ(shaded({0, 40}, 2, 0.1f)[1], 0);
    EXPECT_EQ(shaded({40, 0}, 2, 0.1f)[1], 187);
}

TEST(Relief, OnlyByte2Counts) {
    auto pixels = noise(60, 9);
    std::vector<uint8_t> shade(60), again(60);
    ReliefShader shader;
    shader.shade(pixels.data(), 10, 6, -0.1f, false, shade.data());
    for (uint32_t& pixel : pixels) pixel ^= 0xFF00FFFF;
    shader.shade(pixels.data(), 10, 6, -0.1f, false, again.data());
    EXPECT_EQ(shade, again);
}

TEST(Relief, ShadesAreTheSameWithAndWithoutTheTable) {
    const size_t width = 257;
    for (const size_t height : {size_t{3}, ReliefShader::largeFrame / width + 1}) {
        const auto pixels = noise(width * height, 3);
        std::vector<uint8_t> asked(pixels.size()), plain(pixels.size()), rows(pixels.size());
        ReliefShader shader;
        shader.shade(pixels.data(), width, height, -0.1f, true, asked.data());
        shader.shade(pixels.data(), width, height, -0.1f, false, plain.data());
        for (size_t y = 0; y < height; ++y) {
            const uint32_t* row = pixels.data() + y * width;
            scalarViewKernels().shadeRow(-0.1f * -0.25f, row, y > 0 ? row - width : nullptr, width,
                                         rows.data() + y * width);
        }
        EXPECT_EQ(asked, rows);
        EXPECT_EQ(plain, rows);
    }
}

TEST(Relief, TheTableIsBuiltForLargeFramesOrOnRequestAndOnlyWhenTheSlopeChanges) {
    constexpr size_t width = 512, height = ReliefShader::largeFrame / width;
    const std::vector<uint32_t> pixels(width * height);
    std::vector<uint8_t> shade(pixels.size());
    const struct {
        size_t height;
        float slope;
        bool wanted;
        unsigned builds;  // up to then
    } rows[] = {
        {height - 1, -0.1f, false, 0},  // small: the formula
        {height, -0.1f, false, 1},      // 0x20000 pixels are large
        {height, -0.1f, false, 1},      // the same slope again
        {1, 0.1f, true, 2},             // asked for
        {1, -0.1f, false, 2},           // small again
        {1, 0.1f, true, 2},             // the table is still that of 0.1
        {height, -0.1f, false, 3},
    };
    ReliefShader shader;
    for (const auto& row : rows) {
        shader.shade(pixels.data(), width, row.height, row.slope, row.wanted, shade.data());
        EXPECT_EQ(shader.tableBuilds(), viewKernels().shadesFasterThanATable ? 0 : row.builds);
    }
}

TEST(Relief, AnEmptyFrameIsNothingToDo) {
    ReliefShader shader;
    shader.shade(nullptr, 0, 5, -0.1f, true, nullptr);
    shader.shade(nullptr, 5, 0, -0.1f, true, nullptr);
}

TEST(Relief, ASlopeAboveZeroIsTheInvertedView) {
    EXPECT_EQ(reliefViewOf(0.1f), ChannelMode::invertedBump);
    EXPECT_EQ(reliefViewOf(-0.1f), ChannelMode::bump);
    EXPECT_EQ(reliefViewOf(0.0f), ChannelMode::bump);
}

TEST(ReliefView, IsGreyWithoutColourOrStrength) {
    const std::vector<uint8_t> shade = {0, 1, 99, 254, 255};
    const std::vector<uint32_t> grey = {0xFF000000, 0xFF010101, 0xFF636363, 0xFFFEFEFE, 0xFFFFFFFF};
    const std::vector<uint32_t> colour(5, 0x80402010);
    std::vector<uint32_t> view(5);
    for (const int strength : {0, 1, 256}) {
        view.assign(5, 0);
        buildReliefView(shade.data(), nullptr, strength, 5, view.data());
        EXPECT_EQ(view, grey) << strength;
    }
    view.assign(5, 0);
    buildReliefView(shade.data(), colour.data(), 0, 5, view.data());
    EXPECT_EQ(view, grey);
}

TEST(ReliefView, ColoursAreBlendedWithTheShade) {
    const struct {
        int strength;
        uint8_t shade;
        uint32_t colour, view;
    } rows[] = {
        {256, 255, 0xFFFFFFFF, 0xFFFFFFFF},  // 255 x 255 x 655 >> 16 is 649: clamped
        {256, 0, 0xFFFFFFFF, 0xFF000000},
        {256, 99, 0x00FFFFFF, 0xFFFCFCFC},   // 255 x 99 x 655 >> 16 = 252
        {256, 99, 0xFF0080FF, 0xFF007EFC},   // 128: 126
        {256, 100, 0xFFFF0000, 0xFFFE0000},  // 254, one below the clamp
        {128, 99, 0xFF00FF80, 0xFF31AF70},   // F 327: (c x 327 + 32768) x 99 >> 16
        {128, 255, 0xFF000000, 0xFF7F7F7F},
        {1, 99, 0xFFFFFF00, 0xFF636362},  // F 2: (c x 2 + 65280) x 99 >> 16
        {255, 255, 0xFF000001,
         0xFF000003},  // F 652: (652 + 256) x 255 >> 16 = 3, (256 x 255) >> 16 = 0
    };
    for (const auto& row : rows) {
        const std::vector<uint8_t> shade(9, row.shade);
        const std::vector<uint32_t> colour(9, row.colour);
        std::vector<uint32_t> view(9);
        buildReliefView(shade.data(), colour.data(), row.strength, 9, view.data());
        EXPECT_EQ(view, std::vector<uint32_t>(9, row.view))
            << row.strength << " " << int{row.shade} << " " << std::hex << view[0];
    }
}

TEST(ReliefView, EveryStrengthFollowsTheFormula) {
    for (int strength = 1; strength <= 256; ++strength) {
        const int factor = static_cast<int>(strength / (0.6 / std::sqrt(2.36)));
        for (const int s : {0, 1, 50, 99, 180, 255})
            for (const int c : {0, 1, 100, 254, 255}) {
                const auto shade = static_cast<uint8_t>(s);
                const uint32_t colour = c << 16 | c << 8 | c;
                const int blended = strength == 256
                                        ? (c * s * factor) >> 16
                                        : ((c * factor + (256 - strength) * 256) * s) >> 16;
                uint32_t view;
                buildReliefView(&shade, &colour, strength, 1, &view);
                ASSERT_EQ(view, 0xFF000000u | std::min(blended, 255) * 0x010101u) << strength;
            }
    }
}

TEST(ReliefProfile, HasTheColourOfItsView) {
    const std::optional<uint32_t> colours[] = {0x808000, 0x800000, 0x008000,     0x000080,    {},
                                               0x008080, 0x808080, std::nullopt, std::nullopt};
    for (int view = 0; view < 9; ++view)
        EXPECT_EQ(profileColour(ChannelMode{view}), colours[view]) << view;
}

TEST(ReliefProfile, StandsOnItsRowWithAPointForEachPixel) {
    const auto row = heights({0, 255, 51});
    ProfilePoint points[3];
    profileOfRow(row.data(), 3, 16, points);
    EXPECT_EQ(points[0].x, 0);
    EXPECT_EQ(points[0].y, 16);
    EXPECT_EQ(points[1].x, 1);
    EXPECT_FLOAT_EQ(points[1].y, 48);
    EXPECT_EQ(points[2].x, 2);
    EXPECT_FLOAT_EQ(points[2].y, 22.4f);
}

}  // namespace
}  // namespace vistel
