#include "viewer/picture/empty_window.h"

#include <string_view>

#include "host/messages.h"
#include "platform/surface.h"
#include "platform/text.h"
#include "viewer/picture/draw_pass.h"
#include "viewer/window/drawing.h"
#include "viewer/window/window_context.h"
#include "viewer/window/window_geometry.h"

namespace vistel {

void drawEmptyWindow() {
    platform::Window* const window = windowContext().window;
    if (!platform::surfaceExists(window)) return;
    int width, height;
    clientSize(width, height);
    platform::setScissorTest(window, false);
    setColourPacked(bandColour);
    clearDrawing();
    setColourIndex(3);
    const Tstring message = messageText(Message::rVTEmptyWindow);
    std::string_view rest = message;
    const int lineRows = platform::scaledForText(20);
    int y = height / 2 + 2 * lineRows;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        drawText((width - textWidth(line)) / 2, y, line);
        y -= lineRows;
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
}

}  // namespace vistel
