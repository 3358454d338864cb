#include "analysis/missing_planes.h"

#include "iff/image_header.h"

namespace vistel {

Message missingPlaneMessage(ChannelMode view, const LoadedPlanes& loaded) {
    const auto has = [&](ImageFlag flag) { return (loaded.headerFlags & flag) != 0; };
    if (view == ChannelMode::matte)
        return loaded.colour && has(imageMask) ? Message::none : Message::rVTNoMask;
    if (view != ChannelMode::zBuffer)
        return loaded.colour && !has(imageBlack) ? Message::none : Message::rVTNoColor;
    if (loaded.depth) return Message::none;
    return has(imageZ) ? Message::rVTZNotLoaded : Message::rVTNoZBuffer;
}

}  // namespace vistel
