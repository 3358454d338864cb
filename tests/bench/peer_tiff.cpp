// peer_tiff: the tightest loop that libtiff allows for loading a sequence into memory.
//
//     peer_tiff PATTERN FRAMES    PATTERN holds one "#" for the number
//     peer_tiff --version
//
// Every strip of a file is decoded straight into the frame's memory, and all frames are kept.

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pixels = std::unique_ptr<uint8_t[]>;

// Null when the file is no picture of strips, or damaged.
Pixels readPicture(const std::string& name) {
    TIFF* const file = TIFFOpen(name.c_str(), "r");
    if (!file) return nullptr;
    uint32_t rows = 0;
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &rows);
    const tmsize_t rowBytes = TIFFScanlineSize(file);
    const tmsize_t stripBytes = TIFFStripSize(file);
    const tmsize_t bytes = rowBytes * rows;
    Pixels pixels(new uint8_t[bytes]);  // not zeroed: every byte is written
    tmsize_t done = 0;
    for (uint32_t strip = 0; strip < TIFFNumberOfStrips(file) && done < bytes; ++strip) {
        const tmsize_t room = std::min(stripBytes, bytes - done);
        const tmsize_t read = TIFFReadEncodedStrip(file, strip, pixels.get() + done, room);
        if (read < 0) break;
        done += read;
    }
    TIFFClose(file);
    return done == bytes ? std::move(pixels) : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        std::puts(TIFFGetVersion());
        return 0;
    }
    const std::string pattern = argc == 3 ? argv[1] : "";
    const size_t mark = pattern.find('#');
    const int frames = argc == 3 ? std::atoi(argv[2]) : 0;
    if (frames < 1 || mark == std::string::npos) {
        std::fprintf(stderr, "usage: peer_tiff PATTERN FRAMES\n");
        return 1;
    }
    std::vector<Pixels> kept;
    for (int frame = 1; frame <= frames; ++frame) {
        std::string name = pattern;
        name.replace(mark, 1, std::to_string(frame));
        kept.push_back(readPicture(name));
        if (kept.back()) continue;
        std::fprintf(stderr, "peer_tiff: cannot read %s\n", name.c_str());
        return 1;
    }
    return 0;
}
