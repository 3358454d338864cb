#include "iff/image_description.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "host/byte_order.h"
#include "host/messages.h"
#include "iff/iff_context.h"

namespace vistel {

static const char* colourWord(const ImageHeader& header) {
    if (header.has(imageBlack)) return "";
    return header.has(imageColour) ? " Color" : " B&W";
}

static const char* compressionWord(uint32_t compression) {
    static constexpr const char* words[] = {"", " RLE", " QRL", " QR4"};
    return compression < std::size(words) ? words[compression] : " Badly encoded";
}

static const char* depthWord(const ImageHeader& header) {
    if (header.has(imageColourMap)) return "Color map";
    if (header.has(imageTwelveBit)) return "12 bits";
    return header.wideChannels != 0 ? "16 bits" : "8 bits";
}

static const char* maskWord(const ImageHeader& header) {
    if (header.has(imageBlack)) return "";
    return header.has(imageMask) ? "with " : "without ";
}

static std::string tileCountText(uint16_t tiles) {
    if (tiles == 0) return "";
    return formatPrintf(", %d tile%s", tiles, tiles > 1 ? "s" : "");
}

std::string describeImage(const ImageHeader& header) {
    return formatPrintf("%dx%d%s%s, %s %sMask%s%s%s%s", static_cast<int>(header.width),
                        static_cast<int>(header.height), colourWord(header),
                        compressionWord(header.compression), depthWord(header), maskWord(header),
                        header.has(imageZ) ? ", ZBuf" : "", header.has(imageA) ? ", ABuf" : "",
                        header.has(imageMap) ? ", Map" : "", tileCountText(header.tiles).c_str());
}

std::string describeTile(const TileRect& rect) {
    return formatPrintf("x1: %4d  y1: %4d  x2: %4d  y2: %4d", rect.x1, rect.y1, rect.x2, rect.y2);
}

static std::string idText(int32_t id) {
    uint8_t bytes[4];
    writeBig32(bytes, static_cast<uint32_t>(id));
    return std::string(bytes, bytes + 4);
}

static std::string sizeText(uint32_t size) {
    if (iffSizeKnown(size)) return formatPrintf(" %8d ", static_cast<int>(size));
    return messageText(size == iffSizePatched ? Message::rVTNotYetWritten : Message::rVTUnknown);
}

std::string listingLine(uint32_t depth, int32_t id, uint32_t size, int32_t groupType) {
    std::string line = std::string(depth, '.') + idText(id) + sizeText(size);
    if (groupType != 0) line += idText(groupType);
    return line;
}

std::string contentLine(const std::string& text) {
    return text.empty() ? "\n" : "    " + printable(text.substr(0, 255)) + "\n";
}

SoundFormat decodeSoundFormat(const uint8_t* body, size_t size) {
    SoundFormat format;
    format.channels = readBig16(body);
    format.sampleFrames = readBig32(body + 2);
    format.sampleBits = readBig16(body + 6);
    format.rate = floatFromExtended(body + 8);
    format.usable = size == SoundFormat::shortBody;
    if (size < SoundFormat::typedBody) return format;
    format.usable = readBig32(body + 18) == static_cast<uint32_t>(iffId("NONE"));
    if (size < SoundFormat::longBody) return format;
    const size_t length = std::min<size_t>(body[22], size - SoundFormat::longBody);
    format.compressionName.assign(reinterpret_cast<const char*>(body + 23), length);
    return format;
}

std::string describeSound(const SoundFormat& format) {
    const char* layout = format.channels == 1   ? "Mono"
                         : format.channels == 2 ? "Stereo"
                                                : "Multi-Channels";
    return formatPrintf("%d Samples, %d Bits %s, %.1fKHz %4s",
                        static_cast<int>(format.sampleFrames), format.sampleBits, layout,
                        static_cast<double>(format.rate) / 1000, format.compressionName.c_str());
}

float floatFromExtended(const uint8_t* bytes) {
    const bool negative = (bytes[0] & 0x80) != 0;
    const int exponent = readBig16(bytes) & 0x7FFF;
    const uint32_t high = readBig32(bytes + 2), low = readBig32(bytes + 6);
    float value;
    if (exponent == 0x7FFF)
        value = std::bit_cast<float>(0x7149F2CAu);
    else
        value = static_cast<float>(std::ldexp(static_cast<double>(low), exponent - 16446) +
                                   std::ldexp(static_cast<double>(high), exponent - 16414));
    return negative ? -value : value;
}

}  // namespace vistel
