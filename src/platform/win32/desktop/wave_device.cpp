// Wave output. The device is opened on a thread of its own: a sound service that does not answer
// must not hold up the pictures.
#include "platform/wave_device.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/win32/windows_api.h"

#include <mmsystem.h>

namespace vistel::platform {

struct WaveDevice {
    HWAVEOUT output = nullptr;
    WaveBlockDone done = nullptr;
    void* user = nullptr;
};

namespace {

struct Header {
    WAVEHDR header{};
};

// On a thread of the system's, where no function of wave output may be called.
void CALLBACK deviceSays(HWAVEOUT, UINT message, DWORD_PTR user, DWORD_PTR header, DWORD_PTR) {
    if (message != WOM_DONE) return;
    const auto& device = *reinterpret_cast<WaveDevice*>(user);
    auto* block = reinterpret_cast<WaveBlock*>(reinterpret_cast<WAVEHDR*>(header)->dwUser);
    device.done(device.user, *block);
}

struct Opening {
    std::mutex mutex;
    std::condition_variable changed;
    std::unique_ptr<WaveDevice> device;
    bool ended = false, abandoned = false;
};

void open(const std::shared_ptr<Opening>& opening, WAVEFORMATEX format) {
    WaveDevice& device = *opening->device;
    const bool opened =
        waveOutOpen(&device.output, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(deviceSays),
                    reinterpret_cast<DWORD_PTR>(&device), CALLBACK_FUNCTION) == MMSYSERR_NOERROR;
    const std::lock_guard guard(opening->mutex);
    if (!opened) device.output = nullptr;
    if (opened && opening->abandoned) waveOutClose(device.output);
    opening->ended = true;
    opening->changed.notify_all();
}

}  // namespace

WaveDevice* openWaveDevice(const WaveFormat& format, WaveBlockDone done, void* user) try {
    WAVEFORMATEX wanted{};
    wanted.wFormatTag = WAVE_FORMAT_PCM;
    wanted.nChannels = static_cast<WORD>(format.channels);
    wanted.nSamplesPerSec = static_cast<DWORD>(format.rate);
    wanted.nBlockAlign = static_cast<WORD>(format.frameBytes());
    wanted.nAvgBytesPerSec = wanted.nSamplesPerSec * wanted.nBlockAlign;
    wanted.wBitsPerSample = static_cast<WORD>(format.bits);

    const auto opening = std::make_shared<Opening>();
    opening->device = std::make_unique<WaveDevice>();
    opening->device->done = done;
    opening->device->user = user;
    std::thread([opening, wanted] { open(opening, wanted); }).detach();

    std::unique_lock lock(opening->mutex);
    constexpr std::chrono::milliseconds patience(90);
    opening->changed.wait_for(lock, patience, [&] { return opening->ended; });
    opening->abandoned = !opening->ended;
    if (opening->abandoned || !opening->device->output) return nullptr;
    return opening->device.release();
} catch (const std::system_error&) {
    return nullptr;
}

bool playWaveBlock(WaveDevice& device, WaveBlock& block) {
    const auto header = std::make_shared<Header>();
    header->header.lpData = reinterpret_cast<LPSTR>(block.samples.data());
    header->header.dwBufferLength = static_cast<DWORD>(block.samples.size());
    header->header.dwUser = reinterpret_cast<DWORD_PTR>(&block);
    block.system = header;
    if (waveOutPrepareHeader(device.output, &header->header, sizeof(WAVEHDR)) != MMSYSERR_NOERROR)
        return false;
    if (waveOutWrite(device.output, &header->header, sizeof(WAVEHDR)) == MMSYSERR_NOERROR)
        return true;
    waveOutUnprepareHeader(device.output, &header->header, sizeof(WAVEHDR));
    return false;
}

void takeWaveBlockBack(WaveDevice& device, WaveBlock& block) {
    auto* header = static_cast<Header*>(block.system.get());
    waveOutUnprepareHeader(device.output, &header->header, sizeof(WAVEHDR));
}

int64_t waveBytesInHardware(WaveDevice&) { return 0; }

void resetWaveDevice(WaveDevice& device) { waveOutReset(device.output); }

void closeWaveDevice(WaveDevice* device) {
    waveOutClose(device->output);
    delete device;
}

}  // namespace vistel::platform
