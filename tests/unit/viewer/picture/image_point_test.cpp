#include "viewer/picture/image_point.h"

#include "viewer/viewer_fixture.h"

namespace vistel {

class ImagePointTest : public ViewerTest {
 protected:
    static PictureLayout layout(int zoom, float panX, float panY) {
        PictureLayout layout;
        layout.zoom = zoom;
        layout.marginX = 20;
        layout.marginY = 30;
        layout.panX = panX;
        layout.panY = panY;
        return layout;
    }
};

TEST_F(ImagePointTest, IsThatUnderTheCursor) {
    struct Row {
        int zoom;
        float panX, panY;
        int x, y;  // window pixel
        double imageX, imageY;
    };
    const Row rows[] = {
        {1, 0, 0, 20, 30, 0, 0},
        {1, 0, 0, 25, 37, 5, 7},
        {1, 7, 9, 25, 37, 12, 16},
        {1, 7.9f, 9.9f, 25, 37, 12, 16},  // drawn from whole pixels on
        {4, 7, 9, 25, 37, 8.25, 10.75},
        {4, 0, 0, 19, 0, -0.25, -7.5},
        {1024, 65000, 65000, 1043, 31, 65000 + 1023.0 / 1024, 65000 + 1.0 / 1024},
    };
    for (const Row& row : rows) {
        windowContext().cursor = {row.x, row.y + 1, true};
        const PictureLayout shown = layout(row.zoom, row.panX, row.panY);
        const ImagePoint point = pointUnderCursor(shown);
        EXPECT_EQ(point.x, row.imageX);
        EXPECT_EQ(point.y, row.imageY);
        EXPECT_EQ(windowPoint(shown, point).x, row.x);
        EXPECT_EQ(windowPoint(shown, point).y, row.y);
    }
}

// A pick is kept in single precision.
TEST_F(ImagePointTest, IsAtItsWindowPixelAgain) {
    for (int zoom = 1; zoom <= 64; ++zoom) {
        const PictureLayout shown = layout(zoom, 4000.5f, 3000.25f);
        for (int x = -50; x < 2000; x += 7) {
            windowContext().cursor = {x, x + 1, true};
            const ImagePoint point = pointUnderCursor(shown);
            const WindowPoint back = windowPoint(shown, {float(point.x), float(point.y)});
            ASSERT_EQ(back.x, x) << zoom;
            ASSERT_EQ(back.y, x) << zoom;
        }
    }
}

}  // namespace vistel
