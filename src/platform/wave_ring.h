// A device that plays a ring of memory round and round, into which the samples to come are written
// (DirectSound). win32 and headless implement it; on linux there is none: prepareWaveRings says no.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/wave_device.h"

namespace vistel::platform {

// Makes the system's mixer ready, once; false where there is none, or only an emulated one. Only
// then the other functions are called.
[[nodiscard]] bool prepareWaveRings();

struct WaveRing;

// Null when there is no device for this format. The ring is silent and stopped.
[[nodiscard]] WaveRing* openWaveRing(const WaveFormat& format, size_t bytes);
void closeWaveRing(WaveRing* ring);

// Offsets in the ring: what is heard now, and from where on it may be written.
struct RingCursors {
    size_t play = 0, write = 0;
};
[[nodiscard]] bool ringCursors(WaveRing& ring, RingCursors& cursors);

// The memory behind an offset, in two parts where it passes the ring's end.
struct RingPart {
    uint8_t* bytes = nullptr;
    size_t size = 0;
};
struct RingRegion {
    RingPart parts[2];
};
enum class RingLock { locked, lost, failed };  // lost: to be restored first
RingLock lockRing(WaveRing& ring, size_t offset, size_t bytes, RingRegion& region);
void unlockRing(WaveRing& ring, const RingRegion& region);
[[nodiscard]] bool restoreRing(WaveRing& ring);

bool ringPlays(WaveRing& ring);
[[nodiscard]] bool startRing(WaveRing& ring);
void stopRing(WaveRing& ring);

// Of the mixer, in hundredths of a decibel: volume from -10000 to 0, pan from -10000 (left only) to
// 10000. False without a mixer.
struct MixerLevels {
    int32_t volume = 0, pan = 0;
};
[[nodiscard]] bool mixerLevels(MixerLevels& levels);
void setMixerVolume(int32_t volume);
void setMixerPan(int32_t pan);

// Calls back again and again, on a thread of the system's; after the stop it is called no more.
// Null when there is none.
struct WaveTimer;
[[nodiscard]] WaveTimer* startWaveTimer(unsigned milliseconds, unsigned resolution,
                                        void (*call)(void* user), void* user);
void stopWaveTimer(WaveTimer* timer);

}  // namespace vistel::platform
