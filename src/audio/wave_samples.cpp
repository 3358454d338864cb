#include "audio/wave_samples.h"

#include <cstring>

namespace vistel {

WaveConversion waveConversion(const SoundTrack& track) {
    WaveConversion conversion;
    conversion.from24To16 = track.sampleBytes() == 3;
    conversion.sourceBytes = conversion.from24To16 ? 4 : track.sampleBytes();
    const int32_t bits = conversion.from24To16 ? 16 : track.sampleBytes() * 8;
    conversion.format = {track.channels(), track.rate(), bits};
    conversion.toUnsigned = bits == 8 && track.sampleFormat() != afUnsigned;
    conversion.silence = bits == 8 ? 128 : 0;
    return conversion;
}

void convertSamples(const WaveConversion& conversion, const void* source, size_t samples,
                    uint8_t* device) {
    const auto* bytes = static_cast<const uint8_t*>(source);
    if (conversion.toUnsigned) {
        for (size_t i = 0; i < samples; ++i) device[i] = static_cast<uint8_t>(bytes[i] - 128);
    } else if (conversion.from24To16) {
        for (size_t i = 0; i < samples; ++i) {
            int32_t wide;
            std::memcpy(&wide, bytes + 4 * i, sizeof wide);
            const auto narrow = static_cast<int16_t>(wide >> 8);
            std::memcpy(device + 2 * i, &narrow, sizeof narrow);
        }
    } else if (samples > 0) {  // of none there may be no place
        std::memcpy(device, bytes, samples * static_cast<size_t>(conversion.sourceBytes));
    }
}

}  // namespace vistel
