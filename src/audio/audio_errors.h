// The one way in which the audio file library tells what went wrong.
#pragma once

#include <cstdint>

namespace vistel {

// Codes of the reports.
enum AfError : int32_t {
    afWarning = 0,  // the format is not known, or not supported
    afBadHandle = 1,
    afOpenFailed = 3,
    afCloseFailed = 4,
    afReadFailed = 5,
    afWriteFailed = 6,
    afSeekFailed = 7,
    afNoHandle = 8,
    afBadMode = 10,
    afNotReadable = 12,
    afBadFileFormat = 13,
    afBadRate = 14,
    afNoMemory = 20,
    afBadLoop = 21,
    afBadSetup = 23,
    afBadTrack = 24,
    afNoSetup = 26,
    afBadCompression = 47,
    afNotPcm = 50,
    afChunkHeader = 108,
    afForm = 109,
    afSoundChunk = 110,
    afUnknownChunk = 111,
    afChunkBody = 112,
    afChunkSkip = 115,
};

using AFerrorfunc = void (*)(int32_t code, const char* text);

// Installs what is told of every failure and returns what was there before. At first the text goes
// to standard error.
AFerrorfunc AFseterrorfunc(AFerrorfunc function);

// Tells of a failure; texts end with a line end. The first value is the name of the public
// operation.
[[gnu::format(printf, 2, 3)]] void AFreporterror(int32_t code, const char* format, ...);

}  // namespace vistel
