// demo_sequence: writes a numbered sequence of frames worth looking at, with colour, mask and
// depth, and its sound.
//
//     demo_sequence STEM [FRAMES [WIDTH HEIGHT]]
//
// writes STEM1, STEM2 ... (the stem usually ends in a dot) and the beeps to STEM-sound.wav, without
// the dot.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "beeps.h"
#include "iff/image_writer.h"
#include "iff/result_codes.h"
#include "platform/files.h"
#include "platform/process.h"
#include "scene.h"

namespace {

using vistel::demo::Picture;

int writePicture(const std::string& name, const Picture& picture) {
    using namespace vistel;
    ImageWriter writer;
    errno = 0;
    int result = writer.open(name);
    if (result == iffOk) result = writer.writeText("NAME", "vistel demo");
    if (result == iffOk) {
        result =
            writer.writeHeader(picture.width, picture.height, imageColour | imageMask | imageZ);
    }
    if (result == iffOk) result = writer.beginImageData();
    for (int y = 0; y < picture.height && result == iffOk; ++y) {
        const size_t start = size_t(y) * picture.width;
        result = writer.writeScanline(&picture.colour[start], &picture.depth[start]);
    }
    if (result == iffOk) result = writer.endImage();
    const int error = errno;
    const int closed = writer.close();
    if (result == iffOk) return closed;
    errno = error;
    return result;
}

int number(const char* text, int least, int most) {
    const long value = std::strtol(text, nullptr, 10);
    return value < least ? least : value > most ? most : static_cast<int>(value);
}

}  // namespace

int main(int argc, char** argv) {
    vistel::platform::keepStandardStreams();
    vistel::platform::ignoreClosedReaders();
    if (argc != 2 && argc != 3 && argc != 5) {
        std::fprintf(stderr, "usage: demo_sequence STEM [FRAMES [WIDTH HEIGHT]]\n");
        return 1;
    }
    const int frames = argc > 2 ? number(argv[2], 1, 100000) : 96;
    const int width = argc > 4 ? number(argv[3], 1, 16384) : 640;
    const int height = argc > 4 ? number(argv[4], 1, 16384) : 360;
    for (int frame = 1; frame <= frames; ++frame) {
        const std::string name = argv[1] + std::to_string(frame);
        const int result =
            writePicture(name, vistel::demo::renderFrame(frame, frames, width, height));
        if (result != vistel::iffOk) {
            const bool system = result == vistel::iffIoError && errno != 0;
            std::fprintf(stderr, "demo_sequence: %s: %s\n", name.c_str(),
                         system ? std::strerror(errno) : vistel::errorText(result).c_str());
            return 1;
        }
    }
    std::string sound = argv[1];
    if (sound.ends_with('.')) sound.pop_back();
    sound += "-sound.wav";
    if (!vistel::demo::writeBeeps(sound, frames)) {
        std::fprintf(stderr, "demo_sequence: %s: %s\n", sound.c_str(), std::strerror(errno));
        return 1;
    }
    std::printf("wrote %s1 to %s%d, %d x %d\n", argv[1], argv[1], frames, width, height);
    if (vistel::platform::finishStandardOutput()) return 0;
    std::fprintf(stderr, "demo_sequence: standard output: %s\n", std::strerror(errno));
    return 1;
}
