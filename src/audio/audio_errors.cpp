#include "audio/audio_errors.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace vistel {

static void printError(int32_t code, const char* text) {
    std::fprintf(stderr, "Audio File Library error %d:  %s\n", code, text);
}

// The feeder thread of a sound reads while another one is opened.
static std::atomic<AFerrorfunc> errorFunction{printError};

AFerrorfunc AFseterrorfunc(AFerrorfunc function) { return errorFunction.exchange(function); }

void AFreporterror(int32_t code, const char* format, ...) {
    char text[1024];
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    errorFunction.load()(code, text);
}

}  // namespace vistel
