#include "analysis/missing_planes.h"

#include "iff/image_header.h"

namespace vistel {

Message missingPlaneMessage(PlaneRequest request, const LoadedPlanes& loaded) {
    const auto has = [&](ImageFlag flag) { return (loaded.headerFlags & flag) != 0; };
    switch (request) {
        case PlaneRequest::colour:
            return loaded.colour && !has(imageBlack) ? Message::none : Message::rVTNoColor;
        case PlaneRequest::mask:
            return loaded.colour && has(imageMask) ? Message::none : Message::rVTNoMask;
        case PlaneRequest::depth:
            break;
    }
    if (loaded.depth) return Message::none;
    return has(imageZ) ? Message::rVTZNotLoaded : Message::rVTNoZBuffer;
}

}  // namespace vistel
