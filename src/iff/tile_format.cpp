#include "iff/tile_format.h"

namespace vistel {

int TileFormat::indexOf(FileChannel channel) const {
    for (int i = 0; i < channelCount; ++i)
        if (channels[i] == channel) return i;
    return -1;
}

static void addChannel(TileFormat& format, FileChannel channel) {
    format.channels[format.channelCount++] = static_cast<uint8_t>(channel);
}

TileFormat colourTileFormat(const ImageHeader& header) {
    TileFormat format;
    format.valueBytes = header.wideChannels != 0 ? 2 : 1;
    format.compression = header.compression;
    if (header.has(imageMask)) addChannel(format, channelMask);
    if (header.has(imageBlack)) return format;
    if (header.has(imageColour)) addChannel(format, channelBlue);
    addChannel(format, channelGreen);
    if (header.has(imageColour)) addChannel(format, channelRed);
    return format;
}

TileFormat depthTileFormat() {
    TileFormat format;
    format.channelCount = 1;
    format.valueBytes = 4;
    return format;
}

}  // namespace vistel
