// A stream of the sound server. What it has taken is not what was heard: the stream's own time
// tells how much was, and a thread looks at it every few milliseconds to tell which blocks are
// done. Blocks that come while the server still connects are kept until it has.
#include "platform/wave_device.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/linux/desktop/pulse_library.h"

namespace vistel::platform {

using std::chrono::milliseconds;

struct WaveDevice {
    enum class State { connecting, playing, gone };

    const PulseLibrary* pulse = nullptr;
    WaveFormat format;
    WaveBlockDone done = nullptr;
    void* user = nullptr;

    pa_threaded_mainloop* loop = nullptr;
    pa_context* context = nullptr;
    pa_stream* stream = nullptr;

    std::mutex mutex;  // is taken inside the loop's lock, never around it
    std::condition_variable changed;
    State state = State::connecting;
    struct Queued {
        WaveBlock* block;
        uint64_t end;  // of its last byte, among all that were written
    };
    std::deque<Queued> unwritten, written;
    uint64_t bytesWritten = 0;
    std::chrono::steady_clock::time_point started;  // when it was last written to with nothing left
    uint64_t bytesBeforeStart = 0;
    bool ending = false;
    std::thread watcher;
};

namespace {

class LoopLock {
 public:
    explicit LoopLock(WaveDevice& device) : device_(device) {
        device_.pulse->threaded_mainloop_lock(device_.loop);
    }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;
    ~LoopLock() { device_.pulse->threaded_mainloop_unlock(device_.loop); }

 private:
    WaveDevice& device_;
};

void enter(WaveDevice& device, WaveDevice::State state) {
    {
        const std::lock_guard guard(device.mutex);
        if (device.state == WaveDevice::State::gone) return;
        device.state = state;
    }
    device.changed.notify_all();
}

// --- on the server's thread, under the loop's lock -----------------------------------------------

void streamChanged(pa_stream* stream, void* user) {
    auto& device = *static_cast<WaveDevice*>(user);
    const pa_stream_state_t state = device.pulse->stream_get_state(stream);
    if (state == PA_STREAM_READY) enter(device, WaveDevice::State::playing);
    if (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED)
        enter(device, WaveDevice::State::gone);
}

bool openStream(WaveDevice& device) {
    const PulseLibrary& pulse = *device.pulse;
    pa_sample_spec spec{};
    spec.format = device.format.bits == 8 ? PA_SAMPLE_U8 : PA_SAMPLE_S16NE;
    spec.rate = static_cast<uint32_t>(device.format.rate);
    spec.channels = static_cast<uint8_t>(device.format.channels);
    device.stream = pulse.stream_new(device.context, "sound track", &spec, nullptr);
    if (!device.stream) return false;
    pulse.stream_set_state_callback(device.stream, streamChanged, &device);
    // Short enough to be in step with pictures; what is there is played, however little it is.
    // (With nothing to wait for, the stream's time would run on while there is nothing to play.)
    constexpr uint32_t bufferedMilliseconds = 50, any = UINT32_MAX;
    const auto bytes = static_cast<uint32_t>(
        int64_t{device.format.rate} * device.format.frameBytes() * bufferedMilliseconds / 1000);
    const auto frame = static_cast<uint32_t>(device.format.frameBytes());
    const pa_buffer_attr attributes{any, bytes, frame, any, any};
    constexpr auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_ADJUST_LATENCY);
    return pulse.stream_connect_playback(device.stream, nullptr, &attributes, flags, nullptr,
                                         nullptr) == 0;
}

void contextChanged(pa_context* context, void* user) {
    auto& device = *static_cast<WaveDevice*>(user);
    const pa_context_state_t state = device.pulse->context_get_state(context);
    if (state == PA_CONTEXT_FAILED || state == PA_CONTEXT_TERMINATED ||
        (state == PA_CONTEXT_READY && !openStream(device)))
        enter(device, WaveDevice::State::gone);
}

// --- the watcher ---------------------------------------------------------------------------------

void writeQueued(WaveDevice& device) {
    const LoopLock loop(device);
    const std::lock_guard guard(device.mutex);
    if (device.state != WaveDevice::State::playing) return;
    if (device.written.empty()) {
        device.started = std::chrono::steady_clock::now();
        device.bytesBeforeStart = device.bytesWritten;
    }
    for (; !device.unwritten.empty(); device.unwritten.pop_front()) {
        WaveBlock& block = *device.unwritten.front().block;
        if (device.pulse->stream_write(device.stream, block.samples.data(), block.samples.size(),
                                       nullptr, 0, PA_SEEK_RELATIVE) != 0)
            device.state = WaveDevice::State::gone;
        device.bytesWritten += block.samples.size();
        device.written.push_back({&block, device.bytesWritten});
    }
}

uint64_t bytesOf(const WaveDevice& device, pa_usec_t time) {
    return static_cast<uint64_t>(static_cast<double>(time) * 1e-6 * device.format.rate) *
           static_cast<uint64_t>(device.format.frameBytes());
}

uint64_t bytesHeard(WaveDevice& device) {
    pa_usec_t time = 0;
    if (device.pulse->stream_get_time(device.stream, &time) != 0) return 0;
    // The stream's time is a guess. At the end of the sound it may stop a little before it; where
    // the stream was idle it runs ahead at first, but nothing is played faster than time goes by.
    constexpr pa_usec_t tolerance = 1000;
    const auto playing = std::chrono::steady_clock::now() - device.started;
    const auto most = std::chrono::duration_cast<std::chrono::microseconds>(playing).count();
    return std::min(bytesOf(device, time + tolerance),
                    device.bytesBeforeStart + bytesOf(device, static_cast<pa_usec_t>(most)));
}

// The blocks that were heard; of a device that has gone, all.
std::deque<WaveDevice::Queued> takeDone(WaveDevice& device) {
    const LoopLock loop(device);
    const std::lock_guard guard(device.mutex);
    std::deque<WaveDevice::Queued> done;
    if (device.state == WaveDevice::State::gone) {
        done.swap(device.written);
        for (const auto& queued : device.unwritten) done.push_back(queued);
        device.unwritten.clear();
    } else if (!device.written.empty()) {
        const uint64_t heard = bytesHeard(device);
        for (; !device.written.empty() && device.written.front().end <= heard;
             device.written.pop_front())
            done.push_back(device.written.front());
    }
    return done;
}

void watch(WaveDevice& device) {
    for (;;) {
        writeQueued(device);
        for (const auto& queued : takeDone(device)) device.done(device.user, *queued.block);
        std::unique_lock lock(device.mutex);
        if (device.ending) return;
        const auto hasWork = [&] {
            return device.ending ||
                   (device.state != WaveDevice::State::connecting && !device.unwritten.empty());
        };
        // What is played is looked at again and again; anything else is told.
        if (device.written.empty())
            device.changed.wait(lock, hasWork);
        else
            device.changed.wait_for(lock, milliseconds(4), hasWork);
    }
}

// --- opening and closing -------------------------------------------------------------------------

void release(WaveDevice* device) {
    const PulseLibrary& pulse = *device->pulse;
    if (device->loop) {
        pulse.threaded_mainloop_lock(device->loop);
        if (device->stream) {
            pulse.stream_set_state_callback(device->stream, nullptr, nullptr);
            pulse.stream_disconnect(device->stream);
            pulse.stream_unref(device->stream);
        }
        if (device->context) {
            pulse.context_set_state_callback(device->context, nullptr, nullptr);
            pulse.context_disconnect(device->context);
            pulse.context_unref(device->context);
        }
        pulse.threaded_mainloop_unlock(device->loop);
        pulse.threaded_mainloop_stop(device->loop);
        pulse.threaded_mainloop_free(device->loop);
    }
    delete device;
}

// Connects to a server that runs; none is started.
bool connect(WaveDevice& device) {
    const PulseLibrary& pulse = *device.pulse;
    device.loop = pulse.threaded_mainloop_new();
    if (!device.loop || pulse.threaded_mainloop_start(device.loop) != 0) return false;
    const LoopLock loop(device);
    device.context = pulse.context_new(pulse.threaded_mainloop_get_api(device.loop), "VisTel");
    if (!device.context) return false;
    pulse.context_set_state_callback(device.context, contextChanged, &device);
    return pulse.context_connect(device.context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0;
}

bool startWatching(WaveDevice& device) try {
    device.watcher = std::thread([&device] { watch(device); });
    return true;
} catch (const std::system_error&) {
    return false;
}

}  // namespace

WaveDevice* openWaveDevice(const WaveFormat& format, WaveBlockDone done, void* user) {
    // A server that is there answers at once; one that takes its time is not waited for here. A
    // tenth of a second is to do for the library, too.
    const auto patience = std::chrono::steady_clock::now() + milliseconds(60);
    const PulseLibrary* pulse = pulseLibrary();
    if (!pulse) return nullptr;
    auto* device = new WaveDevice;
    device->pulse = pulse;
    device->format = format;
    device->done = done;
    device->user = user;
    bool there = connect(*device);
    if (there) {
        std::unique_lock lock(device->mutex);
        device->changed.wait_until(lock, patience,
                                   [&] { return device->state != WaveDevice::State::connecting; });
        there = device->state != WaveDevice::State::gone;
    }
    if (there && startWatching(*device)) return device;
    release(device);
    return nullptr;
}

bool playWaveBlock(WaveDevice& device, WaveBlock& block) {
    {
        const std::lock_guard guard(device.mutex);
        if (device.state == WaveDevice::State::gone) return false;
        device.unwritten.push_back({&block, 0});
    }
    device.changed.notify_all();
    return true;
}

bool waveDeviceHasGone(WaveDevice& device) {
    const std::lock_guard guard(device.mutex);
    return device.state == WaveDevice::State::gone;
}

void takeWaveBlockBack(WaveDevice&, WaveBlock&) {}

int64_t waveBytesInHardware(WaveDevice& device) {
    const LoopLock loop(device);
    const pa_timing_info* timing =
        device.stream ? device.pulse->stream_get_timing_info(device.stream) : nullptr;
    return timing ? static_cast<int64_t>(bytesOf(device, timing->sink_usec)) : 0;
}

void resetWaveDevice(WaveDevice& device) {
    {
        const LoopLock loop(device);
        pa_operation* flush =
            device.stream ? device.pulse->stream_flush(device.stream, nullptr, nullptr) : nullptr;
        if (flush) device.pulse->operation_unref(flush);
    }
    enter(device, WaveDevice::State::gone);  // the watcher gives all blocks back
}

void closeWaveDevice(WaveDevice* device) {
    {
        const std::lock_guard guard(device->mutex);
        device->ending = true;
    }
    device->changed.notify_all();
    device->watcher.join();
    release(device);
}

}  // namespace vistel::platform
