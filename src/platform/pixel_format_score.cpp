#include "platform/pixel_format_score.h"

namespace vistel::platform {

namespace {

constexpr int merit = 32768;

using Traits = PixelFormatTraits;

bool usable(const Traits& request, const Traits& format) {
    if (format.drawToWindow != request.drawToWindow) return false;
    if (format.drawToBitmap != request.drawToBitmap) return false;
    if (request.overlayPlanes && !format.overlayPlanes) return false;
    if (request.underlayPlanes && !format.underlayPlanes) return false;
    if (format.pixelType != request.pixelType) return false;
    if (request.doubleBuffer && !format.doubleBuffer) return false;
    if (request.depthBits && !format.depthBits) return false;
    return !(format.colourBits < request.colourBits && format.colourBits < 15);
}

int bufferScore(const Traits& request, const Traits& format) {
    if (request.doubleBuffer != format.doubleBuffer) return 0;
    return request.stereo != format.stereo ? merit : 2 * merit;
}

int driverScore(const Traits& request, const Traits& format) {
    int score = 0;
    if (!format.generic) score += merit;
    if (format.genericAccelerated) score += merit;
    if (request.swapLayerBuffers && format.swapLayerBuffers) score += merit;
    return score;
}

int colourScore(int asked, int present) {
    if (asked == 0) return 0;
    if (present < asked) return merit;
    return present == asked ? 3 * merit : 2 * merit;
}

int depthScore(int asked, int present) {
    if (asked == 0) return 0;
    if (present >= asked) return 2 * merit;
    return present >= 17 ? merit : 0;
}

int accumulationScore(int asked, int present) {
    if (asked == 0) return 0;
    return present < asked ? present : merit;
}

int alphaScore(int asked, int present) {
    if (asked == 0) return 0;
    if (present >= asked) return 2 * merit;
    return present > 0 ? merit : 0;
}

// A stencil buffer that is too small counts as many points as were asked for.
int stencilScore(int asked, int present) {
    if (asked == 0) return 0;
    return present < asked ? asked : 2 * merit;
}

// Planes beyond those asked for cost 4, 8, 16 ... points.
int layerScore(int asked, int present) {
    if (asked == 0 || present < asked) return 0;
    return present == asked ? merit : merit - (1 << (present - asked + 1));
}

}  // namespace

int pixelFormatScore(const Traits& request, const Traits& format) {
    if (!usable(request, format)) return 0;
    return bufferScore(request, format) + driverScore(request, format) +
           colourScore(request.colourBits, format.colourBits) +
           accumulationScore(request.accumulationBits, format.accumulationBits) +
           depthScore(request.depthBits, format.depthBits) +
           alphaScore(request.alphaBits, format.alphaBits) +
           stencilScore(request.stencilBits, format.stencilBits) +
           layerScore(request.overlayPlanes, format.overlayPlanes) +
           layerScore(request.underlayPlanes, format.underlayPlanes);
}

}  // namespace vistel::platform
