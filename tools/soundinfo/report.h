// What is told of a sound file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio/audio_file.h"

namespace vistel {

struct SoundReport {
    std::string name;
    bool opened = false;
    std::string format;
    uint32_t version = 0;
    int32_t channels = 0;
    double rate = 0;
    int32_t width = 0;
    std::string sampleFormat;
    int64_t frames = 0;
    std::vector<AFmarker> markers;
    struct Chunk {
        std::string name;
        uint32_t bytes = 0;
    };
    std::vector<Chunk> chunks;
    std::string notPlayed;  // why vistel does not play it; empty when it does
};

SoundReport reportOf(const std::string& name, AFfilehandle& file);

void printText(const SoundReport& report);
void printJson(const std::vector<SoundReport>& reports);

}  // namespace vistel
