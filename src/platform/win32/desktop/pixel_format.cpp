#include "platform/win32/desktop/pixel_format.h"

#include <initializer_list>

#include "platform/pixel_format_score.h"

#ifndef PFD_SUPPORT_COMPOSITION
#define PFD_SUPPORT_COMPOSITION 0x00008000
#endif

namespace vistel::platform {

namespace {

using Descriptor = PIXELFORMATDESCRIPTOR;
static_assert(sizeof(Descriptor) == 40);

// The first system that composes the windows on the screen; formats say from then on whether they
// can be composed.
constexpr DWORD composingVersion = 6;

DWORD queryMajorVersion() {
    OSVERSIONINFOEXA version = {};
    static_assert(sizeof(OSVERSIONINFOEXA) == 156 && sizeof(OSVERSIONINFOA) == 148);
    for (const DWORD size : {sizeof(OSVERSIONINFOEXA), sizeof(OSVERSIONINFOA)}) {
        version.dwOSVersionInfoSize = size;
        if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version))) {
            return version.dwMajorVersion;
        }
    }
    return 0;
}

DWORD majorVersion() {
    static const DWORD version = queryMajorVersion();
    return version;
}

Descriptor requestedFormat() {
    Descriptor request = {};
    request.nSize = sizeof request;
    request.nVersion = 1;
    request.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    if (majorVersion() >= composingVersion) request.dwFlags |= PFD_SUPPORT_COMPOSITION;
    request.iPixelType = PFD_TYPE_RGBA;
    request.cColorBits = 24;
    request.bReserved = 1;  // one overlay plane
    return request;
}

PixelFormatTraits traitsOf(const Descriptor& format) {
    PixelFormatTraits traits;
    traits.drawToWindow = format.dwFlags & PFD_DRAW_TO_WINDOW;
    traits.drawToBitmap = format.dwFlags & PFD_DRAW_TO_BITMAP;
    traits.doubleBuffer = format.dwFlags & PFD_DOUBLEBUFFER;
    traits.stereo = format.dwFlags & PFD_STEREO;
    traits.generic = format.dwFlags & PFD_GENERIC_FORMAT;
    traits.genericAccelerated = format.dwFlags & PFD_GENERIC_ACCELERATED;
    traits.swapLayerBuffers = format.dwFlags & PFD_SWAP_LAYER_BUFFERS;
    traits.pixelType = format.iPixelType;
    traits.overlayPlanes = format.bReserved & 15;
    traits.underlayPlanes = format.bReserved >> 4;
    traits.colourBits = format.cColorBits;
    traits.accumulationBits = format.cAccumBits;
    traits.depthBits = format.cDepthBits;
    traits.alphaBits = format.cAlphaBits;
    traits.stencilBits = format.cStencilBits;
    return traits;
}

bool isCandidate(const Descriptor& request, const Descriptor& format) {
    if (!(format.dwFlags & PFD_SUPPORT_OPENGL)) return false;
    if (majorVersion() >= composingVersion && !(format.dwFlags & PFD_SUPPORT_COMPOSITION)) {
        return false;
    }
    return pixelFormatScore(traitsOf(request), traitsOf(format)) != 0;
}

// The last candidate of the device's list, not the best: the score only rejects. 0 when the request
// asks for no layers or nothing fits.
int lastFormatWithLayers(HDC device, const Descriptor& request) {
    if (request.bReserved == 0) return 0;
    Descriptor format;
    const int count = DescribePixelFormat(device, 1, sizeof format, &format);
    int found = 0;
    for (int index = 1; index <= count; ++index) {
        if (!DescribePixelFormat(device, index, sizeof format, &format)) continue;
        if (!isCandidate(request, format)) continue;
        // Some drivers set a layer up only when they have been asked about it.
        LAYERPLANEDESCRIPTOR layer = {};
        wglDescribeLayerPlane(device, index, 1, sizeof layer, &layer);
        found = index;
    }
    return found;
}

}  // namespace

bool setPixelFormat(HDC device) {
    Descriptor request = requestedFormat();
    int format = lastFormatWithLayers(device, request);
    if (format == 0) format = ChoosePixelFormat(device, &request);
    if (format == 0) return false;
    DescribePixelFormat(device, format, sizeof request, &request);
    return SetPixelFormat(device, format, &request) != 0;
}

}  // namespace vistel::platform
