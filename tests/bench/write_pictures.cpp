// write_pictures: the sequence that loading is measured with, written as frame files and, for the
// loaders it is compared with, in a common format.
//
//     write_pictures FOLDER FRAMES
//
// FOLDER/frames/typical.1 ...       frame files
// FOLDER/frames/tenfold.1 ...       ten times as many names for the same files
// FOLDER/bmp/typical.1.bmp ...      the same pictures as 32-bit bitmaps

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_pictures.h"
#include "iff/result_codes.h"
#include "platform/files.h"

namespace {

using namespace vistel;
namespace fs = std::filesystem;

constexpr int tenfold = 10;

void putLittle(std::vector<uint8_t>& out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> 8 * i));
}

// File header and the 40-byte information header of an uncompressed picture, first row at the
// bottom.
std::vector<uint8_t> bitmapHeader(const bench::Picture& picture) {
    constexpr uint32_t headerBytes = 54;
    std::vector<uint8_t> out = {'B', 'M'};
    putLittle(out, headerBytes + static_cast<uint32_t>(picture.bytes()), 4);
    putLittle(out, 0, 4);
    putLittle(out, headerBytes, 4);
    putLittle(out, 40, 4);
    putLittle(out, picture.width, 4);
    putLittle(out, picture.height, 4);
    putLittle(out, 1, 2);   // planes
    putLittle(out, 32, 2);  // bits per pixel
    putLittle(out, 0, 4);   // not compressed
    putLittle(out, static_cast<uint32_t>(picture.bytes()), 4);
    for (int i = 0; i < 4; ++i) putLittle(out, 0, 4);  // resolution, palette
    return out;
}

// Rows of blue, green, red, mask bytes.
bool writeBitmap(const bench::Picture& picture, const std::string& path) {
    std::vector<uint8_t> bytes = bitmapHeader(picture);
    bytes.reserve(bytes.size() + picture.bytes());
    for (const uint32_t pixel : picture.colour) {
        const uint32_t exchanged =
            (pixel & 0xFF00FF00) | (pixel & 0xFF) << 16 | (pixel >> 16 & 0xFF);
        putLittle(bytes, exchanged, 4);
    }
    const platform::FilePtr file(platform::openFile(path, "w"));
    return file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
           std::fflush(file.get()) == 0;
}

bool writePicture(const fs::path& folder, int frame) {
    const bench::Picture picture = bench::makePicture(bench::PictureKind::typical, frame);
    const std::string number = std::to_string(frame);
    const std::string name = (folder / "frames" / ("typical." + number)).string();
    if (bench::writeFrameFile(picture, name) != iffOk) return false;
    return writeBitmap(picture, (folder / "bmp" / ("typical." + number + ".bmp")).string());
}

void linkTenfold(const fs::path& folder, int frames) {
    for (int i = 0; i < frames * tenfold; ++i) {
        const fs::path name = folder / ("tenfold." + std::to_string(i + 1));
        fs::create_hard_link(folder / ("typical." + std::to_string(i % frames + 1)), name);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int frames = argc == 3 ? std::atoi(argv[2]) : 0;
    if (frames < 1) {
        std::fprintf(stderr, "usage: write_pictures FOLDER FRAMES\n");
        return 1;
    }
    const fs::path folder = argv[1];
    fs::remove_all(folder / "frames");
    fs::create_directories(folder / "frames");
    fs::create_directories(folder / "bmp");
    for (int frame = 1; frame <= frames; ++frame) {
        if (writePicture(folder, frame)) continue;
        std::fprintf(stderr, "write_pictures: cannot write frame %d\n", frame);
        return 1;
    }
    linkTenfold(folder / "frames", frames);
    return 0;
}
