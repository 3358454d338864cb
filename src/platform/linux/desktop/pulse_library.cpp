#include "platform/linux/desktop/pulse_library.h"

#include <dlfcn.h>

#include <optional>

namespace vistel::platform {

namespace {

// Looks the functions up, and whether all were there.
struct LookUp {
    void* library;
    bool all = true;

    template <class Function>
    void operator()(Function& function, const char* name) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        all = all && function;
    }
};

std::optional<PulseLibrary> load() {
    LookUp find{dlopen("libpulse.so.0", RTLD_NOW | RTLD_LOCAL)};
    if (!find.library) return std::nullopt;
    PulseLibrary pulse;
    find(pulse.threaded_mainloop_new, "pa_threaded_mainloop_new");
    find(pulse.threaded_mainloop_free, "pa_threaded_mainloop_free");
    find(pulse.threaded_mainloop_start, "pa_threaded_mainloop_start");
    find(pulse.threaded_mainloop_stop, "pa_threaded_mainloop_stop");
    find(pulse.threaded_mainloop_lock, "pa_threaded_mainloop_lock");
    find(pulse.threaded_mainloop_unlock, "pa_threaded_mainloop_unlock");
    find(pulse.threaded_mainloop_get_api, "pa_threaded_mainloop_get_api");
    find(pulse.context_new, "pa_context_new");
    find(pulse.context_connect, "pa_context_connect");
    find(pulse.context_disconnect, "pa_context_disconnect");
    find(pulse.context_unref, "pa_context_unref");
    find(pulse.context_get_state, "pa_context_get_state");
    find(pulse.context_set_state_callback, "pa_context_set_state_callback");
    find(pulse.stream_new, "pa_stream_new");
    find(pulse.stream_connect_playback, "pa_stream_connect_playback");
    find(pulse.stream_disconnect, "pa_stream_disconnect");
    find(pulse.stream_unref, "pa_stream_unref");
    find(pulse.stream_get_state, "pa_stream_get_state");
    find(pulse.stream_set_state_callback, "pa_stream_set_state_callback");
    find(pulse.stream_write, "pa_stream_write");
    find(pulse.stream_get_time, "pa_stream_get_time");
    find(pulse.stream_get_timing_info, "pa_stream_get_timing_info");
    find(pulse.stream_flush, "pa_stream_flush");
    find(pulse.operation_unref, "pa_operation_unref");
    if (find.all) return pulse;
    dlclose(find.library);
    return std::nullopt;
}

}  // namespace

const PulseLibrary* pulseLibrary() {
    static const std::optional<PulseLibrary> loaded = load();
    return loaded ? &*loaded : nullptr;
}

}  // namespace vistel::platform
