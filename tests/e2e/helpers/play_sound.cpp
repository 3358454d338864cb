// Plays a sound file to its end, as the viewer does, and says how long opening it took and what was
// heard: "opened MILLISECONDS", "played SECONDS".
//     play_sound FILE [SPEED]
// Status 0 when it was played, 2 when there is no device for it.

#include <cstdio>
#include <cstdlib>

#include "audio/sound.h"
#include "platform/clock.h"

int main(int argc, char** argv) {
    if (argc < 2) return 1;
    vistel::Sound sound;
    const uint64_t start = vistel::platform::tickMicroseconds();
    sound.play(argv[1], argc > 2 ? std::atof(argv[2]) : 1.0);
    const uint64_t opened = vistel::platform::tickMicroseconds() - start;
    std::printf("opened %.1f\n", static_cast<double>(opened) / 1000);
    std::fflush(stdout);
    if (!sound.isLoaded()) return 2;
    while (sound.isPlaying()) vistel::platform::sleepMilliseconds(1);
    sound.stop();
    std::printf("played %.3f\n", sound.timePlayed());
    std::printf("seconds %.3f\n",
                static_cast<double>(vistel::platform::tickMicroseconds() - start) / 1e6);
    return 0;
}
