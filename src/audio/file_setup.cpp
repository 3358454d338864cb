// Setups: what a file that is written, or one without a header, is to be.
#include <new>

#include "audio/audio_errors.h"
#include "audio/audio_file.h"
#include "audio/format_table.h"

namespace vistel {

AFfilesetup* AFnewfilesetup() {
    auto* setup = new (std::nothrow) AFfilesetup;
    if (!setup)
        AFreporterror(afNoSetup, "%s: no file setup designators available\n", "AFnewfilesetup");
    return setup;
}

static bool isSetup(const char* operation, const AFfilesetup* setup) {
    if (setup && setup->magic == afSetupMagic) return true;
    AFreporterror(afBadSetup, setup ? "%s: invalid file setup\n" : "%s: null file setup\n",
                  operation);
    return false;
}

void AFinitfilefmt(AFfilesetup* setup, int32_t format) {
    const char* operation = "AFinitfilefmt";
    if (!isSetup(operation, setup)) return;
    // The greatest format that can be set this way, though there are others.
    const int32_t position = format > afSocketRaw ? -1 : tablePositionOf(format);
    if (position < 0) {
        AFreporterror(afBadFileFormat, "%s: unrecognized file format %d\n", operation, format);
        return;
    }
    if (audioFormatSupported(operation, position)) setup->format = format;
}

void AFinitrate(AFfilesetup* setup, int32_t track, double rate) {
    const char* operation = "AFinitrate";
    if (!isSetup(operation, setup)) return;
    if (track != afDefaultTrack) {
        AFreporterror(afBadTrack, "%s: invalid track id %d\n", operation, track);
        return;
    }
    if (rate < 0) AFreporterror(afBadRate, "%s: invalid sample rate %f\n", operation, rate);
    setup->rate = rate;
}

}  // namespace vistel
