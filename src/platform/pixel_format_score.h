// How well one of a device's pixel formats serves a request. Shared code, for the
// systems that let us choose (win32).
#pragma once

namespace vistel::platform {

// The properties that count, for a format and for a request alike.
struct PixelFormatTraits {
    bool drawToWindow = false, drawToBitmap = false;
    bool doubleBuffer = false, stereo = false;
    bool generic = false, genericAccelerated = false;  // software; software with hardware help
    bool swapLayerBuffers = false;
    int pixelType = 0;  // 0 RGBA, 1 colour index
    int overlayPlanes = 0, underlayPlanes = 0;
    int colourBits = 0, accumulationBits = 0, depthBits = 0, alphaBits = 0, stencilBits = 0;
};

// Above 0, larger is better; 0 rejects the format.
int pixelFormatScore(const PixelFormatTraits& request, const PixelFormatTraits& format);

}  // namespace vistel::platform
