// There are no rings here: sound goes through the sound server (wave_device.cpp).
#include "platform/wave_ring.h"

namespace vistel::platform {

bool prepareWaveRings() { return false; }
WaveRing* openWaveRing(const WaveFormat&, size_t) { return nullptr; }
void closeWaveRing(WaveRing*) {}
bool ringCursors(WaveRing&, RingCursors&) { return false; }
RingLock lockRing(WaveRing&, size_t, size_t, RingRegion&) { return RingLock::failed; }
void unlockRing(WaveRing&, const RingRegion&) {}
bool restoreRing(WaveRing&) { return false; }
bool ringPlays(WaveRing&) { return false; }
bool startRing(WaveRing&) { return false; }
void stopRing(WaveRing&) {}
bool mixerLevels(MixerLevels&) { return false; }
void setMixerVolume(int32_t) {}
void setMixerPan(int32_t) {}
WaveTimer* startWaveTimer(unsigned, unsigned, void (*)(void*), void*) { return nullptr; }
void stopWaveTimer(WaveTimer*) {}

}  // namespace vistel::platform
