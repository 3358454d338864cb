#include "analysis/missing_planes.h"

#include "iff/image_header.h"

namespace vistel {

const char* missingPlaneMessage(ChannelMode view, const LoadedPlanes& loaded) {
    const auto has = [&](ImageFlag flag) { return (loaded.headerFlags & flag) != 0; };
    if (view == ChannelMode::matte)
        return loaded.colour && has(imageMask) ? nullptr : "s_VistelStrings.rVTNoMask";
    if (view != ChannelMode::zBuffer)
        return loaded.colour && !has(imageBlack) ? nullptr : "s_VistelStrings.rVTNoColor";
    if (loaded.depth) return nullptr;
    return has(imageZ) ? "s_VistelStrings.rVTZNotLoaded" : "s_VistelStrings.rVTNoZBuffer";
}

}  // namespace vistel
