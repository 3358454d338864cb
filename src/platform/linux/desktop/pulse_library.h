// The sound server's library, loaded when sound is first played: a machine without it shows
// pictures.
#pragma once

#include <pulse/pulseaudio.h>

namespace vistel::platform {

// Its functions under their own names, without the common prefix.
struct PulseLibrary {
    decltype(&pa_threaded_mainloop_new) threaded_mainloop_new = nullptr;
    decltype(&pa_threaded_mainloop_free) threaded_mainloop_free = nullptr;
    decltype(&pa_threaded_mainloop_start) threaded_mainloop_start = nullptr;
    decltype(&pa_threaded_mainloop_stop) threaded_mainloop_stop = nullptr;
    decltype(&pa_threaded_mainloop_lock) threaded_mainloop_lock = nullptr;
    decltype(&pa_threaded_mainloop_unlock) threaded_mainloop_unlock = nullptr;
    decltype(&pa_threaded_mainloop_get_api) threaded_mainloop_get_api = nullptr;
    decltype(&pa_context_new) context_new = nullptr;
    decltype(&pa_context_connect) context_connect = nullptr;
    decltype(&pa_context_disconnect) context_disconnect = nullptr;
    decltype(&pa_context_unref) context_unref = nullptr;
    decltype(&pa_context_get_state) context_get_state = nullptr;
    decltype(&pa_context_set_state_callback) context_set_state_callback = nullptr;
    decltype(&pa_stream_new) stream_new = nullptr;
    decltype(&pa_stream_connect_playback) stream_connect_playback = nullptr;
    decltype(&pa_stream_disconnect) stream_disconnect = nullptr;
    decltype(&pa_stream_unref) stream_unref = nullptr;
    decltype(&pa_stream_get_state) stream_get_state = nullptr;
    decltype(&pa_stream_set_state_callback) stream_set_state_callback = nullptr;
    decltype(&pa_stream_write) stream_write = nullptr;
    decltype(&pa_stream_get_time) stream_get_time = nullptr;
    decltype(&pa_stream_get_timing_info) stream_get_timing_info = nullptr;
    decltype(&pa_stream_flush) stream_flush = nullptr;
    decltype(&pa_operation_unref) operation_unref = nullptr;
};

// Null where the library is not installed.
const PulseLibrary* pulseLibrary();

}  // namespace vistel::platform
