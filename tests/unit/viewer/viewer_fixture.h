// A viewer on a headless desktop with frames in memory: what the tests of the loop start from.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "platform/headless/headless.h"
#include "viewer/commands/key_table.h"
#include "viewer/commands/show_frame.h"
#include "viewer/commands/tool_commands.h"
#include "viewer/picture/display_lut.h"
#include "viewer/picture/display_setup.h"
#include "viewer/picture/draw_pass.h"
#include "viewer/playback/frame_display.h"
#include "viewer/show_source.h"
#include "viewer/viewer_loop.h"
#include "viewer/viewer_session.h"
#include "viewer/viewer_state.h"
#include "viewer/window/drawing.h"
#include "viewer/window/front_image.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_events.h"
#include "viewer/window/window_geometry.h"
#include "viewer/window/window_layer.h"

namespace vistel {

// What testFrame gives, in the way of a stored pixel.
inline uint32_t testPixel(int number, int column, int row) {
    return 0xFF000000u | uint32_t(number & 255) << 16 | uint32_t(row & 255) << 8 | (column & 255);
}

// A frame whose pixels tell where they are: red = column, green = row, blue = frame number.
inline FrameStore testFrame(int number, int width, int height) {
    FrameStore frame;
    frame.header.width = frame.width = width;
    frame.header.height = frame.height = height;
    frame.header.flags = imageColour | imageMask;
    EXPECT_TRUE(frame.colour.allocate(width, height) && frame.colour.complete());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            frame.colour.row(y)[x] = testPixel(number, x, y);
        }
    }
    return frame;
}

// A frame with colours, mask and depth that differ from pixel to pixel and from number to number.
inline FrameStore planesFrame(int number, int width, int height,
                              uint32_t flags = imageColour | imageMask | imageZ) {
    FrameStore frame;
    frame.header.width = frame.width = width;
    frame.header.height = frame.height = height;
    frame.header.flags = flags;
    uint32_t noise = 12345u + uint32_t(number) * 7919;
    const auto next = [&] { return noise = noise * 1664525u + 1013904223u; };
    if (!(flags & imageBlack) || flags & imageMask) {
        EXPECT_TRUE(frame.colour.allocate(width, height) && frame.colour.complete());
        for (int i = 0; i < width * height; ++i)
            frame.colour.data()[i] = (next() >> 16) | (next() >> 16) << 16;
    }
    if (flags & imageZ) {
        EXPECT_TRUE(frame.z.allocate(width, height) && frame.z.complete());
        for (int i = 0; i < width * height; ++i) frame.z.data()[i] = float(next() >> 16) / 16;
    }
    return frame;
}

// Keys that are held.
enum Held : unsigned { none = 0, shift = 1, control = 2, alt = 4 };

inline Modifiers modifiersOf(unsigned held, bool right = false) {
    Modifiers modifiers;
    (right ? modifiers.rightShift : modifiers.leftShift) = held & shift;
    (right ? modifiers.rightControl : modifiers.leftControl) = held & control;
    (right ? modifiers.rightAlt : modifiers.leftAlt) = held & alt;
    return modifiers;
}

class ViewerTest : public testing::Test {
 protected:
    void SetUp() override {
        platform::headless::reset();
        viewerState = ViewerState{};
        viewerState.fileName = "shot";
        windowContext() = WindowContext{};
        windowContext().controlBarWanted = false;  // windows of the picture's own size
        startDisplayLut(viewerState);
        installViewer(viewerState);
    }

    // Frames first to last are in memory and the first is on display.
    void showAnimation(int first, int last, int step = 1, int width = 64, int height = 48) {
        viewerState.animation = first != last;
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = first;
        viewerState.lastFrame = viewerState.playLast = last;
        viewerState.frameStep = step;
        for (int frame = first; frame <= last; frame += step) {
            keepFrame(viewerState, frame, testFrame(frame, width, height));
        }
        beginDisplay(viewerState, *viewerState.slots.find(first));
    }

    // A single image on display.
    void showImage(FrameStore&& frame) {
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = 1;
        viewerState.lastFrame = viewerState.playLast = viewerState.frameStep = 1;
        beginDisplay(viewerState, keepFrame(viewerState, 1, std::move(frame)));
        windowContext().drawPass = [] { drawPass(viewerState); };
        redraw();
    }

    // Reads the current frame as stepping to it does; the code.
    static int readCurrent(FrameStore& frame) {
        return readFrame(viewerState, viewerState.currentFrame, readTerms(viewerState), frame).code;
    }

    // The command of a pressed key. Whether the picture is to be drawn again.
    static bool key(int32_t code, unsigned held = none) {
        return runKey(viewerState, {.code = code, .modifiers = modifiersOf(held)});
    }
    static bool released(int32_t code, unsigned held = none) {
        return runKey(viewerState, {.code = code, .value = 0, .modifiers = modifiersOf(held)});
    }

    static const platform::headless::Image& redraw() {
        drawPass(viewerState);
        swapDrawing();
        return platform::headless::visibleImage();
    }

    // Whether a window pixel lies under the label of a single image without margin: on a band that
    // is as wide as the text needs.
    static bool underLabel(int x, int y) {
        const auto& texts = platform::headless::visibleTexts();
        if (texts.empty() || viewerState.animation || viewerState.layout.marginY) return false;
        const int left = texts[0].x - 4, right = texts[0].x + textWidth(texts[0].text) + 4;
        return y >= platform::headless::visibleImage().height - 17 && x >= left && x < right;
    }

    // Draws the picture and compares each of its window pixels with the colour (24 bits, red
    // lowest) of the image pixel that it shows.
    static void expectPicture(const std::function<uint32_t(int column, int row)>& expected) {
        const platform::headless::Image& image = redraw();
        const PictureLayout& layout = viewerState.layout;
        ASSERT_GT(layout.visibleWidth, 0);
        ASSERT_GT(layout.visibleHeight, 0);
        for (int y = 0; y < layout.visibleHeight; ++y) {
            for (int x = 0; x < layout.visibleWidth; ++x) {
                if (underLabel(layout.marginX + x, layout.marginY + y)) continue;
                const int column = int(layout.panX) + x / layout.zoom;
                const int row = int(layout.panY) + y / layout.zoom;
                ASSERT_EQ(image.at(layout.marginX + x, layout.marginY + y) & 0xFFFFFF,
                          expected(column, row) & 0xFFFFFF)
                    << "window pixel " << x << "," << y << ", image pixel " << column << "," << row;
            }
        }
    }
    static uint32_t stored(int column, int row) {
        return viewerState.shown->colour.row(size_t(row))[column];
    }

    // Texts on screen.
    static std::string shownText(size_t index = 0) {
        const auto& texts = platform::headless::visibleTexts();
        return index < texts.size() ? texts[index].text : "";
    }

    // Frame number that the visible picture was made for, read from its pixel (0, 0).
    static int visibleFrame() {
        const PictureLayout& layout = viewerState.layout;
        return platform::headless::visibleImage().at(layout.marginX, layout.marginY) >> 16 & 255;
    }
};

}  // namespace vistel
