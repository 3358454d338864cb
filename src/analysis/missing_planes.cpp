#include "analysis/missing_planes.h"

#include "iff/image_header.h"

namespace vistel {

const char* missingPlaneMessage(PlaneRequest request, const LoadedPlanes& loaded) {
    const auto has = [&](ImageFlag flag) { return (loaded.headerFlags & flag) != 0; };
    switch (request) {
        case PlaneRequest::colour:
            return loaded.colour && !has(imageBlack) ? nullptr : "s_VistelStrings.rVTNoColor";
        case PlaneRequest::mask:
            return loaded.colour && has(imageMask) ? nullptr : "s_VistelStrings.rVTNoMask";
        case PlaneRequest::depth:
            break;
    }
    if (loaded.depth) return nullptr;
    return has(imageZ) ? "s_VistelStrings.rVTZNotLoaded" : "s_VistelStrings.rVTNoZBuffer";
}

}  // namespace vistel
