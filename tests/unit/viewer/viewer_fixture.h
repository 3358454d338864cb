// A viewer on a headless desktop with frames in memory: what the tests of the loop start from.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "app/viewer_state.h"
#include "platform/headless/headless.h"
#include "viewer/display_setup.h"
#include "viewer/frame_display.h"
#include "viewer/playback_clock.h"
#include "viewer/viewer_loop.h"
#include "viewer/viewer_session.h"
#include "viewer/window_layer.h"

namespace vistel {

// A frame whose pixels tell where they are: red = column, green = row, blue = frame number.
inline FrameStore testFrame(int number, int width, int height) {
    FrameStore frame;
    frame.header.width = frame.width = width;
    frame.header.height = frame.height = height;
    frame.header.flags = imageColour | imageMask;
    EXPECT_TRUE(frame.colour.allocate(width, height) && frame.colour.complete());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            frame.colour.row(y)[x] =
                0xFF000000u | uint32_t(number & 255) << 16 | uint32_t(y & 255) << 8 | (x & 255);
        }
    }
    return frame;
}

class ViewerTest : public testing::Test {
 protected:
    void SetUp() override {
        platform::headless::reset();
        viewerState = ViewerState{};
        viewerState.fileName = "shot";
        viewerSession() = ViewerSession{};
        windowContext().~WindowContext();
        new (&windowContext()) WindowContext{};
    }

    // Frames first to last are in memory and the first is on display.
    void showAnimation(int first, int last, int step = 1, int width = 64, int height = 48) {
        viewerState.animation = first != last;
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = first;
        viewerState.lastFrame = viewerState.playLast = last;
        viewerState.frameStep = step;
        for (int frame = first; frame <= last; frame += step) {
            keepFrame(frame, testFrame(frame, width, height));
        }
        setUpDisplay(*viewerSession().slots.find(first), Refit::fitWindow);
    }

    // Frame number that the visible picture was made for, read from its pixel (0, 0).
    static int visibleFrame() {
        const PictureLayout& layout = viewerSession().layout;
        return platform::headless::visibleImage().at(layout.marginX, layout.marginY) >> 16 & 255;
    }
};

}  // namespace vistel
