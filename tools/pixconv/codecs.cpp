#include "codecs.h"

namespace vistel {

static constexpr const Codec* codecs[] = {
#include "image_codecs.inc"
};

std::span<const Codec* const> allCodecs() { return codecs; }

const Codec* codecOfKey(std::string_view key) {
    for (const Codec* codec : codecs)
        if (codec->key == key) return codec;
    return nullptr;
}

}  // namespace vistel
