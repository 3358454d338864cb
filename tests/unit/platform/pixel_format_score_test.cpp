#include "platform/pixel_format_score.h"

#include <gtest/gtest.h>

using vistel::platform::pixelFormatScore;
using Traits = vistel::platform::PixelFormatTraits;

namespace {

constexpr int merit = 32768;

// What the window asks for: double-buffered 24-bit colour with one overlay plane.
Traits windowRequest() {
    Traits request;
    request.drawToWindow = true;
    request.doubleBuffer = true;
    request.overlayPlanes = 1;
    request.colourBits = 24;
    return request;
}

// A hardware format that is exactly that: 65536 for the buffers, 32768 for the driver, 65536 +
// 32768 for the colour, 32768 for the overlay.
constexpr int exactScore = 7 * merit;

// The score when `change` is made to the request and to the matching format.
template <typename Change>
int score(Change change) {
    Traits request = windowRequest(), format = windowRequest();
    change(request, format);
    return pixelFormatScore(request, format);
}

}  // namespace

TEST(PixelFormatScore, OfTheFormatThatWasAskedFor) {
    EXPECT_EQ(pixelFormatScore(windowRequest(), windowRequest()), exactScore);
}

TEST(PixelFormatScore, RejectsAnotherKindOfTarget) {
    EXPECT_EQ(score([](Traits&, Traits& f) { f.drawToWindow = false; }), 0);
    EXPECT_EQ(score([](Traits&, Traits& f) { f.drawToBitmap = true; }), 0);
    EXPECT_EQ(score([](Traits&, Traits& f) { f.pixelType = 1; }), 0);
}

TEST(PixelFormatScore, RejectsAFormatWithoutTheLayersAskedFor) {
    EXPECT_EQ(score([](Traits&, Traits& f) { f.overlayPlanes = 0; }), 0);
    EXPECT_EQ(score([](Traits& r, Traits&) { r.underlayPlanes = 1; }), 0);
}

TEST(PixelFormatScore, CountsTheBuffers) {
    EXPECT_EQ(score([](Traits&, Traits& f) { f.doubleBuffer = false; }), 0);
    EXPECT_EQ(score([](Traits&, Traits& f) { f.stereo = true; }), exactScore - merit);
    EXPECT_EQ(score([](Traits& r, Traits&) { r.stereo = true; }), exactScore - merit);
    EXPECT_EQ(score([](Traits& r, Traits&) { r.doubleBuffer = false; }), exactScore - 2 * merit);
    EXPECT_EQ(score([](Traits& r, Traits& f) { r.doubleBuffer = f.doubleBuffer = false; }),
              exactScore);
}

TEST(PixelFormatScore, CountsTheDriver) {
    EXPECT_EQ(score([](Traits&, Traits& f) { f.generic = true; }), exactScore - merit);
    EXPECT_EQ(score([](Traits&, Traits& f) { f.generic = f.genericAccelerated = true; }),
              exactScore);
    EXPECT_EQ(score([](Traits&, Traits& f) { f.swapLayerBuffers = true; }), exactScore);
    EXPECT_EQ(score([](Traits& r, Traits& f) { r.swapLayerBuffers = f.swapLayerBuffers = true; }),
              exactScore + merit);
}

TEST(PixelFormatScore, CountsBits) {
    struct Row {
        int Traits::*bits;
        int asked, present;
        int points;  // above those of the exact format without this demand; -1 = rejected
    };
    // Colour counts 3 already in the exact format.
    const Row rows[] = {
        {&Traits::colourBits, 24, 24, 0},
        {&Traits::colourBits, 24, 32, -merit},
        {&Traits::colourBits, 24, 16, -2 * merit},
        {&Traits::colourBits, 24, 15, -2 * merit},
        {&Traits::colourBits, 24, 14, -1},
        {&Traits::colourBits, 0, 24, -3 * merit},
        {&Traits::colourBits, 8, 8, 0},
        {&Traits::accumulationBits, 0, 64, 0},
        {&Traits::accumulationBits, 64, 16, 16},
        {&Traits::accumulationBits, 64, 0, 0},
        {&Traits::accumulationBits, 64, 64, merit},
        {&Traits::accumulationBits, 16, 64, merit},
        {&Traits::depthBits, 0, 24, 0},
        {&Traits::depthBits, 24, 24, 2 * merit},
        {&Traits::depthBits, 24, 32, 2 * merit},
        {&Traits::depthBits, 24, 17, merit},
        {&Traits::depthBits, 24, 16, 0},
        {&Traits::depthBits, 24, 0, -1},
        {&Traits::alphaBits, 0, 8, 0},
        {&Traits::alphaBits, 8, 8, 2 * merit},
        {&Traits::alphaBits, 8, 16, 2 * merit},
        {&Traits::alphaBits, 8, 1, merit},
        {&Traits::alphaBits, 8, 0, 0},
        {&Traits::stencilBits, 0, 8, 0},
        {&Traits::stencilBits, 8, 8, 2 * merit},
        {&Traits::stencilBits, 8, 4, 8},
        {&Traits::stencilBits, 8, 0, 8},
    };
    for (const Row& row : rows) {
        const int expected = row.points == -1 ? 0 : exactScore + row.points;
        EXPECT_EQ(score([&](Traits& r, Traits& f) {
                      r.*row.bits = row.asked;
                      f.*row.bits = row.present;
                  }),
                  expected)
            << &row - rows << ": asked " << row.asked << ", present " << row.present;
    }
}

TEST(PixelFormatScore, CountsLayerPlanes) {
    struct Row {
        int asked, present, points;
    };
    const Row rows[] = {
        {1, 1, merit}, {1, 2, merit - 4}, {1, 3, merit - 8}, {1, 15, merit - 32768},
        {3, 2, 0},     {3, 3, merit},     {3, 5, merit - 8},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(score([&](Traits& r, Traits& f) {
                      r.overlayPlanes = row.asked;
                      f.overlayPlanes = row.present;
                  }),
                  exactScore - merit + row.points)
            << row.asked << " overlays asked, " << row.present << " present";
        EXPECT_EQ(score([&](Traits& r, Traits& f) {
                      r.underlayPlanes = row.asked;
                      f.underlayPlanes = row.present;
                  }),
                  exactScore + row.points)
            << row.asked << " underlays asked, " << row.present << " present";
    }
}
