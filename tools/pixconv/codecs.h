// The file types of the converter.
#pragma once

#include <span>
#include <string_view>

#include "codec.h"

namespace vistel {

extern const Codec tavoCodec;  // our own frame files
extern const Codec pngCodec, jpegCodec, tiffCodec, exrCodec, webpCodec;
extern const Codec tgaCodec, bmpCodec, psdCodec, gifCodec, hdrCodec;
extern const Codec pnmCodec, pfmCodec, sgiCodec, dpxCodec, cineonCodec;

// In the order of the image type table; each has a row there (host/image_plugins.h).
std::span<const Codec* const> allCodecs();

// Null when there is no such type.
const Codec* codecOfKey(std::string_view key);

}  // namespace vistel
