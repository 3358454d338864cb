// Where the cursor is in the picture on screen, and where a point of the picture is in the window.
#pragma once

#include "viewer/picture/picture.h"

namespace vistel {

// Image pixels from the lower left corner of the picture; outside of it also negative or larger
// than it.
struct ImagePoint {
    double x = 0, y = 0;
};
ImagePoint pointUnderCursor(const PictureLayout& layout);

// Window pixels from the lower left corner of the client area.
struct WindowPoint {
    int x = 0, y = 0;
};
WindowPoint cursorInWindow();
WindowPoint windowPoint(const PictureLayout& layout, const ImagePoint& point);

}  // namespace vistel
