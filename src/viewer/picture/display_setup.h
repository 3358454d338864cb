// Fits the window to the picture: which buffer is shown, margins, window rectangle.
#pragma once

#include <string>

#include "iff/frame_store.h"
#include "viewer/picture/picture.h"

namespace vistel {

// Largest picture that frames are fitted into by the loader.
DisplayFit currentDisplayFit(const ShownPicture& picture);

enum class Refit {
    growWindow,  // a frame change: the window grows for a frame larger than any before, and stays
                 // as it is for the others, which are centred in it
    fitWindow,   // first frame, reload, full screen or full resolution: margins and window are made
                 // anew
};

// Shows `frame`. Creates the window on the first call of a source; a failure ends the program with
// status 1. The window is made for the largest frame that the source has shown.
void setUpDisplay(ShownPicture& picture, FrameStore& frame, Refit refit);

// Frames have other sizes from now on: the window is made for the next one that is shown, however
// large those before it were.
void forgetLargestFrame(PictureLayout& layout);

// Opens (or re-opens) the viewer window with its menu and drawing surface. When the system refuses,
// says so and ends the program with status 1.
void openWindowOrExit(ShownPicture& picture, const std::string& title);

// Margins and visible size, window pixels, of a picture in a window that is made for it.
struct Surround {
    int marginX = 0, marginY = 0;
    int visibleWidth = 0, visibleHeight = 0;
};
// Of width x height image pixels at a zoom: depends on full screen, animation and half-height mode.
Surround surroundOf(const ShownPicture& picture, int width, int height, int zoom);

// Lays a picture of width x height image pixels out in the window as it is: for another frame, or
// after the zoom has changed. In full screen and in half-height mode the margins are those of a
// window made for the picture. Changes the layout only: the image place in the middle of what shows
// stays there.
void layOutInWindow(ShownPicture& picture, int width, int height);

// Visible size of the picture in the window as it is.
void measureVisibleArea(PictureLayout& layout);

// Shows the first frame of a source, with the start-up zoom and, where it is larger than the
// window, its middle. In sequence mode zoom and place stay as they were from file to file.
void beginDisplay(ShownPicture& picture, FrameStore& frame);

}  // namespace vistel
