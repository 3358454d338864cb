// Which rows of the window the bands of label, status line and messages cover, and where their text
// stands.
#include "viewer/viewer_fixture.h"

namespace vistel {

namespace headless = platform::headless;

namespace {
constexpr uint32_t band = 0xFF202020, black = 0xFF000000;
}

class BandRowsTest : public ViewerTest {
 protected:
    // Whether a row of the picture's area is band from one end to the other, text apart.
    static bool bandRow(int y) {
        const headless::Image& image = headless::visibleImage();
        return image.at(0, y) == band && image.at(image.width - 1, y) == band &&
               image.at(60, y) == band;
    }
    // Rows of the picture area that are band, from and to.
    static void expectBand(int first, int last) {
        for (int y = first; y <= last; ++y) EXPECT_TRUE(bandRow(y)) << y;
    }
    static void expectPictureRow(int y) { EXPECT_FALSE(bandRow(y)) << y; }
    static int clientHeight() {
        int width, height;
        clientSize(width, height);
        return height;
    }
    static const headless::DrawnText& text(size_t index) {
        static const headless::DrawnText missing;
        const auto& texts = headless::visibleTexts();
        EXPECT_LT(index, texts.size());
        return index < texts.size() ? texts[index] : missing;
    }
    // An animation whose picture is 400 columns wide.
    void showWide(int height, bool borderless) {
        viewerState.noWinBorder = borderless;
        showAnimation(1, 2, 1, 400, height);
        windowContext().drawPass = [] { drawPass(viewerState); };
    }
};

// --- label ---------------------------------------------------------------------------------------

TEST_F(BandRowsTest, TheLabelOfALowImageLiesOverItsUpperRows) {
    showImage(testFrame(1, 400, 130));  // margins of 7 rows
    redraw();
    ASSERT_EQ(viewerState.layout.marginY, 7);
    expectBand(137, 143);
    expectPictureRow(136);
    key('R');
    redraw();
    expectBand(127, 143);
    expectPictureRow(126);
    expectPictureRow(7);
    expectBand(0, 6);
    EXPECT_EQ(text(0).y, 129);
    EXPECT_EQ(text(0).x, (400 - 3 * 6) / 2);
}

TEST_F(BandRowsTest, TheLabelOfAnImageUnderTheControlBarStandsLower) {
    windowContext().controlBarWanted = true;
    showImage(testFrame(1, 400, 130));
    key('R');
    redraw();
    ASSERT_EQ(clientHeight(), 144);
    EXPECT_EQ(text(0).y, 144 + 29 - 40);
    expectBand(144 + 29 - 42, 143);
    expectPictureRow(144 + 29 - 43);
}

TEST_F(BandRowsTest, TheLabelOfAnAnimationCoversSixteenRowsAtTheFoot) {
    struct Row {
        int height;
        bool borderless;
        int marginY;
        int firstPictureRow;  // from below
    };
    const Row rows[] = {{232, true, 4, 16},   // the band lies over the picture's lower rows
                        {208, true, 16, 16},  // just as high as the margin
                        {206, true, 17, 17},  // lower than the margin
                        {232, false, 20, 20},
                        {300, false, 20, 20}};
    for (const Row& row : rows) {
        SetUp();
        showWide(row.height, row.borderless);
        redraw();
        ASSERT_EQ(viewerState.layout.marginY, row.marginY);
        expectBand(0, row.marginY - 1);
        expectPictureRow(row.marginY);
        key('R');
        redraw();
        expectBand(0, row.firstPictureRow - 1);
        expectPictureRow(row.firstPictureRow);
        EXPECT_EQ(text(0).text, "Red");
        EXPECT_EQ(text(0).y, 5);
    }
}

// Four columns of band on either side of the text.
TEST_F(BandRowsTest, WithoutAMarginTheTextsHaveBandsOfTheirOwnWidth) {
    const auto expectBandRound = [](const headless::DrawnText& shown, int first, int last) {
        const headless::Image& image = headless::visibleImage();
        const int left = shown.x - 4, right = shown.x + int(shown.text.size()) * 6 + 3;
        EXPECT_EQ((left + right + 1) / 2, image.width / 2);
        for (int y = first; y <= last; ++y) {
            EXPECT_EQ(image.at(left, y), band) << y;
            EXPECT_EQ(image.at(right, y), band) << y;
            EXPECT_NE(image.at(left - 1, y), band) << y;
            EXPECT_NE(image.at(right + 1, y), band) << y;
        }
        if (first > 0) {
            EXPECT_NE(image.at(left, first - 1), band);
        }
        EXPECT_EQ(image.at(shown.x, shown.y), 0xFF0000FFu);  // red
    };
    showWide(240, true);
    key('R');
    redraw();
    for (const int y : {0, 15, 223, 239}) expectPictureRow(y);
    ASSERT_EQ(headless::visibleTexts().size(), 2u);
    EXPECT_EQ(text(0).text, "Red");
    EXPECT_EQ(text(0).y, 5);
    expectBandRound(text(0), 0, 15);
    EXPECT_EQ(text(1).y, 240 - 15);
    expectBandRound(text(1), 223, 239);
    SetUp();
    showImage(testFrame(1, 400, 200));
    key('G');
    redraw();
    ASSERT_EQ(headless::visibleTexts().size(), 1u);
    EXPECT_EQ(text(0).text, "Green");
    expectBandRound(text(0), 183, 199);
}

TEST_F(BandRowsTest, OnADenseScreenTheBandsGrowWithTheTexts) {
    headless::setTextScale(2);
    showWide(300, false);
    key('R');
    redraw();
    ASSERT_EQ(viewerState.layout.marginY, 40);
    EXPECT_EQ(clientHeight(), 380);  // the picture has the pixels that it has
    EXPECT_EQ(text(0).y, 10);
    EXPECT_EQ(text(1).y, 380 - 30);
    expectBand(0, 39);
    expectBand(340, 379);
    expectPictureRow(40);
    expectPictureRow(339);
    SetUp();
    headless::setTextScale(2);
    showImage(planesFrame(1, 400, 200, imageColour));
    key('A');
    const size_t message = headless::visibleTexts().size() - 1;
    EXPECT_EQ(text(message).x, 12);
    EXPECT_EQ(text(message).y, 12);
    EXPECT_EQ(headless::visibleImage().at(399, 39), black);
    EXPECT_NE(headless::visibleImage().at(399, 40), black);
}

// --- status line ---------------------------------------------------------------------------------

TEST_F(BandRowsTest, TheStatusLineHasSeventeenRowsAndUnderTheControlBarThirtyNine) {
    struct Row {
        bool bar;
        int bandRows, baseline;
    };
    for (const Row& row : {Row{false, 17, 15}, Row{true, 39 - 29, 37 - 29}}) {
        SetUp();
        windowContext().controlBarWanted = row.bar;
        showWide(232, true);
        ASSERT_EQ(viewerState.layout.marginY, 4);
        redraw();
        const int height = clientHeight();
        ASSERT_EQ(height, 240);
        expectBand(height - row.bandRows, height - 1);
        expectPictureRow(height - row.bandRows - 1);
        EXPECT_EQ(text(0).y, height - row.baseline);
        EXPECT_EQ(text(0).x, (400 - int(text(0).text.size()) * 6) / 2);
        EXPECT_EQ(headless::visibleImage().at(text(0).x, text(0).y), 0xFF0000FFu);  // red
    }
}

// --- messages ------------------------------------------------------------------------------------

TEST_F(BandRowsTest, TheMessageOfAMissingPlaneIsAsWideAsThePictureOrItsText) {
    struct Row {
        const char* name;
        int width, height, zoom, left, columns;
    };
    const Row rows[] = {{"filling the window", 400, 200, 1, 0, 400},
                        {"margins", 200, 100, 1, 60, 200},
                        {"narrow", 40, 100, 1, 85, 150},  // 23 characters and 12 columns
                        {"magnified", 100, 50, 2, 60, 200}};
    for (const Row& row : rows) {
        SetUp();
        viewerState.currentZoom = row.zoom;
        showImage(planesFrame(1, row.width, row.height, imageColour));
        const headless::Image before = headless::visibleImage();
        EXPECT_FALSE(key('A')) << row.name;
        const headless::Image& image = headless::visibleImage();
        const headless::DrawnText& message = text(0);
        EXPECT_EQ(message.text, "This image has no mask.") << row.name;
        EXPECT_EQ(message.x, row.left + 6) << row.name;
        EXPECT_EQ(message.y, 6) << row.name;
        const int textEnd = message.x + int(message.text.size()) * 6;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const bool ink = x >= message.x && x < textEnd && y >= 6 && y < 14;
                const bool inside = y < 20 && x >= row.left && x < row.left + row.columns;
                const uint32_t expected = ink ? 0xFFFFFFFFu : inside ? black : before.at(x, y);
                ASSERT_EQ(image.at(x, y), expected) << row.name << " " << x << "," << y;
            }
        }
        restoreFrontImage();
        EXPECT_EQ(headless::visibleImage().pixels, before.pixels) << row.name;
    }
}

}  // namespace vistel
