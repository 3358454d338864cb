#include "iff/image_header.h"

#include "host/byte_order.h"
#include "iff/result_codes.h"

namespace vistel {

int ImageHeader::bytesPerPixel() const {
    const int colours = has(imageBlack) ? 0 : has(imageColour) ? 3 : 1;
    const int channels = colours + (has(imageMask) ? 1 : 0);
    return wideChannels != 0 ? 2 * channels : channels;
}

int decodeImageHeader(const uint8_t* bytes, ImageHeader& header) {
    ImageHeader read;
    read.width = readBig32(bytes);
    read.height = readBig32(bytes + 4);
    read.pairFirst = readBig16(bytes + 8);
    read.pairSecond = readBig16(bytes + 10);
    read.flags = readBig32(bytes + 12);
    read.wideChannels = readBig16(bytes + 16);
    read.tiles = readBig16(bytes + 18);
    read.compression = readBig32(bytes + 20);
    if (read.width == 0 || read.height == 0) return iffBadImageHeader;
    header = read;
    return iffOk;
}

void encodeImageHeader(const ImageHeader& header, uint8_t* bytes) {
    writeBig32(bytes, header.width);
    writeBig32(bytes + 4, header.height);
    writeBig16(bytes + 8, header.pairFirst);
    writeBig16(bytes + 10, header.pairSecond);
    writeBig32(bytes + 12, header.flags);
    writeBig16(bytes + 16, header.wideChannels);
    writeBig16(bytes + 18, header.tiles);
    writeBig32(bytes + 20, header.compression);
}

}  // namespace vistel
