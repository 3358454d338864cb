// Wave output. The device is opened on a thread of its own: a sound service that takes its time
// must not hold up the pictures. Blocks that come before it is open are kept until it is.
#include "platform/wave_device.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/win32/windows_api.h"

#include <mmsystem.h>

namespace vistel::platform {

namespace {

// Shared with the thread that opens the device, which may outlive whoever wanted it.
struct Output {
    enum class State { opening, open, gone };

    std::mutex mutex;
    std::condition_variable changed;
    State state = State::opening;
    bool abandoned = false;
    HWAVEOUT handle = nullptr;
    std::vector<WaveBlock*> waiting;
    WaveBlockDone done = nullptr;
    void* user = nullptr;
};

struct Header {
    WAVEHDR header{};
};

// On a thread of the system's, where no function of wave output may be called.
void CALLBACK deviceSays(HWAVEOUT, UINT message, DWORD_PTR user, DWORD_PTR header, DWORD_PTR) {
    if (message != WOM_DONE) return;
    const auto& output = *reinterpret_cast<Output*>(user);
    auto* block = reinterpret_cast<WaveBlock*>(reinterpret_cast<WAVEHDR*>(header)->dwUser);
    output.done(output.user, *block);
}

bool write(const Output& output, WaveBlock& block) {
    const auto header = std::make_shared<Header>();
    header->header.lpData = reinterpret_cast<LPSTR>(block.samples.data());
    header->header.dwBufferLength = static_cast<DWORD>(block.samples.size());
    header->header.dwUser = reinterpret_cast<DWORD_PTR>(&block);
    if (waveOutPrepareHeader(output.handle, &header->header, sizeof(WAVEHDR)) != MMSYSERR_NOERROR)
        return false;
    block.system = header;
    if (waveOutWrite(output.handle, &header->header, sizeof(WAVEHDR)) == MMSYSERR_NOERROR)
        return true;
    waveOutUnprepareHeader(output.handle, &header->header, sizeof(WAVEHDR));
    block.system.reset();
    return false;
}

// What waited is written, or given back when that is not possible.
void writeWaiting(Output& output) {
    for (WaveBlock* block : std::exchange(output.waiting, {}))
        if (output.state != Output::State::open || !write(output, *block))
            output.done(output.user, *block);
}

void open(const std::shared_ptr<Output>& output, WAVEFORMATEX format) {
    HWAVEOUT handle = nullptr;
    const bool opened =
        waveOutOpen(&handle, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(deviceSays),
                    reinterpret_cast<DWORD_PTR>(output.get()),
                    CALLBACK_FUNCTION) == MMSYSERR_NOERROR;
    const std::lock_guard guard(output->mutex);
    output->handle = handle;
    output->state = opened ? Output::State::open : Output::State::gone;
    if (opened && output->abandoned) waveOutClose(handle);
    writeWaiting(*output);
    output->changed.notify_all();
}

}  // namespace

struct WaveDevice {
    std::shared_ptr<Output> output;
};

WaveDevice* openWaveDevice(const WaveFormat& format, WaveBlockDone done, void* user) try {
    WAVEFORMATEX wanted{};
    wanted.wFormatTag = WAVE_FORMAT_PCM;
    wanted.nChannels = static_cast<WORD>(format.channels);
    wanted.nSamplesPerSec = static_cast<DWORD>(format.rate);
    wanted.nBlockAlign = static_cast<WORD>(format.frameBytes());
    wanted.nAvgBytesPerSec = wanted.nSamplesPerSec * wanted.nBlockAlign;
    wanted.wBitsPerSample = static_cast<WORD>(format.bits);

    const auto output = std::make_shared<Output>();
    output->done = done;
    output->user = user;
    std::thread([output, wanted] { open(output, wanted); }).detach();
    std::unique_lock lock(output->mutex);
    constexpr std::chrono::milliseconds patience(80);
    output->changed.wait_for(lock, patience,
                             [&] { return output->state != Output::State::opening; });
    return output->state == Output::State::gone ? nullptr : new WaveDevice{output};
} catch (const std::system_error&) {
    return nullptr;
}

bool playWaveBlock(WaveDevice& device, WaveBlock& block) {
    Output& output = *device.output;
    const std::lock_guard guard(output.mutex);
    if (output.state == Output::State::gone) return false;
    if (output.state == Output::State::open) return write(output, block);
    output.waiting.push_back(&block);
    return true;
}

bool waveDeviceHasGone(WaveDevice& device) {
    const std::lock_guard guard(device.output->mutex);
    return device.output->state == Output::State::gone;
}

void takeWaveBlockBack(WaveDevice& device, WaveBlock& block) {
    if (!block.system) return;
    auto* header = static_cast<Header*>(block.system.get());
    waveOutUnprepareHeader(device.output->handle, &header->header, sizeof(WAVEHDR));
    block.system.reset();
}

int64_t waveBytesInHardware(WaveDevice&) { return 0; }

void resetWaveDevice(WaveDevice& device) {
    Output& output = *device.output;
    const std::lock_guard guard(output.mutex);
    for (WaveBlock* block : std::exchange(output.waiting, {})) output.done(output.user, *block);
    if (output.state == Output::State::open) waveOutReset(output.handle);
}

void closeWaveDevice(WaveDevice* device) {
    Output& output = *device->output;
    {
        const std::lock_guard guard(output.mutex);
        output.abandoned = true;
        if (output.state == Output::State::open) waveOutClose(output.handle);
    }
    delete device;
}

}  // namespace vistel::platform
