// DirectSound, found when sound is first played.
#include "platform/wave_ring.h"

#include "platform/win32/windows_api.h"

#include <mmsystem.h>

#include <dsound.h>

namespace vistel::platform {

struct WaveRing {
    IDirectSoundBuffer* buffer = nullptr;
};

struct WaveTimer {
    UINT id = 0;
    void (*call)(void* user) = nullptr;
    void* user = nullptr;
};

namespace {

IDirectSound* sound = nullptr;
IDirectSoundBuffer* mixer = nullptr;

IDirectSound* createSound() {
    using Create = HRESULT(WINAPI*)(const GUID*, IDirectSound**, IUnknown*);
    const HMODULE library = LoadLibraryA("dsound.dll");
    if (!library) return nullptr;
    const auto create = reinterpret_cast<Create>(
        reinterpret_cast<void (*)()>(GetProcAddress(library, "DirectSoundCreate")));
    IDirectSound* created = nullptr;
    return create && create(nullptr, &created, nullptr) == DS_OK ? created : nullptr;
}

// The program's own window, or the desktop's before there is one.
HWND mainWindow() {
    HWND found = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM result) -> BOOL {
            if (!IsWindowVisible(window)) return TRUE;
            *reinterpret_cast<HWND*>(result) = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found ? found : GetDesktopWindow();
}

WAVEFORMATEX formatOf(const WaveFormat& format) {
    WAVEFORMATEX wave{};
    wave.wFormatTag = WAVE_FORMAT_PCM;
    wave.nChannels = static_cast<WORD>(format.channels);
    wave.nSamplesPerSec = static_cast<DWORD>(format.rate);
    wave.nBlockAlign = static_cast<WORD>(format.frameBytes());
    wave.nAvgBytesPerSec = wave.nSamplesPerSec * wave.nBlockAlign;
    wave.wBitsPerSample = static_cast<WORD>(format.bits);
    return wave;
}

bool isEmulated() {
    DSCAPS capabilities{};
    capabilities.dwSize = sizeof capabilities;
    return sound->GetCaps(&capabilities) != DS_OK || (capabilities.dwFlags & DSCAPS_EMULDRIVER);
}

bool startMixer() {
    DSBUFFERDESC description{};
    description.dwSize = sizeof description;
    description.dwFlags = DSBCAPS_PRIMARYBUFFER | DSBCAPS_CTRLVOLUME | DSBCAPS_CTRLPAN;
    if (sound->CreateSoundBuffer(&description, &mixer, nullptr) != DS_OK) return false;
    const WAVEFORMATEX format = formatOf({2, 44100, 16});
    return mixer->SetFormat(&format) == DS_OK && mixer->Play(0, 0, DSBPLAY_LOOPING) == DS_OK;
}

void releaseAll() {
    if (mixer) mixer->Release();
    if (sound) sound->Release();
    mixer = nullptr;
    sound = nullptr;
}

void CALLBACK timerSays(UINT, UINT, DWORD_PTR user, DWORD_PTR, DWORD_PTR) {
    const auto& timer = *reinterpret_cast<WaveTimer*>(user);
    timer.call(timer.user);
}

}  // namespace

bool prepareWaveRings() {
    if (mixer) return true;
    sound = createSound();
    if (sound && sound->SetCooperativeLevel(mainWindow(), DSSCL_PRIORITY) == DS_OK &&
        !isEmulated() && startMixer())
        return true;
    releaseAll();
    return false;
}

WaveRing* openWaveRing(const WaveFormat& format, size_t bytes) {
    WAVEFORMATEX wave = formatOf(format);
    DSBUFFERDESC description{};
    description.dwSize = sizeof description;
    description.dwFlags = DSBCAPS_GETCURRENTPOSITION2 | DSBCAPS_GLOBALFOCUS;
    description.dwBufferBytes = static_cast<DWORD>(bytes);
    description.lpwfxFormat = &wave;
    IDirectSoundBuffer* buffer = nullptr;
    if (sound->CreateSoundBuffer(&description, &buffer, nullptr) != DS_OK) return nullptr;
    return new WaveRing{buffer};
}

void closeWaveRing(WaveRing* ring) {
    ring->buffer->Release();
    delete ring;
}

bool ringCursors(WaveRing& ring, RingCursors& cursors) {
    DWORD play = 0, write = 0;
    if (ring.buffer->GetCurrentPosition(&play, &write) != DS_OK) return false;
    cursors = {play, write};
    return true;
}

RingLock lockRing(WaveRing& ring, size_t offset, size_t bytes, RingRegion& region) {
    void *first = nullptr, *second = nullptr;
    DWORD firstBytes = 0, secondBytes = 0;
    const HRESULT result = ring.buffer->Lock(static_cast<DWORD>(offset), static_cast<DWORD>(bytes),
                                             &first, &firstBytes, &second, &secondBytes, 0);
    if (result == DSERR_BUFFERLOST) return RingLock::lost;
    if (result != DS_OK) return RingLock::failed;
    region.parts[0] = {static_cast<uint8_t*>(first), firstBytes};
    region.parts[1] = {static_cast<uint8_t*>(second), secondBytes};
    return RingLock::locked;
}

void unlockRing(WaveRing& ring, const RingRegion& region) {
    ring.buffer->Unlock(region.parts[0].bytes, static_cast<DWORD>(region.parts[0].size),
                        region.parts[1].bytes, static_cast<DWORD>(region.parts[1].size));
}

bool restoreRing(WaveRing& ring) { return ring.buffer->Restore() == DS_OK; }

bool ringPlays(WaveRing& ring) {
    DWORD status = 0;
    return ring.buffer->GetStatus(&status) == DS_OK && (status & DSBSTATUS_PLAYING);
}

bool startRing(WaveRing& ring) { return ring.buffer->Play(0, 0, DSBPLAY_LOOPING) == DS_OK; }

void stopRing(WaveRing& ring) { ring.buffer->Stop(); }

bool mixerLevels(MixerLevels& levels) {
    LONG volume = 0, pan = 0;
    if (!mixer || mixer->GetVolume(&volume) != DS_OK || mixer->GetPan(&pan) != DS_OK) return false;
    levels = {static_cast<int32_t>(volume), static_cast<int32_t>(pan)};
    return true;
}

void setMixerVolume(int32_t volume) {
    if (mixer) mixer->SetVolume(volume);
}

void setMixerPan(int32_t pan) {
    if (mixer) mixer->SetPan(pan);
}

WaveTimer* startWaveTimer(unsigned milliseconds, unsigned resolution, void (*call)(void* user),
                          void* user) {
    auto* timer = new WaveTimer{0, call, user};
    timer->id =
        timeSetEvent(milliseconds, resolution, timerSays, reinterpret_cast<DWORD_PTR>(timer),
                     TIME_PERIODIC | TIME_KILL_SYNCHRONOUS);
    if (timer->id != 0) return timer;
    delete timer;
    return nullptr;
}

void stopWaveTimer(WaveTimer* timer) {
    timeKillEvent(timer->id);
    delete timer;
}

}  // namespace vistel::platform
