// The records of the audio file library. Each is stamped with a magic number, which every operation
// looks at. Numbers of frames and samples and places in files have 64 bits: files of more than 2 GB
// are read, and no product of two header fields overflows.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/files.h"

namespace vistel {

constexpr int32_t afHandleMagic = 48003;
constexpr int32_t afSetupMagic = 48004;
constexpr int32_t afTrackMagic = 48005;
constexpr int32_t afDefaultTrack = 1001;  // the only track there is

enum AfSampleFormat : int32_t { afTwosComplement = 401, afUnsigned = 403 };
enum AfAccess : int32_t { afRead = 1, afWrite = 2 };

enum AfFileFormat : int32_t {
    afAiffC = 1,
    afAiff = 2,
    afSocketRaw = 7,
    afRaw = 10,
    afSoundDesigner1 = 20,
    afSoundDesigner2 = 30,
    afNext = 40,
    afWave = 50,
};

enum AfCompression : int32_t {
    afCompressionUnknown = -1,
    afNotCompressed = 0,
    afAce2 = 504,
    afAce8 = 505,
    afMac3 = 506,
    afMac6 = 507,
};

// Types of miscellaneous chunks.
enum AfMiscType : int32_t {
    afMiscCopyright = 201,
    afMiscAuthor = 202,
    afMiscName = 203,
    afMiscAnnotation = 204,
    afMiscApplication = 205,
    afMiscMidi = 206,
};

struct AFmarker {
    int32_t id = 0;
    uint32_t position = 0;  // in frames
    std::string name;
    int64_t filePosition = 0;  // of the id, in a file that is written
};

struct AFloop {
    int32_t id = 0;
    int32_t playMode = 0;
    int32_t beginMarker = 0, endMarker = 0;
};

struct AFinstrument {
    int32_t baseNote = 0, detune = 0;
    int32_t lowNote = 0, highNote = 0;
    int32_t lowVelocity = 0, highVelocity = 0;
    int32_t gain = 0;                                   // decibels
    std::array<AFloop, 2> loops{AFloop{1}, AFloop{2}};  // sustain, release
};

struct AFmiscChunk {
    int32_t id = 0;
    int32_t type = 0;
    uint32_t size = 0;
    int64_t sizePosition = 0, dataPosition = 0;
    std::vector<uint8_t> data;
};

struct AFtrack {
    int32_t magic = afTrackMagic;
    int32_t id = afDefaultTrack;
    int64_t dataStart = 0;  // place in the file of the first sample
    double rate = 0;        // frames per second
    int32_t width = 16;     // bits of a sample
    int32_t sampleFormat = afTwosComplement;
    int32_t channels = 0;
    std::vector<AFmarker> markers;
    std::string compressionName;
    int32_t compression = afNotCompressed;
    int64_t samples = 0;  // frames x channels
    int64_t frames = 0;
    int32_t bytesPerSample = 0;  // in the file
    int32_t containerBytes = 0;  // in the caller's buffer: 1, 2, 4; 0 for widths that none holds
    std::vector<uint8_t> conversion;
    int64_t position = 0;  // in samples
    bool hasAes = false;
    std::array<uint8_t, 24> aes{};  // channel status
    bool swapBytes = false;
};

// What a format keeps for itself: places that the writer comes back to, and the stamp of the
// format's version.
struct AFheader {
    int64_t formSize = 0;    // of the size field of the whole file
    int64_t frameCount = 0;  // of the field in "COMM"
    int64_t soundSize = 0;   // of the size field of "SSND" or "data"
    bool soundPadded = false;
    int64_t instrument = 0;       // of the body of "INST"
    int64_t aes = 0;              // of the body of "AESD"
    uint32_t version = 0;         // the time stamp of "FVER"
    uint32_t blockAlignment = 0;  // WAVE: bytes of a frame
};

struct AFfilehandle {
    int32_t magic = afHandleMagic;
    platform::FilePtr stream;
    int32_t access = afRead;
    std::string name;
    int32_t format = 0;
    int32_t tablePosition = 0;
    bool seekable = true;
    AFheader header;
    std::vector<AFtrack> tracks;
    std::vector<AFinstrument> instruments;  // at most one
    int32_t miscCount = 0;                  // of the slots that are in use
    std::vector<AFmiscChunk> misc;

    AFtrack& track() { return tracks.front(); }
};

struct AFfilesetup {
    int32_t magic = afSetupMagic;
    int32_t format = afAiffC;
    int32_t trackCount = 1;
    int32_t trackId = afDefaultTrack;
    int32_t width = 16;
    int32_t sampleFormat = afTwosComplement;
    double rate = 44100.0;
    int32_t channels = 2;
    int32_t compression = afNotCompressed;
    std::array<int32_t, 2> loopIds{1, 2};
    std::array<AFmarker, 4> markers{AFmarker{1, 0, "", 0}, AFmarker{2, 0, "", 0},
                                    AFmarker{3, 0, "", 0}, AFmarker{4, 0, "", 0}};
    std::vector<AFmiscChunk> misc;
};

}  // namespace vistel
