// Fits the window to the picture: which buffer is shown, margins, window rectangle.
#pragma once

#include <string>

#include "iff/frame_store.h"
#include "viewer/picture/picture.h"

namespace vistel {

// Largest picture that frames are fitted into by the loader.
DisplayFit currentDisplayFit(const Picture& picture);

enum class Refit {
    keepWindow,  // a frame change: the window stays as it is, a frame of another size is centred
    fitWindow,   // first frame, reload, full screen or full resolution: margins and window are made
                 // anew
};

// Shows `frame`. Creates the window on the first call of a source; a failure ends the program with
// status 1.
void setUpDisplay(Picture& picture, FrameStore& frame, Refit refit);

// Opens (or re-opens) the viewer window with its menu and drawing surface. When the system refuses,
// says so and ends the program with status 1.
void openWindowOrExit(Picture& picture, const std::string& title);

// Margins and visible size of a picture of width x height image pixels, from the start-up zoom (in
// full screen the zoom in force), full screen, animation and half-height mode. Changes the layout
// only: the image place in the middle of what shows stays there.
void layOutPicture(Picture& picture, int width, int height);

// The same in the window as it is: for a frame of another size, or after the zoom has changed. Only
// in full screen and in half-height mode the margins are those of a window made for the picture.
void layOutInWindow(Picture& picture, int width, int height);

// Visible size of the picture in the window as it is.
void measureVisibleArea(PictureLayout& layout);

// Shows the first frame of a source, with the start-up zoom and, where it is larger than the
// window, its middle. In sequence mode zoom and place stay as they were from file to file.
void beginDisplay(Picture& picture, FrameStore& frame);

}  // namespace vistel
