#include "viewer/picture/image_point.h"

#include <cmath>

#include "viewer/window/window_context.h"

namespace vistel {

// The picture is drawn from a whole column and row on, however far a drag has moved it.
ImagePoint pointUnderCursor(const PictureLayout& layout) {
    const WindowPoint cursor = cursorInWindow();
    const auto along = [&](int place, int margin, float pan) {
        return int(pan) + double(place - margin) / layout.zoom;
    };
    return {along(cursor.x, layout.marginX, layout.panX),
            along(cursor.y, layout.marginY, layout.panY)};
}

// The cursor's row counts from 1.
WindowPoint cursorInWindow() {
    const Cursor& cursor = windowContext().cursor;
    return {cursor.x, cursor.y - 1};
}

WindowPoint windowPoint(const PictureLayout& layout, const ImagePoint& point) {
    const auto along = [&](double place, int margin, float pan) {
        return margin + static_cast<int>(std::lround((place - int(pan)) * layout.zoom));
    };
    return {along(point.x, layout.marginX, layout.panX),
            along(point.y, layout.marginY, layout.panY)};
}

}  // namespace vistel
