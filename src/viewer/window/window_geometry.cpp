#include "viewer/window/window_geometry.h"

#include "platform/text.h"
#include "viewer/window/window_context.h"

namespace vistel {

int controlBarRows() {
    return windowContext().controlBarShown ? platform::scaledForText(CONTROL_BAR_HEIGHT) : 0;
}

void clientSize(int& width, int& height) {
    platform::clientArea(windowContext().window, width, height);
    height -= controlBarRows();
}

platform::PixelRect clientOnScreen() {
    int left, top, width, height;
    platform::clientScreenPosition(windowContext().window, left, top);
    platform::clientArea(windowContext().window, width, height);
    return {left, top, left + width, top + height};
}

void clientOrigin(int& x, int& y) {
    const platform::PixelRect client = clientOnScreen();
    x = client.left;
    y = platform::screenSize().height - client.bottom + controlBarRows();
}

int screenMetric(int which) {
    switch (which) {
        case 1:
            return platform::screenSize().width;
        case 2:
            return platform::screenSize().height;
        case 3:
        case 4:
            return 24;
        default:
            return 0;
    }
}

}  // namespace vistel
